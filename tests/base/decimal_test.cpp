#include "base/decimal.h"

#include <gtest/gtest.h>

#include "tests/support/cases.h"

namespace Corvane::Test {
namespace {

TEST(Decimal, ReadsTheNumberThatATextBeginsWith) {
  for (const Case& c : ReadCases("base/leading_number.txt")) {
    SCOPED_TRACE(c.Where());
    EXPECT_EQ(c.Number("number"), LeadingNumber(c.Wide("text")));
    EXPECT_EQ(c.Number("unsigned"), LeadingUint32(c.Wide("text")));
    EXPECT_EQ(c.Number("signed"), LeadingInt32(c.Text("text")));
  }
}

TEST(Decimal, TakesDigitsOfABaseUpToALimit) {
  for (const Case& c : ReadCases("base/digits.txt")) {
    SCOPED_TRACE(c.Where());
    const auto most = static_cast<std::uint64_t>(c.Number("most"));
    const auto base = static_cast<unsigned>(c.Number("base"));
    std::optional<std::uint64_t> number;
    if (c.Find("number")) number = static_cast<std::uint64_t>(c.Number("number"));
    EXPECT_EQ(number, ParseDigits(c.Text("text"), most, base));
    EXPECT_EQ(number, ParseDigits(c.Wide("text"), most, base));
  }
}

TEST(Decimal, FormatsNumbers) {
  EXPECT_EQ(L"0", FormatDecimal(0));
  EXPECT_EQ(L"-9223372036854775808", FormatDecimal(INT64_MIN));
}

}  // namespace
}  // namespace Corvane::Test
