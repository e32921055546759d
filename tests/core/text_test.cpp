#include "core/text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "core/file_time.h"
#include "corvane/code_unit_less.h"

namespace Corvane::Test {
namespace {

TEST(Text, SortsByUtf16CodeUnit) {
  std::vector<std::wstring> keys = {L"\uFFFD", L"a",      L"\U0001F600", L"B",
                                    L"",       L"\uE000", L"aa",         L"\uD7FF"};
  std::sort(keys.begin(), keys.end(), CodeUnitLess());
  const std::vector<std::wstring> expected = {L"",       L"B",          L"a",      L"aa",
                                              L"\uD7FF", L"\U0001F600", L"\uE000", L"\uFFFD"};
  EXPECT_EQ(expected, keys);
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
