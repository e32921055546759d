// Wide and 8-bit text, whatever the width of wchar_t and the locale.
#ifndef CORVANE_HOST_COMMON_TEXT_H_
#define CORVANE_HOST_COMMON_TEXT_H_

#include <optional>
#include <string>
#include <string_view>

namespace Corvane::Host {

// A unit that is no character, as a lone surrogate, becomes U+FFFD.
std::string ToUtf8(std::wstring_view text);

// None for bytes that are not UTF-8 (RFC 3629, 3): overlong forms, surrogates and what lies beyond
// U+10FFFF among them.
std::optional<std::wstring> FromUtf8(std::string_view bytes);

// Each byte as the code point of its value: right for ASCII, lossless for the rest.
std::wstring Widen(std::string_view bytes);

// "" for null.
std::wstring_view OrEmpty(const wchar_t* text);

// A to Z become a to z; nothing else changes.
std::wstring LowerAscii(std::wstring_view text);
std::string LowerAscii(std::string_view text);
bool EqualsIgnoreCase(std::wstring_view a, std::wstring_view b);

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_COMMON_TEXT_H_
