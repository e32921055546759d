#include "platform/linux/net/startup.h"

#include <algorithm>
#include <atomic>
#include <cerrno>

#include "platform/linux/net/winsock.h"

namespace Corvane::Net {
namespace {

// The process's calls of WSAStartup that no WSACleanup has undone.
std::atomic<unsigned>& WinsockStartups() {
  static std::atomic<unsigned> startups = 0;
  return startups;
}

// The highest version up to the one asked for.
WORD GrantWinsock(unsigned major, unsigned minor) {
  const unsigned highestMinor = major == 1 ? 1 : 2;
  return MAKEWORD(std::min(major, 2u), major > 2 ? highestMinor : std::min(minor, highestMinor));
}

}  // namespace

bool RequireStartup() {
  if (WinsockStartups() != 0) return true;
  SetLastError(WSANOTINITIALISED);
  return false;
}

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

extern "C" {

int WINAPI WSAStartup(WORD version, WSADATA* data) {
  using namespace Corvane::Net;
  if (data == nullptr) return WSAEFAULT;
  const unsigned major = version & 0xFF;
  data->wVersion = GrantWinsock(major, version >> 8);
  data->wHighVersion = MAKEWORD(2, 2);
  if (major == 0) return WSAVERNOTSUPPORTED;
  // Meaningless since 2.0, and no limits of this platform: what Windows tells callers of 1.x.
  data->iMaxSockets = major == 1 ? 32767 : 0;
  data->iMaxUdpDg = major == 1 ? 65467 : 0;
  std::strcpy(data->szDescription, "WinSock 2.0");
  std::strcpy(data->szSystemStatus, "Running");
  ++WinsockStartups();
  return 0;
}

int WINAPI WSACleanup() {
  std::atomic<unsigned>& startups = Corvane::Net::WinsockStartups();
  unsigned count = startups;
  while (count != 0 && !startups.compare_exchange_weak(count, count - 1)) {
  }
  return count != 0 ? 0 : Corvane::Net::Fail(WSANOTINITIALISED);
}

}  // extern "C"
