#include "platform/linux/net/startup.h"

#include <algorithm>
#include <atomic>

#include "platform/linux/net/winsock.h"
#include "platform/linux/net/wsa_error.h"

namespace Corvane::Net {
namespace {

// The process's calls of WSAStartup that no WSACleanup has undone.
std::atomic<unsigned>& Startups() {
  static std::atomic<unsigned> startups = 0;
  return startups;
}

WORD Grant(unsigned major, unsigned minor) {
  switch (major) {
    case 1:
      return MAKEWORD(1, std::min(minor, 1u));
    case 2:
      return MAKEWORD(2, std::min(minor, 2u));
    default:
      return MAKEWORD(2, 2);
  }
}

}  // namespace

bool RequireStartup() {
  if (Startups() != 0) return true;
  SetLastError(WSANOTINITIALISED);
  return false;
}

}  // namespace Corvane::Net

extern "C" {

int WINAPI WSAStartup(WORD version, WSADATA* data) {
  using namespace Corvane::Net;
  if (data == nullptr) return WSAEFAULT;
  const unsigned major = version & 0xFF;
  data->wVersion = Grant(major, version >> 8);
  data->wHighVersion = MAKEWORD(2, 2);
  if (major == 0) return WSAVERNOTSUPPORTED;
  // Meaningless since 2.0, and no limits of this platform: what Windows tells callers of 1.x.
  data->iMaxSockets = major == 1 ? 32767 : 0;
  data->iMaxUdpDg = major == 1 ? 65467 : 0;
  std::strcpy(data->szDescription, "WinSock 2.0");
  std::strcpy(data->szSystemStatus, "Running");
  ++Startups();
  return 0;
}

int WINAPI WSACleanup() {
  std::atomic<unsigned>& startups = Corvane::Net::Startups();
  unsigned count = startups;
  while (count != 0 && !startups.compare_exchange_weak(count, count - 1)) {
  }
  return count != 0 ? 0 : Corvane::Net::Fail(WSANOTINITIALISED);
}

}  // extern "C"
