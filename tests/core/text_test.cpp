#include "core/text.h"

#include <gtest/gtest.h>

#include <set>

#include "core/file_time.h"
#include "corvane/code_unit_less.h"
#include "tests/support/cases.h"

namespace Corvane::Test {
namespace {

TEST(Text, SortsByUtf16CodeUnit) {
  const std::vector<std::wstring> sorted = {L"",       L"B",          L"a",      L"aa",
                                            L"\uD7FF", L"\U0001F600", L"\uE000", L"\uFFFD"};
  const std::set<std::wstring, CodeUnitLess> keys(sorted.rbegin(), sorted.rend());
  EXPECT_EQ(sorted, std::vector<std::wstring>(keys.begin(), keys.end()));
}

TEST(Text, MakesLongTextsWhole) {
  for (const std::size_t size : {0u, 255u, 256u, 257u, 1000u}) {
    EXPECT_EQ(std::wstring(size, L'x'), BstrFromUtf8(std::string(size, 'x')).View());
  }
}

TEST(FileTime, LifespanCountsTenthsOfASecond) {
  std::uint64_t now = 0;
  ASSERT_EQ(1, GetCurrentFileTime(&now));
  for (const Case& c : ReadCases("core/file_time.txt")) {
    SCOPED_TRACE(c.Where());
    const std::uint64_t timestamp = now - static_cast<std::uint64_t>(c.Number("age"));
    const auto lifespan = static_cast<std::uint32_t>(c.Number("lifespan"));
    EXPECT_EQ(c.Text("expired") == "yes", IsExpired(timestamp, lifespan) != 0);
  }
}

}  // namespace
}  // namespace Corvane::Test
