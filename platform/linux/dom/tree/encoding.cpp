#include "platform/linux/dom/tree/encoding.h"

#include <new>

#include "base/letter_case.h"
#include "base/utf8.h"

namespace Corvane::Dom {

BSTR Utf8ToBstr(std::string_view utf8) {
  std::size_t chars = 0;
  for (const char byte : utf8) chars += (byte & 0xC0) != 0x80 ? 1 : 0;
  BSTR text = SysAllocStringLen(nullptr, static_cast<UINT>(chars));
  if (text == nullptr) throw std::bad_alloc();
  Convert(utf8, Malformed::kReplace, {text, chars});
  return text;
}

void AppendFolded(std::string_view utf8, std::string* out) {
  for (std::size_t i = 0; i < utf8.size();) AppendUtf8(FoldCase(NextCodePoint(utf8, &i)), out);
}

char32_t Windows1252(unsigned char byte) {
  static constexpr char16_t kC1[32] = {
      0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
      0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
      0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178,
  };
  return byte >= 0x80 && byte < 0xA0 ? kC1[byte - 0x80] : byte;
}

}  // namespace Corvane::Dom
