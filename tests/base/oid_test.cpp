#include "base/oid.h"

#include <gtest/gtest.h>

#include "tests/support/cases.h"

namespace Corvane::Test {
namespace {

TEST(OidText, ReadsArcsBetweenSingleDots) {
  for (const Case& c : ReadCases("base/oid.txt")) {
    SCOPED_TRACE(c.Where());
    const std::optional<Oid> oid = ParseOid(c.Wide("text"));
    EXPECT_EQ(c.Wide("arcs"), oid ? FormatOid(*oid) : L"");
    EXPECT_EQ(c.Text("encodable") == "yes", oid && IsEncodable(*oid));
  }
  EXPECT_EQ(Oid({1, 3, 4294967295}), ParseOid(L".1.03.4294967295"));
  std::wstring most = L"1";
  for (std::size_t arcs = 1; arcs < kMaxOidArcs; ++arcs) most += L".1";
  EXPECT_EQ(kMaxOidArcs, ParseOid(most)->size());
  EXPECT_EQ(std::nullopt, ParseOid(most + L".1"));
}

TEST(OidText, IsBelowWhatItBeginsWith) {
  EXPECT_TRUE(IsBelow({1, 3, 5}, {1, 3}));
  EXPECT_FALSE(IsBelow({1, 3}, {1, 3}));
  EXPECT_FALSE(IsBelow({1, 4, 5}, {1, 3}));
}

}  // namespace
}  // namespace Corvane::Test
