#include "base/oid.h"

#include <gtest/gtest.h>

namespace Corvane::Test {
namespace {

std::wstring OfArcs(std::size_t count) {
  std::wstring text = L"1";
  for (std::size_t i = 1; i < count; ++i) text += L".1";
  return text;
}

TEST(OidText, ReadsArcsBetweenSingleDots) {
  EXPECT_EQ(Oid({1}), ParseOid(L"1"));
  EXPECT_EQ(Oid({1, 3, 4294967295}), ParseOid(L".1.03.4294967295"));
  EXPECT_EQ(kMaxOidArcs, ParseOid(OfArcs(kMaxOidArcs))->size());
  for (const wchar_t* const text :
       {L"", L".", L"..1", L"1.", L"1..3", L"1.-3", L"1. 3", L"1.4294967296", L"a"}) {
    EXPECT_EQ(std::nullopt, ParseOid(text)) << testing::PrintToString(text);
  }
  EXPECT_EQ(std::nullopt, ParseOid(OfArcs(kMaxOidArcs + 1)));
  EXPECT_EQ(L"1.3.4294967295", FormatOid({1, 3, 4294967295}));
}

TEST(OidText, KnowsWhatAMessageCanCarry) {
  for (const Oid& oid : {Oid{0, 39}, Oid{1, 39, 7}, Oid{2, 4294967215}})
    EXPECT_TRUE(IsEncodable(oid));
  for (const Oid& oid : {Oid{1}, Oid{0, 40}, Oid{1, 40}, Oid{2, 4294967216}, Oid{3, 1}}) {
    EXPECT_FALSE(IsEncodable(oid));
  }
}

}  // namespace
}  // namespace Corvane::Test
