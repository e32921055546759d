// Whether Winsock is in use, which every operation asks, and how its operations fail.
#ifndef CORVANE_PLATFORM_LINUX_NET_STARTUP_H_
#define CORVANE_PLATFORM_LINUX_NET_STARTUP_H_

#include "corvane/linux/base.h"

namespace Corvane::Net {

// False, with WSANOTINITIALISED as the last error, unless a WSAStartup is still to be undone.
bool RequireStartup();

// Winsock's number of an errno value; WSASYSCALLFAILURE for one without a counterpart.
DWORD WsaError(int error);

// SOCKET_ERROR, which is INVALID_SOCKET too, with `code` or WsaError(error) as the last error.
int Fail(DWORD code);
int FailWithErrno(int error);

}  // namespace Corvane::Net

#endif  // CORVANE_PLATFORM_LINUX_NET_STARTUP_H_
