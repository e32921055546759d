#include "tools/output/text_escape.h"
#include "base/utf8.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <unordered_set>
#include <utility>

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

TEST(TextEscape, EveryCharacterIsHarmlessAndDiffersFromTheOthers) {
  std::unordered_set<std::string> seen;
  for (char32_t codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
    const std::string escaped = EscapeText(L"a" + Wide(codePoint) + L"z");
    ASSERT_TRUE(seen.insert(escaped).second) << escaped << ": " << std::uint32_t{codePoint};
    const std::wstring shown = ToWide(escaped);
    for (std::size_t i = 0; i < shown.size();) {
      const char32_t c = NextCodePoint(shown, &i);
      ASSERT_FALSE(c < 0x20 || (c >= 0x7F && c < 0xA0) || IsSurrogate(c))
          << std::uint32_t{codePoint};
    }
  }
}

TEST(TextEscape, WritesWhatATerminalWouldActOnAsText) {
  const std::pair<std::wstring, const char*> kCases[] = {
      {L"\x1b[2J", "\\x1B[2J"},
      {L"x\r\nModel\tFake", "x\\r\\nModel\\tFake"},
      {std::wstring(L"a\0b", 3), "a\\x00b"},
      {L"\\n", "\\\\n"},
      {L"\x7f", "\\x7F"},
      {L"\u009b31m", "\\u{009B}31m"},
      {L"\u0085", "\\u{0085}"},
      {L"\u061c\u200e\u200f", "\\u{061C}\\u{200E}\\u{200F}"},
      {L"\u2028\u2029\u202a\u202e", "\\u{2028}\\u{2029}\\u{202A}\\u{202E}"},
      {L"\u2066\u2069", "\\u{2066}\\u{2069}"},
      // neighbours of the above
      {L"\u00a0\u200d\u2010\u2027\u202f\u2065\u206a", "\u00a0\u200d\u2010\u2027\u202f\u2065\u206a"},
      {L"\U0001F5A8", "\U0001F5A8"},
      {{L'a', static_cast<wchar_t>(0xD83D)}, "a\\u{D83D}"},
      {{static_cast<wchar_t>(0xDDA8), L'z'}, "\\u{DDA8}z"},
      {L"\"; $(x) %n ' ../", "\"; $(x) %n ' ../"}};
  for (const auto& [text, escaped] : kCases) EXPECT_EQ(EscapeText(text), escaped);
}

}  // namespace
}  // namespace Corvane::Tool
