#include "tools/output/utf8.h"

#include <type_traits>

namespace Corvane::Tool {
namespace {

constexpr char32_t kLastCodePoint = 0x10FFFF;

constexpr bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
constexpr bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

char32_t UnitAt(std::wstring_view text, std::size_t position) {
  return static_cast<std::make_unsigned_t<wchar_t>>(text[position]);
}

void AppendWide(std::wstring& wide, char32_t codePoint) {
  if constexpr (sizeof(wchar_t) == 2) {
    if (codePoint > 0xFFFF) {
      wide += static_cast<wchar_t>(0xD800 + ((codePoint - 0x10000) >> 10));
      wide += static_cast<wchar_t>(0xDC00 + ((codePoint - 0x10000) & 0x3FF));
      return;
    }
  }
  wide += static_cast<wchar_t>(codePoint);
}

// Bytes of the sequence that begins with `lead`; 0 for a byte that begins none.
std::size_t SequenceLength(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) return 2;
  if (lead >= 0xE0 && lead <= 0xEF) return 3;
  if (lead >= 0xF0 && lead <= 0xF4) return 4;
  return 0;
}

// The code point at the start of `utf8`, and its length in bytes; length 0 when it is malformed.
std::pair<char32_t, std::size_t> Decode(std::string_view utf8) {
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};  // by length: no overlong forms
  const auto lead = static_cast<unsigned char>(utf8.front());
  const std::size_t length = SequenceLength(lead);
  if (length == 0 || length > utf8.size()) return {0, 0};
  if (length == 1) return {lead, 1};
  char32_t codePoint = lead & (0xFFu >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    const auto byte = static_cast<unsigned char>(utf8[i]);
    if ((byte & 0xC0) != 0x80) return {0, 0};
    codePoint = (codePoint << 6) | (byte & 0x3Fu);
  }
  if (codePoint < kSmallest[length] || codePoint > kLastCodePoint || IsSurrogate(codePoint)) {
    return {0, 0};
  }
  return {codePoint, length};
}

}  // namespace

char32_t NextCodePoint(std::wstring_view text, std::size_t& position) {
  const char32_t unit = UnitAt(text, position++);
  if (IsHighSurrogate(unit) && position < text.size() && IsLowSurrogate(UnitAt(text, position))) {
    return 0x10000 + ((unit - 0xD800) << 10) + (UnitAt(text, position++) - 0xDC00);
  }
  return unit > kLastCodePoint ? kReplacementCharacter : unit;
}

void AppendUtf8(std::string& utf8, char32_t codePoint) {
  if (IsSurrogate(codePoint) || codePoint > kLastCodePoint) codePoint = kReplacementCharacter;
  const auto append = [&utf8](char32_t byte) { utf8 += static_cast<char>(byte); };
  if (codePoint < 0x80) {
    append(codePoint);
  } else if (codePoint < 0x800) {
    append(0xC0 | (codePoint >> 6));
    append(0x80 | (codePoint & 0x3F));
  } else if (codePoint < 0x10000) {
    append(0xE0 | (codePoint >> 12));
    append(0x80 | ((codePoint >> 6) & 0x3F));
    append(0x80 | (codePoint & 0x3F));
  } else {
    append(0xF0 | (codePoint >> 18));
    append(0x80 | ((codePoint >> 12) & 0x3F));
    append(0x80 | ((codePoint >> 6) & 0x3F));
    append(0x80 | (codePoint & 0x3F));
  }
}

std::string Utf8FromWide(std::wstring_view wide) {
  std::string utf8;
  for (std::size_t position = 0; position < wide.size();) {
    AppendUtf8(utf8, NextCodePoint(wide, position));
  }
  return utf8;
}

std::wstring WideFromUtf8(std::string_view utf8) {
  std::wstring wide;
  while (!utf8.empty()) {
    const auto [codePoint, length] = Decode(utf8);
    AppendWide(wide, length == 0 ? kReplacementCharacter : codePoint);
    utf8.remove_prefix(length == 0 ? 1 : length);
  }
  return wide;
}

std::filesystem::path PathFromUtf8(std::string_view utf8) {
  return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

std::wstring WideFromPath(const std::filesystem::path& path) {
  const std::u8string utf8 = path.u8string();
  return WideFromUtf8(std::string(utf8.begin(), utf8.end()));
}

}  // namespace Corvane::Tool
