#include "tools/output/text_escape.h"

#include <cstddef>
#include <cstdio>

#include "base/utf8.h"

namespace Corvane::Tool {
namespace {

void AppendHex(std::string& out, const char* format, char32_t codePoint) {
  char escape[16];
  std::snprintf(escape, sizeof escape, format, static_cast<unsigned>(codePoint));
  out += escape;
}

void AppendEscaped(std::string& out, char32_t codePoint) {
  switch (codePoint) {
    case U'\\':
      out += "\\\\";
      return;
    case U'\t':
      out += "\\t";
      return;
    case U'\n':
      out += "\\n";
      return;
    case U'\r':
      out += "\\r";
      return;
    default:
      break;
  }
  if (!IsControl(codePoint) && !IsSurrogate(codePoint)) {
    AppendUtf8(codePoint, &out);
  } else if (codePoint < 0x80) {
    AppendHex(out, "\\x%02X", codePoint);
  } else {
    AppendHex(out, "\\u{%04X}", codePoint);
  }
}

template <typename Text>
std::string Escaped(Text text) {
  std::string out;
  for (std::size_t i = 0; i < text.size();) AppendEscaped(out, NextCodePoint(text, &i));
  return out;
}

}  // namespace

bool IsControl(char32_t codePoint) {
  return codePoint < 0x20 || (codePoint >= 0x7F && codePoint <= 0x9F) || codePoint == 0x061C ||
         codePoint == 0x200E || codePoint == 0x200F ||
         (codePoint >= 0x2028 && codePoint <= 0x202E) ||
         (codePoint >= 0x2066 && codePoint <= 0x2069);
}

std::string EscapeText(std::wstring_view text) { return Escaped(text); }

std::string EscapeText(std::string_view utf8) { return Escaped(utf8); }

}  // namespace Corvane::Tool
