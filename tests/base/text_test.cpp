#include <gtest/gtest.h>

#include <array>
#include <sstream>

#include "base/letter_case.h"
#include "base/utf8.h"
#include "tests/support/cases.h"

namespace Corvane::Test {
namespace {

// Of code points in hexadecimal.
std::wstring WideOf(const std::string& points) {
  std::wstring wide;
  std::istringstream stream(points);
  for (std::uint32_t c = 0; stream >> std::hex >> c;) {
    if (sizeof(wchar_t) == 2 && c > 0xFFFF) {
      wide.push_back(static_cast<wchar_t>(0xD7C0 + (c >> 10)));
      c = 0xDC00 | (c & 0x3FF);
    }
    wide.push_back(static_cast<wchar_t>(c));
  }
  return wide;
}

TEST(Utf8, ConvertsReplacesAndRefuses) {
  const std::string x(400, 'x');
  const std::wstring wideX(400, L'x');
  for (const Case& c : ReadCases("base/utf8.txt")) {
    SCOPED_TRACE(c.Where());
    const std::string utf8 = c.Text("bytes");
    const std::wstring wide = WideOf(c.Text("points"));
    EXPECT_EQ(wide, ToWide(utf8));
    EXPECT_EQ(wideX + wide + wideX, ToWide(x + utf8 + x)) << "inside blocks of ASCII";
    std::string again;
    for (std::size_t i = 0; i < utf8.size();) {
      AppendUtf8(NextCodePoint(utf8, &i), &again);
    }
    EXPECT_EQ(ToUtf8(wide), again);
    const bool isMalformed = c.Find("is").has_value();
    EXPECT_EQ(isMalformed ? std::nullopt : std::optional(wide), ToWideStrictly(utf8));
    EXPECT_EQ(isMalformed, Measure(utf8, Malformed::kRefuse).malformed);
    if (isMalformed) continue;
    EXPECT_EQ(utf8, again);
    EXPECT_EQ(x + utf8 + x, ToUtf8(wideX + wide + wideX));
    EXPECT_EQ(utf8, ToUtf8Strictly(wide));
  }
}

// Measured and converted, which must agree.
template <typename To, typename From>
std::basic_string<To> Kept(std::basic_string_view<From> text) {
  std::basic_string<To> kept(Measure(text, Malformed::kKeep).written, To('#'));
  EXPECT_EQ(kept.size(), Convert(text, Malformed::kKeep, std::span(kept)).written);
  return kept;
}

TEST(Utf8, ReplacesRefusesOrKeepsLoneSurrogates) {
  const std::wstring wide = {L'a', static_cast<wchar_t>(0xD83D), L'z'};
  const std::string kept = "a\xED\xA0\xBDz";
  EXPECT_EQ("a\xEF\xBF\xBDz", ToUtf8(wide));
  EXPECT_EQ(std::nullopt, ToUtf8Strictly(wide));
  EXPECT_EQ(kept, (Kept<char, wchar_t>(wide)));
  EXPECT_EQ(wide, (Kept<wchar_t, char>(kept)));
  std::size_t position = 1;
  EXPECT_EQ(char32_t{0xD83D}, NextCodePoint(wide, &position));
  EXPECT_EQ(2u, position);
  EXPECT_EQ(L"\u00E4z", WideFromLatin1("\xE4z"));
}

TEST(Utf8, WritesWholeCharactersThatFit) {
  std::array<char, 4> bytes{};
  const Conversion done = Convert(L"a\u20AC\u20AC", Malformed::kReplace, bytes);
  EXPECT_EQ(2u, done.read);
  EXPECT_EQ(4u, done.written);
  EXPECT_FALSE(done.malformed);
  wchar_t unit[1];
  EXPECT_EQ(sizeof(wchar_t) == 2 ? 0u : 1u,
            Convert("\U0001F5A8", Malformed::kReplace, unit).written);
}

TEST(LetterCase, LowersAllLettersAndFoldsWhatIsEachOthersCase) {
  for (const Case& c : ReadCases("base/letter_case.txt")) {
    SCOPED_TRACE(c.Where());
    EXPECT_EQ(c.Wide("lower"), ToLower(c.Wide("text")));
    const std::string text = c.Text("text");
    std::string folded;
    for (std::size_t i = 0; i < text.size();) {
      AppendUtf8(FoldCase(NextCodePoint(text, &i)), &folded);
    }
    EXPECT_EQ(c.Find("folded").value_or(c.Text("lower")), folded);
  }
}

TEST(LetterCase, ComparesAsciiLettersAlone) {
  EXPECT_TRUE(EqualsIgnoreAsciiCase(L"DataItem", L"dATAiTEM"));
  EXPECT_FALSE(EqualsIgnoreAsciiCase(L"\u00C4", L"\u00E4"));
  EXPECT_FALSE(EqualsIgnoreAsciiCase(L"\u212A", L"k"));
  EXPECT_FALSE(EqualsIgnoreAsciiCase("WS", "WSX"));
  EXPECT_EQ(L"az[\u00C4", LowerAscii(L"AZ[\u00C4"));
}

}  // namespace
}  // namespace Corvane::Test
