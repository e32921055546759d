#include "base/letter_case.h"

#include <gtest/gtest.h>

namespace Corvane::Test {
namespace {

TEST(LetterCase, LowersAllLetters) {
  static const struct {
    const char* name;
    std::wstring text;
    std::wstring lower;
  } kCases[] = {
      {"ASCII", L"Paper JAM 2 [\\]^_`", L"paper jam 2 [\\]^_`"},
      {"Latin-1", L"\u00C4\u00D6\u00DC\u00DF\u00D7", L"\u00E4\u00F6\u00FC\u00DF\u00D7"},
      {"alternating run", L"\u0100\u0101\u0139\u013A", L"\u0101\u0101\u013A\u013A"},
      {"dotted I", L"\u0130", L"i"},
      {"Greek, with a final sigma", L"\u03A3\u03AA\u03C2", L"\u03C3\u03CA\u03C2"},
      {"Cyrillic and Armenian", L"\u0416\u042F\u0531", L"\u0436\u044F\u0561"},
      {"Kelvin and capital sharp s", L"\u212A\u1E9E", L"k\u00DF"},
      {"beyond the basic plane", L"\U00010400\U0001E921", L"\U00010428\U0001E943"},
      {"no letters", L"\U0001F600\u4E2D", L"\U0001F600\u4E2D"},
  };
  for (const auto& c : kCases) EXPECT_EQ(c.lower, ToLower(c.text)) << c.name;
}

TEST(LetterCase, FoldsWhatIsEachOthersCase) {
  static const struct {
    const char* name;
    char32_t c;
    char32_t folded;
  } kCases[] = {
      {"ASCII", U'Z', U'z'},           {"Latin-1", 0xC4, 0xE4},
      {"capital sigma", 0x3A3, 0x3C3}, {"final sigma", 0x3C2, 0x3C2},
      {"dotted I", 0x130, 0x130},      {"Kelvin", 0x212A, 0x212A},
      {"a title case", 0x1C5, 0x1C5},  {"its capital", 0x1C4, 0x1C6},
      {"Deseret", 0x10400, 0x10428},
  };
  for (const auto& c : kCases) EXPECT_EQ(c.folded, FoldCase(c.c)) << c.name;
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
