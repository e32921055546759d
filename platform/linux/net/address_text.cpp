#include <arpa/inet.h>

#include <algorithm>
#include <limits>
#include <string_view>

#include "platform/linux/net/startup.h"
#include "platform/linux/net/winsock.h"
#include "platform/linux/net/wsa_error.h"

namespace Corvane::Net {
namespace {

constexpr std::wstring_view kIpv4Characters = L"0123456789abcdefABCDEFxX.";
constexpr std::wstring_view kIpv6Characters = L"0123456789abcdefABCDEF:.";

// An address as the system's parsers want it. Longer text, which only zeros can make an address, is
// none.
struct NarrowAddress {
  char text[64] = {};

  bool Take(std::wstring_view wide, std::wstring_view allowed) {
    if (wide.size() >= sizeof(text)) return false;
    if (wide.find_first_not_of(allowed) != std::wstring_view::npos) return false;
    std::transform(wide.begin(), wide.end(), text, [](wchar_t c) { return static_cast<char>(c); });
    return true;
  }
};

// The value of a digit in any base up to 16; 16 for what is none.
std::uint32_t DigitValue(wchar_t c) {
  if (c >= L'0' && c <= L'9') return static_cast<std::uint32_t>(c - L'0');
  if (c >= L'a' && c <= L'f') return static_cast<std::uint32_t>(c - L'a') + 10;
  if (c >= L'A' && c <= L'F') return static_cast<std::uint32_t>(c - L'A') + 10;
  return 16;
}

bool ParseNumber(std::wstring_view digits, std::uint32_t base, std::uint32_t max,
                 std::uint32_t* number) {
  std::uint64_t value = 0;
  for (const wchar_t c : digits) {
    const std::uint32_t digit = DigitValue(c);
    if (digit >= base) return false;
    value = value * base + digit;
    if (value > max) return false;
  }
  *number = static_cast<std::uint32_t>(value);
  return !digits.empty();
}

bool ParsePort(std::wstring_view text, in_port_t* port) {
  std::uint32_t base = 10;
  if (text.starts_with(L"0x") || text.starts_with(L"0X")) {
    base = 16;
    text.remove_prefix(2);
  } else if (text.starts_with(L'0')) {
    base = 8;
  }
  std::uint32_t number = 0;
  if (!ParseNumber(text, base, std::numeric_limits<in_port_t>::max(), &number)) return false;
  *port = htons(static_cast<in_port_t>(number));
  return number != 0;
}

bool Parse(std::wstring_view text, sockaddr_in* result) {
  result->sin_family = AF_INET;
  const std::size_t colon = text.find(L':');
  if (colon != std::wstring_view::npos) {
    if (!ParsePort(text.substr(colon + 1), &result->sin_port)) return false;
    text = text.substr(0, colon);
  }
  NarrowAddress address;
  return address.Take(text, kIpv4Characters) && inet_aton(address.text, &result->sin_addr) != 0;
}

bool Parse(std::wstring_view text, sockaddr_in6* result) {
  result->sin6_family = AF_INET6;
  if (text.starts_with(L'[')) {
    const std::size_t close = text.find(L']');
    if (close == std::wstring_view::npos) return false;
    const std::wstring_view behind = text.substr(close + 1);
    if (!behind.empty() &&
        (behind.front() != L':' || !ParsePort(behind.substr(1), &result->sin6_port))) {
      return false;
    }
    text = text.substr(1, close - 1);
  }
  const std::size_t percent = text.find(L'%');
  if (percent != std::wstring_view::npos) {
    constexpr std::uint32_t kMaxScope = std::numeric_limits<std::uint32_t>::max();
    if (!ParseNumber(text.substr(percent + 1), 10, kMaxScope, &result->sin6_scope_id)) return false;
    text = text.substr(0, percent);
  }
  NarrowAddress address;
  return address.Take(text, kIpv6Characters) &&
         inet_pton(AF_INET6, address.text, &result->sin6_addr) == 1;
}

template <typename Address>
DWORD Convert(std::wstring_view text, sockaddr* address, INT* length) {
  constexpr INT kSize = sizeof(Address);
  if (*length < kSize) {
    *length = kSize;
    return WSAEFAULT;
  }
  Address result{};
  if (!Parse(text, &result)) return WSAEINVAL;
  std::memcpy(address, &result, sizeof(result));
  *length = kSize;
  return ERROR_SUCCESS;
}

DWORD Convert(const wchar_t* text, INT family, sockaddr* address, INT* length) {
  if (text == nullptr || address == nullptr || length == nullptr) return WSAEINVAL;
  switch (family) {
    case AF_INET:
      return Convert<sockaddr_in>(text, address, length);
    case AF_INET6:
      return Convert<sockaddr_in6>(text, address, length);
    default:
      return WSAEINVAL;
  }
}

}  // namespace
}  // namespace Corvane::Net

extern "C" {

INT WINAPI WSAStringToAddressW(wchar_t* text, INT family, WSAPROTOCOL_INFOW*, sockaddr* address,
                               INT* length) {
  using namespace Corvane::Net;
  if (!RequireStartup()) return SOCKET_ERROR;
  const DWORD code = Convert(text, family, address, length);
  return code == ERROR_SUCCESS ? 0 : Fail(code);
}

}  // extern "C"
