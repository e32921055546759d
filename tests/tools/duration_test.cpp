#include "tools/output/duration.h"

#include <gtest/gtest.h>

#include <utility>

namespace Corvane::Tool {
namespace {

TEST(Duration, IsCutToTwoUnits) {
  constexpr std::uint64_t kSecond = 10'000'000;
  const std::pair<std::uint64_t, const char*> kCases[] = {
      {0, "0.0 s"},
      {kSecond - 1, "0.9 s"},
      {kSecond, "1 s"},
      {60 * kSecond - 1, "59 s"},
      {60 * kSecond, "1 min"},
      {200 * kSecond, "3 min 20 s"},
      {3600 * kSecond, "1 h"},
      {7505 * kSecond, "2 h 5 min"},
      {86400 * kSecond, "1 d"},
      {UINT64_MAX, "21350398 d 5 h"},
  };
  for (const auto& [ticks, text] : kCases) EXPECT_EQ(FormatDuration(ticks), text);
}

}  // namespace
}  // namespace Corvane::Tool
