// Lower-casing of all letters, by one table on both targets.
#ifndef CORVANE_CORE_LOWER_CASE_H_
#define CORVANE_CORE_LOWER_CASE_H_

#include <string>
#include <string_view>

namespace Corvane {

// Unicode's simple mapping, one character to one; where wchar_t holds UTF-16, surrogate pairs are
// mapped as one.
std::wstring ToLower(std::wstring_view text);

}  // namespace Corvane

#endif  // CORVANE_CORE_LOWER_CASE_H_
