#include "platform/linux/net/wsa_error.h"

#include <cerrno>

#include "platform/linux/net/winsock.h"

namespace Corvane::Net {

DWORD WsaError(int error) {
  static constexpr struct {
    int error;
    DWORD code;
  } kCodes[] = {{EINTR, WSAEINTR},
                {EACCES, WSAEACCES},
                {EPERM, WSAEACCES},
                {EFAULT, WSAEFAULT},
                {EINVAL, WSAEINVAL},
                {EMFILE, WSAEMFILE},
                {ENFILE, WSAEMFILE},
                {EAGAIN, WSAEWOULDBLOCK},
                {EINPROGRESS, WSAEINPROGRESS},
                {EALREADY, WSAEALREADY},
                {EBADF, WSAENOTSOCK},
                {ENOTSOCK, WSAENOTSOCK},
                {EPROTOTYPE, WSAEPROTOTYPE},
                {EPROTONOSUPPORT, WSAEPROTONOSUPPORT},
                {ESOCKTNOSUPPORT, WSAESOCKTNOSUPPORT},
                {EOPNOTSUPP, WSAEOPNOTSUPP},
                {EAFNOSUPPORT, WSAEAFNOSUPPORT},
                {EADDRINUSE, WSAEADDRINUSE},
                {EADDRNOTAVAIL, WSAEADDRNOTAVAIL},
                {ENETDOWN, WSAENETDOWN},
                {ENETUNREACH, WSAENETUNREACH},
                {ENETRESET, WSAENETRESET},
                {ECONNABORTED, WSAECONNABORTED},
                {ECONNRESET, WSAECONNRESET},
                {ENOBUFS, WSAENOBUFS},
                {ENOMEM, WSAENOBUFS},
                {EISCONN, WSAEISCONN},
                {ENOTCONN, WSAENOTCONN},
                {ETIMEDOUT, WSAETIMEDOUT},
                {ECONNREFUSED, WSAECONNREFUSED},
                {EHOSTDOWN, WSAEHOSTDOWN},
                {EHOSTUNREACH, WSAEHOSTUNREACH}};
  for (const auto& known : kCodes) {
    if (known.error == error) return known.code;
  }
  return WSASYSCALLFAILURE;
}

int Fail(DWORD code) {
  SetLastError(code);
  return SOCKET_ERROR;
}

int FailWithErrno(int error) { return Fail(WsaError(error)); }

}  // namespace Corvane::Net
