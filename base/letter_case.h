// Letter case by one table, whatever the target, the C library and the locale.
#ifndef CORVANE_BASE_LETTER_CASE_H_
#define CORVANE_BASE_LETTER_CASE_H_

#include <algorithm>
#include <concepts>
#include <string>
#include <string_view>

namespace Corvane {

// A to Z become a to z; nothing else changes.
template <std::integral Char>
constexpr Char LowerAscii(Char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<Char>(c - 'A' + 'a') : c;
}
std::string LowerAscii(std::string_view text);
std::wstring LowerAscii(std::wstring_view text);

template <typename Char>
constexpr bool EqualsIgnoreAsciiCase(std::basic_string_view<Char> a,
                                     std::basic_string_view<Char> b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](Char x, Char y) { return LowerAscii(x) == LowerAscii(y); });
}
inline bool EqualsIgnoreAsciiCase(std::wstring_view a, std::wstring_view b) {
  return EqualsIgnoreAsciiCase<wchar_t>(a, b);
}
inline bool EqualsIgnoreAsciiCase(std::string_view a, std::string_view b) {
  return EqualsIgnoreAsciiCase<char>(a, b);
}

// Unicode's simple lower-case mapping, one character to one. Where wchar_t holds UTF-16, a
// surrogate pair is mapped as one character.
char32_t ToLower(char32_t c);
std::wstring ToLower(std::wstring_view text);

// For comparisons that ignore case, as those of the registry's names do: a capital letter becomes
// its small one, where each is the case of the other. A letter that only shares its small letter
// with another stays what it is: the Kelvin sign is no "k", a final sigma no capital's.
char32_t FoldCase(char32_t c);

}  // namespace Corvane

#endif  // CORVANE_BASE_LETTER_CASE_H_
