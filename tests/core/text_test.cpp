#include "core/text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "core/file_time.h"
#include "core/lower_case.h"
#include "corvane/code_unit_less.h"

namespace Corvane::Test {
namespace {

TEST(Text, LowersAllLetters) {
  static const struct {
    const wchar_t* name;
    std::wstring text;
    std::wstring lower;
  } kCases[] = {
      {L"ASCII", L"Paper JAM 2 [\\]^_`", L"paper jam 2 [\\]^_`"},
      {L"Latin-1", L"\u00C4\u00D6\u00DC\u00DF\u00D7", L"\u00E4\u00F6\u00FC\u00DF\u00D7"},
      {L"alternating run", L"\u0100\u0101\u0139\u013A", L"\u0101\u0101\u013A\u013A"},
      {L"dotted I", L"\u0130", L"i"},
      {L"Greek, with a final sigma", L"\u03A3\u03AA\u03C2", L"\u03C3\u03CA\u03C2"},
      {L"Cyrillic and Armenian", L"\u0416\u042F\u0531", L"\u0436\u044F\u0561"},
      {L"Kelvin and capital sharp s", L"\u212A\u1E9E", L"k\u00DF"},
      {L"beyond the basic plane", L"\U00010400\U0001E921", L"\U00010428\U0001E943"},
      {L"no letters", L"\U0001F600\u4E2D", L"\U0001F600\u4E2D"},
  };
  for (const auto& c : kCases) EXPECT_EQ(c.lower, ToLower(c.text)) << c.name;
}

TEST(Text, SortsByUtf16CodeUnit) {
  std::vector<std::wstring> keys = {L"\uFFFD", L"a",      L"\U0001F600", L"B",
                                    L"",       L"\uE000", L"aa",         L"\uD7FF"};
  std::sort(keys.begin(), keys.end(), CodeUnitLess());
  const std::vector<std::wstring> expected = {L"",       L"B",          L"a",      L"aa",
                                              L"\uD7FF", L"\U0001F600", L"\uE000", L"\uFFFD"};
  EXPECT_EQ(expected, keys);
}

TEST(Text, FoldsAsciiCaseAlone) {
  EXPECT_TRUE(EqualsIgnoreAsciiCase(L"DataItem", L"dATAiTEM"));
  EXPECT_FALSE(EqualsIgnoreAsciiCase(L"\u00C4", L"\u00E4"));
  EXPECT_FALSE(EqualsIgnoreAsciiCase(L"\u212A", L"k"));
  EXPECT_FALSE(EqualsIgnoreAsciiCase(L"WS", L"WSX"));
}

TEST(FileTime, LifespanCountsTenthsOfASecond) {
  std::uint64_t now = 0;
  ASSERT_EQ(1, GetCurrentFileTime(&now));
  static const struct {
    const char* name;
    std::int64_t age;  // ticks
    std::uint32_t lifespan;
    bool expired;
  } kCases[] = {
      {"never", 1'000'000'000'000, 0, false},
      {"never, from the future", -1'000'000'000'000, 0, false},
      {"young", 1'000'000, 50, false},
      {"old", 60'000'000, 50, true},
      {"from the future", -600'000'000, 50, true},
      {"the longest lifespan does not wrap", 1'000'000'000'000, 0xFFFFFFFF, false},
  };
  for (const auto& c : kCases) {
    const auto timestamp = static_cast<std::uint64_t>(static_cast<std::int64_t>(now) - c.age);
    EXPECT_EQ(c.expired, IsExpired(timestamp, c.lifespan) != 0) << c.name;
  }
}

}  // namespace
}  // namespace Corvane::Test
