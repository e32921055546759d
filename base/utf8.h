// UTF-8, and wide text as wide as the target's wchar_t: UTF-16 or UTF-32.
#ifndef CORVANE_BASE_UTF8_H_
#define CORVANE_BASE_UTF8_H_

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Corvane {

// What becomes of bytes that are no UTF-8 (RFC 3629: overlong forms, surrogates, what lies beyond
// U+10FFFF or is cut short) and of wide units that are no character (lone surrogates, what lies
// beyond U+10FFFF).
enum class Malformed {
  kRefuse,   // the conversion ends there and says so
  kReplace,  // U+FFFD: one for a lead byte with the continuation bytes up to where it went wrong, a
             // second byte out of the lead's range included, and one for any other byte or unit
  kKeep,     // as kReplace, but a lone surrogate stays, with three bytes in UTF-8
};

struct Conversion {
  std::size_t read;     // all, but where the room ended or `malformed`
  std::size_t written;  // whole characters only
  bool malformed;       // and refused
};

Conversion Convert(std::string_view utf8, Malformed policy, std::span<wchar_t> out);
Conversion Convert(std::wstring_view wide, Malformed policy, std::span<char> out);
// The same without a limit, and without the text.
Conversion Measure(std::string_view utf8, Malformed policy);
Conversion Measure(std::wstring_view wide, Malformed policy);

// Malformed text is replaced.
std::wstring ToWide(std::string_view utf8);
std::string ToUtf8(std::wstring_view wide);
// None for malformed text.
std::optional<std::wstring> ToWideStrictly(std::string_view utf8);
std::optional<std::string> ToUtf8Strictly(std::wstring_view wide);

// The code point at *position, which must be inside the text, and steps behind it. Malformed UTF-8
// gives U+FFFD; of wide text a lone surrogate comes as itself.
char32_t NextCodePoint(std::string_view utf8, std::size_t* position);
char32_t NextCodePoint(std::wstring_view wide, std::size_t* position);

// `c` is at most U+10FFFF; a surrogate has three bytes.
void AppendUtf8(char32_t c, std::string* utf8);

constexpr bool IsSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }

// Each byte as the code point of its value (ISO-8859-1): right for ASCII, lossless for the rest.
std::wstring WideFromLatin1(std::string_view bytes);

// "" for null.
inline std::wstring_view OrEmpty(const wchar_t* text) { return text ? text : std::wstring_view(); }

}  // namespace Corvane

#endif  // CORVANE_BASE_UTF8_H_
