// Whether Winsock is in use, for every operation that asks for it.
#ifndef CORVANE_PLATFORM_LINUX_NET_STARTUP_H_
#define CORVANE_PLATFORM_LINUX_NET_STARTUP_H_

namespace Corvane::Net {

// False, with WSANOTINITIALISED as the last error, unless a WSAStartup is still to be undone.
bool RequireStartup();

}  // namespace Corvane::Net

#endif  // CORVANE_PLATFORM_LINUX_NET_STARTUP_H_
