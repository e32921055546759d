// Errors of the system in Winsock's numbers.
#ifndef CORVANE_PLATFORM_LINUX_NET_WSA_ERROR_H_
#define CORVANE_PLATFORM_LINUX_NET_WSA_ERROR_H_

#include "corvane/linux/base.h"

namespace Corvane::Net {

// `error` is an errno value; WSASYSCALLFAILURE for one without a counterpart.
DWORD WsaError(int error);

// SOCKET_ERROR, which is INVALID_SOCKET too, with `code` or WsaError(error) as the last error.
int Fail(DWORD code);
int FailWithErrno(int error);

}  // namespace Corvane::Net

#endif  // CORVANE_PLATFORM_LINUX_NET_WSA_ERROR_H_
