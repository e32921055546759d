#include "base/decimal.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <limits>

namespace Corvane {
namespace {

template <typename Number>
using Limits = std::numeric_limits<Number>;

// The value of a digit of any base up to 16; 16 for what is none.
template <typename Char>
unsigned DigitValue(Char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a') + 10;
  if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A') + 10;
  return 16;
}

template <typename Char>
std::optional<std::uint64_t> ParseAll(std::basic_string_view<Char> text, std::uint64_t max,
                                      unsigned base) {
  std::uint64_t number = 0;
  for (const Char c : text) {
    const unsigned digit = DigitValue(c);
    if (digit >= base || digit > max || number > (max - digit) / base) return std::nullopt;
    number = number * base + digit;
  }
  return text.empty() ? std::nullopt : std::optional(number);
}

template <typename Char>
std::int64_t ParseFront(std::basic_string_view<Char> text) {
  constexpr std::uint64_t kMax = Limits<std::int64_t>::max();
  std::size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || (text[i] >= '\t' && text[i] <= '\r'))) ++i;
  const bool negative = i < text.size() && text[i] == '-';
  if (negative || (i < text.size() && text[i] == '+')) ++i;
  std::uint64_t magnitude = 0;
  for (; i < text.size() && DigitValue(text[i]) < 10; ++i) {
    // The least number is one further from 0 than the greatest.
    const std::uint64_t most = kMax + (negative ? 1 : 0);
    const unsigned digit = DigitValue(text[i]);
    magnitude = magnitude > (most - digit) / 10 ? most : magnitude * 10 + digit;
  }
  return static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude);
}

std::int32_t NearestDecimal(std::int64_t number) {
  return static_cast<std::int32_t>(
      std::clamp<std::int64_t>(number, Limits<std::int32_t>::min(), Limits<std::int32_t>::max()));
}

}  // namespace

std::optional<std::uint64_t> ParseDigits(std::wstring_view text, std::uint64_t max, unsigned base) {
  return ParseAll(text, max, base);
}

std::optional<std::uint64_t> ParseDigits(std::string_view text, std::uint64_t max, unsigned base) {
  return ParseAll(text, max, base);
}

std::int64_t LeadingNumber(std::wstring_view text) { return ParseFront(text); }
std::int64_t LeadingNumber(std::string_view text) { return ParseFront(text); }

std::int32_t LeadingInt32(std::wstring_view text) { return NearestDecimal(ParseFront(text)); }
std::int32_t LeadingInt32(std::string_view text) { return NearestDecimal(ParseFront(text)); }

std::uint32_t LeadingUint32(std::wstring_view text) {
  constexpr std::int64_t kMax = Limits<std::uint32_t>::max();
  const std::int64_t number = ParseFront(text);
  return static_cast<std::uint32_t>(number > kMax || number < -kMax ? kMax : number);
}

std::wstring FormatDecimal(std::int64_t number) {
  char digits[24];
  const char* const end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
  return {static_cast<const char*>(digits), end};
}

}  // namespace Corvane
