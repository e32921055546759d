// Decimal numbers in attribute texts, with 32 bits on both targets.
#ifndef CORVANE_SPEC_DECIMAL_H_
#define CORVANE_SPEC_DECIMAL_H_

#include <cstdint>
#include <string_view>

namespace Corvane {

// ASCII white space and a sign may lead; the number ends at the first character that is no digit;
// without a digit it is 0. A number that does not fit is the nearest that does; an unsigned one
// with a minus sign counts down from 2^32.
std::uint32_t ParseUnsigned(std::wstring_view text);
std::int32_t ParseSigned(std::wstring_view text);

}  // namespace Corvane

#endif  // CORVANE_SPEC_DECIMAL_H_
