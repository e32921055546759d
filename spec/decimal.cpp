#include "spec/decimal.h"

#include <algorithm>
#include <limits>

namespace Corvane {
namespace {

struct Number {
  bool negative = false;
  std::uint64_t magnitude = 0;  // at most 2^32, which stands for more
};

Number Parse(std::wstring_view text) {
  constexpr std::uint64_t kTooLarge = std::uint64_t{1} << 32;
  Number number;
  text.remove_prefix(std::min(text.find_first_not_of(L" \t\n\v\f\r"), text.size()));
  if (!text.empty() && (text[0] == L'-' || text[0] == L'+')) {
    number.negative = text[0] == L'-';
    text.remove_prefix(1);
  }
  for (const wchar_t c : text) {
    if (c < L'0' || c > L'9') break;
    number.magnitude =
        std::min(number.magnitude * 10 + static_cast<std::uint64_t>(c - L'0'), kTooLarge);
  }
  return number;
}

}  // namespace

std::uint32_t ParseUnsigned(std::wstring_view text) {
  constexpr std::uint32_t kMax = std::numeric_limits<std::uint32_t>::max();
  const Number number = Parse(text);
  if (number.magnitude > kMax) return kMax;
  const auto value = static_cast<std::uint32_t>(number.magnitude);
  return number.negative ? 0 - value : value;
}

std::int32_t ParseSigned(std::wstring_view text) {
  const Number number = Parse(text);
  const auto magnitude = static_cast<std::int64_t>(number.magnitude);
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(
      number.negative ? -magnitude : magnitude, std::numeric_limits<std::int32_t>::min(),
      std::numeric_limits<std::int32_t>::max()));
}

}  // namespace Corvane
