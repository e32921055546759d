// Conversions between the wide text of the interface (one code point a character) and the UTF-8
// inside.
#ifndef CORVANE_PLATFORM_LINUX_DOM_TREE_ENCODING_H_
#define CORVANE_PLATFORM_LINUX_DOM_TREE_ENCODING_H_

#include <string>
#include <string_view>

#include "corvane/linux/automation.h"

namespace Corvane::Dom {

// Replaces *utf8. False when a character is no Unicode scalar value (a surrogate, or above
// U+10FFFF) or the result would pass `maxBytes`.
bool WideToUtf8(std::wstring_view text, std::size_t maxBytes, std::string* utf8);

// The first code point of valid, non-empty UTF-8; *length is the number of its bytes.
char32_t DecodeUtf8(std::string_view utf8, std::size_t* length);

// A BSTR of valid UTF-8, which the caller frees; never null. Throws std::bad_alloc.
BSTR Utf8ToBstr(std::string_view utf8);

// Appends lower-case text to *out, for comparisons that ignore case: the simple one-to-one pairs of
// Latin, Greek, Cyrillic and Armenian. Independent of the locale.
void AppendLowerCase(std::string_view utf8, std::string* out);

// The code points of the bytes 0x80 to 0xFF in windows-1252. Its five unassigned bytes are control
// characters, as on Windows.
char32_t Windows1252(unsigned char byte);

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_TREE_ENCODING_H_
