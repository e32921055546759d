// Whether a device has a printer service at all: one connection attempt.
#include <cwchar>
#include <regex>

#include "core/text.h"
#include "core/trace.h"
#include "ipp/provider/ipp_provider_impl.h"
#include "platform/system.h"

namespace Corvane {
namespace {

// The socket library, started for as long as this lives.
class Winsock {
 public:
  explicit Winsock(WORD version) : m_started(WSAStartup(version, &m_data) == 0) {}
  Winsock(const Winsock&) = delete;
  Winsock& operator=(const Winsock&) = delete;
  ~Winsock() {
    if (m_started) WSACleanup();
  }
  bool Granted(WORD version) const { return m_started && m_data.wVersion == version; }

 private:
  WSADATA m_data{};
  const bool m_started;
};

class Socket {
 public:
  explicit Socket(int family) : m_socket(socket(family, SOCK_STREAM, IPPROTO_TCP)) {}
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;
  ~Socket() {
    if (m_socket != INVALID_SOCKET) closesocket(m_socket);
  }
  bool Connect(const sockaddr* address, int size) const {
    return m_socket != INVALID_SOCKET && connect(m_socket, address, size) == 0;
  }

 private:
  const SOCKET m_socket;
};

bool IsIPv6Literal(const std::wstring& host) {
  const Winsock winsock(MAKEWORD(2, 2));
  addrinfo hints{};
  hints.ai_flags = AI_NUMERICHOST;
  addrinfo* found = nullptr;
  if (getaddrinfo(Narrow(host).c_str(), nullptr, &hints, &found) != 0) return false;
  const bool isIPv6 = found->ai_family == AF_INET6;
  freeaddrinfo(found);
  return isIPv6;
}

// "a.b.c.d" or "a.b.c.d:port".
bool IsIPv4Literal(const std::wstring& host) {
  unsigned parts[4];
  wchar_t colon = 0;
  unsigned port = 0;
  wchar_t rest = 0;
  const int filled = std::swscanf(host.c_str(), L"%3u.%3u.%3u.%3u%lc%u%lc", &parts[0], &parts[1],
                                  &parts[2], &parts[3], &colon, &port, &rest);
  if (filled != 4 && !(filled == 6 && colon == L':')) return false;
  for (const unsigned part : parts) {
    if (part > 255) return false;
  }
  return port <= 65535;
}

// `text` is not const for the system's sake, which does not change it.
template <typename SocketAddress>
bool ConvertDeviceText(std::wstring& text, int family, SocketAddress* address) {
  int size = sizeof(*address);
  return WSAStringToAddressW(text.data(), family, nullptr, reinterpret_cast<sockaddr*>(address),
                             &size) == 0;
}

}  // namespace

bool IPPProviderImpl::DeviceExists(std::wstring& host, std::wstring& port) {
  TraceScope trace(L"Corvane::IPPProviderImpl::DeviceExists");
  const bool isIPv6 = IsIPv6Literal(host);
  if (!isIPv6 && !IsIPv4Literal(host)) return false;
  const Winsock winsock(MAKEWORD(1, 1));
  if (!winsock.Granted(MAKEWORD(1, 1))) return false;
  if (isIPv6) {
    host = L'[' + host + L"]:" + port;
    sockaddr_in6 address{};
    return ConvertDeviceText(host, AF_INET6, &address) &&
           Socket(AF_INET6).Connect(reinterpret_cast<const sockaddr*>(&address), sizeof(address));
  }
  sockaddr_in address{};
  if (!ConvertDeviceText(host, AF_INET, &address)) return false;
  address.sin_port = htons(static_cast<std::uint16_t>(port == L"80" ? kHttpPort : kIppPort));
  return Socket(AF_INET).Connect(reinterpret_cast<const sockaddr*>(&address), sizeof(address));
}

bool IPPProviderImpl::IsUsbPort(const wchar_t* text) {
  TraceScope trace(L"Corvane::IPPProviderImpl::IsUsbPort");
  static const std::wregex kUsbPort(L"\\bUSB(?!000)\\d{3}$", std::regex::ECMAScript);
  return text && *text && std::regex_search(text, kUsbPort);
}

}  // namespace Corvane
