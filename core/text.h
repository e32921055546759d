// Wide and narrow text.
#ifndef CORVANE_CORE_TEXT_H_
#define CORVANE_CORE_TEXT_H_

#include <string>
#include <string_view>

#include "corvane/handles.h"

namespace Corvane {

// Between the system's default code page (UTF-8 on Linux) and wide text. Bytes or characters that
// the other side lacks become its replacement character. A text too long to convert (2 GB) gives an
// empty one.
UniqueBstr BstrFromNarrow(std::string_view narrow);
std::string Narrow(std::wstring_view wide);
// The same from UTF-8, whatever the system's code page.
UniqueBstr BstrFromUtf8(std::string_view utf8);

// Whether an argument or a member was given, and holds something.
template <typename Char>
constexpr bool HasText(const Char* text) {
  return text && *text;
}

// Copies `text` with its terminator when `bufferSize` characters hold it: 0, else E_OUTOFMEMORY,
// with a null buffer too. *requiredLength is the text's length + 1 in either case.
HRESULT CopyToBuffer(std::wstring_view text, wchar_t* buffer, std::uint32_t bufferSize,
                     std::uint32_t* requiredLength);

}  // namespace Corvane

#endif  // CORVANE_CORE_TEXT_H_
