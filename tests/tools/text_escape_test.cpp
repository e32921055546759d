// Escaping, and the conversions below it.
#include "tools/text_escape.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "tools/utf8.h"

namespace Corvane::Tool {
namespace {

std::wstring Wide(char32_t codePoint) {
  if constexpr (sizeof(wchar_t) == 2) {
    if (codePoint > 0xFFFF) {
      return {static_cast<wchar_t>(0xD7C0 + (codePoint >> 10)),
              static_cast<wchar_t>(0xDC00 + (codePoint & 0x3FF))};
    }
  }
  return {static_cast<wchar_t>(codePoint)};
}

// What an escaped text stands for.
std::wstring Unescape(const std::string& escaped) {
  const std::wstring text = WideFromUtf8(escaped);
  std::wstring out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != L'\\') {
      out += text[i];
      continue;
    }
    const wchar_t kind = text.at(++i);
    std::size_t used = 0;
    if (kind == L'x') {
      out += Wide(static_cast<char32_t>(std::stoul(text.substr(i + 1, 2), &used, 16)));
      i += used;
    } else if (kind == L'u') {
      out += Wide(static_cast<char32_t>(std::stoul(text.substr(i + 2), &used, 16)));
      i += used + 2;
    } else {
      out += kind == L'n' ? L'\n' : kind == L't' ? L'\t' : kind == L'r' ? L'\r' : kind;
    }
  }
  return out;
}

TEST(TextEscape, EveryCharacterIsHarmlessAndCanBeToldFromTheResult) {
  for (char32_t codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
    const std::wstring original = L"a" + Wide(codePoint) + L"z";
    const std::string escaped = EscapeText(original);
    const std::wstring shown = WideFromUtf8(escaped);
    for (std::size_t i = 0; i < shown.size();) {
      const char32_t c = NextCodePoint(shown, i);
      ASSERT_FALSE(c < 0x20 || (c >= 0x7F && c < 0xA0) || IsSurrogate(c))
          << std::hex << static_cast<std::uint32_t>(codePoint);
      ASSERT_TRUE(c != 0xFFFD || codePoint == 0xFFFD)
          << "lost: " << std::hex << static_cast<std::uint32_t>(codePoint);
    }
    ASSERT_EQ(Unescape(escaped), original) << std::hex << static_cast<std::uint32_t>(codePoint);
  }
}

TEST(TextEscape, WritesWhatATerminalWouldActOnAsText) {
  const struct {
    const char* name;
    std::wstring text;
    const char* escaped;
  } kCases[] = {
      {"clear screen", L"\x1b[2J", "\\x1B[2J"},
      {"forged line", L"x\r\nModel\tFake", "x\\r\\nModel\\tFake"},
      {"NUL inside", std::wstring(L"a\0b", 3), "a\\x00b"},
      {"escape of its own", L"\\n", "\\\\n"},
      {"DEL", L"\x7f", "\\x7F"},
      {"C1 control sequence introducer", L"\u009b31m", "\\u{009B}31m"},
      {"next line", L"\u0085", "\\u{0085}"},
      {"Arabic letter mark", L"\u061c", "\\u{061C}"},
      {"direction marks", L"\u200e\u200f", "\\u{200E}\\u{200F}"},
      {"separators", L"\u2028\u2029", "\\u{2028}\\u{2029}"},
      {"first and last override", L"\u202a\u202e", "\\u{202A}\\u{202E}"},
      {"first and last isolate", L"\u2066\u2069", "\\u{2066}\\u{2069}"},
      {"neighbours of the above", L"\u00a0\u200d\u2010\u2027\u202f\u2065\u206a",
       "\u00a0\u200d\u2010\u2027\u202f\u2065\u206a"},
      {"beyond the basic plane", L"\U0001F5A8", "\U0001F5A8"},
      {"lone high surrogate", {L'a', static_cast<wchar_t>(0xD83D)}, "a\\u{D83D}"},
      {"lone low surrogate", {static_cast<wchar_t>(0xDDA8), L'z'}, "\\u{DDA8}z"},
      {"shell words", L"\"; $(x) %n ' ../", "\"; $(x) %n ' ../"},
  };
  for (const auto& row : kCases) EXPECT_EQ(EscapeText(row.text), row.escaped) << row.name;
}

TEST(Utf8, ReplacesEveryByteOutsideAValidSequence) {
  const struct {
    const char* name;
    std::string utf8;
    std::wstring wide;
  } kCases[] = {
      {"two to four bytes", "\u00e9\u20ac\U0001F5A8", L"\u00e9\u20ac\U0001F5A8"},
      {"last code point", "\xF4\x8F\xBF\xBF", Wide(0x10FFFF)},
      {"beyond it", "\xF4\x90\x80\x80", L"\uFFFD\uFFFD\uFFFD\uFFFD"},
      {"overlong slash", "\xC0\xAF", L"\uFFFD\uFFFD"},
      {"overlong in three", "\xE0\x9F\xBF", L"\uFFFD\uFFFD\uFFFD"},
      {"surrogate", "\xED\xA0\x80", L"\uFFFD\uFFFD\uFFFD"},
      {"cut short", "a\xE2\x82", L"a\uFFFD\uFFFD"},
      {"interrupted", "\xE2\x82z", L"\uFFFD\uFFFDz"},
  };
  for (const auto& row : kCases) EXPECT_EQ(WideFromUtf8(row.utf8), row.wide) << row.name;
  for (int byte = 0; byte < 256; ++byte) {
    const std::wstring expected(1, byte < 0x80 ? static_cast<wchar_t>(byte) : L'\uFFFD');
    EXPECT_EQ(WideFromUtf8(std::string(1, static_cast<char>(byte))), expected) << byte;
  }
}

}  // namespace
}  // namespace Corvane::Tool
