// Numbers in text, read and written alike on both targets and in every locale.
#ifndef CORVANE_BASE_DECIMAL_H_
#define CORVANE_BASE_DECIMAL_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Corvane {

// The digits of a base of at most 16 that the whole text is made of. None for an empty text, for
// any other character and for a number above `max`.
std::optional<std::uint64_t> ParseDigits(std::wstring_view text, std::uint64_t max,
                                         unsigned base = 10);
std::optional<std::uint64_t> ParseDigits(std::string_view text, std::uint64_t max,
                                         unsigned base = 10);

// The number that a text begins with, as strtoll reads it: ASCII white space and a sign may lead,
// it ends at the first character that is no digit, and without a digit it is 0. One that does not
// fit is the nearest that does.
std::int64_t LeadingNumber(std::wstring_view text);
std::int64_t LeadingNumber(std::string_view text);

// The same in 32 bits. An unsigned number with a minus sign counts down from 2^32, but for one that
// does not fit, which is the largest.
std::int32_t LeadingInt32(std::wstring_view text);
std::int32_t LeadingInt32(std::string_view text);
std::uint32_t LeadingUint32(std::wstring_view text);

// As std::to_wstring, which formats by the locale, at ten times the cost.
std::wstring FormatDecimal(std::int64_t number);

}  // namespace Corvane

#endif  // CORVANE_BASE_DECIMAL_H_
