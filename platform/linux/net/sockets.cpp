#include <poll.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/net/startup.h"
#include "platform/linux/net/winsock.h"

namespace Corvane::Net {
namespace {

// What Windows refuses before it asks the network. The system would take the unspecified address
// for this machine.
DWORD CheckTarget(const sockaddr* address, int length) {
  if (address == nullptr || length < static_cast<int>(sizeof(address->sa_family))) return WSAEFAULT;
  bool unusable = false;
  if (address->sa_family == AF_INET) {
    sockaddr_in target;
    if (length < static_cast<int>(sizeof(target))) return WSAEFAULT;
    std::memcpy(&target, address, sizeof(target));
    unusable = target.sin_port == 0 || target.sin_addr.s_addr == htonl(INADDR_ANY);
  } else if (address->sa_family == AF_INET6) {
    sockaddr_in6 target;
    if (length < static_cast<int>(sizeof(target))) return WSAEFAULT;
    std::memcpy(&target, address, sizeof(target));
    unusable = target.sin6_port == 0 || IN6_IS_ADDR_UNSPECIFIED(&target.sin6_addr);
  }
  return unusable ? WSAEADDRNOTAVAIL : ERROR_SUCCESS;
}

// The errno value that an attempt ends with which a signal has sent into the background, 0 when the
// connection stands. Calling connect() again would not tell.
int AwaitConnection(SOCKET s) {
  pollfd waiting = {s, POLLOUT, 0};
  constexpr int kForever = -1;
  while (poll(&waiting, 1, kForever) < 0) {
    if (errno != EINTR) return errno;
  }
  int error = 0;
  socklen_t size = sizeof(error);
  return getsockopt(s, SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : errno;
}

}  // namespace

SOCKET Socket(int family, int type, int protocol) {
  if (!RequireStartup()) return INVALID_SOCKET;
  const SOCKET made = (socket)(family, type | SOCK_CLOEXEC, protocol);
  return made >= 0 ? made : FailWithErrno(errno);
}

int Connect(SOCKET s, const sockaddr* address, int length) {
  if (!RequireStartup()) return SOCKET_ERROR;
  const DWORD wrong = CheckTarget(address, length);
  if (wrong != ERROR_SUCCESS) return Fail(wrong);
  if ((connect)(s, address, static_cast<socklen_t>(length)) == 0) return 0;
  const int error = errno == EINTR ? AwaitConnection(s) : errno;
  return error == 0 ? 0 : FailWithErrno(error);
}

}  // namespace Corvane::Net

extern "C" {

int WINAPI closesocket(SOCKET s) {
  using namespace Corvane::Net;
  if (!RequireStartup()) return SOCKET_ERROR;
  int type = 0;
  socklen_t size = sizeof(type);
  if (getsockopt(s, SOL_SOCKET, SO_TYPE, &type, &size) != 0) return FailWithErrno(errno);
  // Whatever close() answers, the descriptor is gone.
  close(s);
  return 0;
}

int WINAPI WSAGetLastError() { return static_cast<int>(GetLastError()); }

}  // extern "C"
