#include <arpa/inet.h>

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>

#include "base/decimal.h"
#include "platform/linux/misc/exception_wall.h"
#include "platform/linux/net/startup.h"
#include "platform/linux/net/winsock.h"

namespace Corvane::Net {
namespace {

constexpr std::string_view kIpv4Characters = "0123456789abcdefABCDEFxX.";
constexpr std::string_view kIpv6Characters = "0123456789abcdefABCDEF:.";

template <typename Number>
bool ParseNumber(std::string_view digits, unsigned base, Number* number) {
  const auto value = ParseDigits(digits, std::numeric_limits<Number>::max(), base);
  *number = static_cast<Number>(value.value_or(0));
  return value.has_value();
}

bool ParsePort(std::string_view text, in_port_t* port) {
  unsigned base = 10;
  if (text.starts_with("0x") || text.starts_with("0X")) {
    base = 16;
    text.remove_prefix(2);
  } else if (text.starts_with('0')) {
    base = 8;
  }
  in_port_t number = 0;
  if (!ParseNumber(text, base, &number)) return false;
  *port = htons(number);
  return number != 0;
}

// The system's parsers would also take blanks and what follows them.
bool HoldsOnly(std::string_view text, std::string_view allowed) {
  return text.find_first_not_of(allowed) == std::string_view::npos;
}

bool ParseAddressText(std::string_view text, sockaddr_in* result) {
  result->sin_family = AF_INET;
  const std::size_t colon = text.find(':');
  if (colon != std::string_view::npos) {
    if (!ParsePort(text.substr(colon + 1), &result->sin_port)) return false;
    text = text.substr(0, colon);
  }
  return HoldsOnly(text, kIpv4Characters) &&
         inet_aton(std::string(text).c_str(), &result->sin_addr) != 0;
}

bool ParseAddressText(std::string_view text, sockaddr_in6* result) {
  result->sin6_family = AF_INET6;
  if (text.starts_with('[')) {
    const std::size_t close = text.find(']');
    if (close == std::string_view::npos) return false;
    const std::string_view behind = text.substr(close + 1);
    if (!behind.empty() &&
        (behind.front() != ':' || !ParsePort(behind.substr(1), &result->sin6_port))) {
      return false;
    }
    text = text.substr(1, close - 1);
  }
  const std::size_t percent = text.find('%');
  if (percent != std::string_view::npos) {
    if (!ParseNumber(text.substr(percent + 1), 10, &result->sin6_scope_id)) return false;
    text = text.substr(0, percent);
  }
  return HoldsOnly(text, kIpv6Characters) &&
         inet_pton(AF_INET6, std::string(text).c_str(), &result->sin6_addr) == 1;
}

template <typename Address>
LSTATUS ConvertAddressText(std::wstring_view text, sockaddr* address, INT* length) {
  constexpr INT kSize = sizeof(Address);
  if (*length < kSize) {
    *length = kSize;
    return WSAEFAULT;
  }
  Address result{};
  const auto isAscii = [](wchar_t c) { return c < 0x80; };
  if (!std::all_of(text.begin(), text.end(), isAscii)) return WSAEINVAL;
  if (!ParseAddressText(std::string(text.begin(), text.end()), &result)) return WSAEINVAL;
  std::memcpy(address, &result, sizeof(result));
  *length = kSize;
  return ERROR_SUCCESS;
}

LSTATUS ConvertAddressText(const wchar_t* text, INT family, sockaddr* address, INT* length) {
  if (text == nullptr || address == nullptr || length == nullptr) return WSAEINVAL;
  if (family == AF_INET) return ConvertAddressText<sockaddr_in>(text, address, length);
  return family == AF_INET6 ? ConvertAddressText<sockaddr_in6>(text, address, length) : WSAEINVAL;
}

}  // namespace
}  // namespace Corvane::Net

extern "C" {

INT WINAPI WSAStringToAddressW(wchar_t* text, INT family, WSAPROTOCOL_INFOW*, sockaddr* address,
                               INT* length) {
  using namespace Corvane::Net;
  if (!RequireStartup()) return SOCKET_ERROR;
  const LSTATUS code =
      Corvane::BehindWall([&] { return ConvertAddressText(text, family, address, length); });
  return code == ERROR_SUCCESS ? 0 : Fail(static_cast<DWORD>(code));
}

}  // extern "C"
