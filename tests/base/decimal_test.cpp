#include "base/decimal.h"

#include <gtest/gtest.h>

namespace Corvane::Test {
namespace {

TEST(Decimal, ReadsTheNumberThatATextBeginsWith) {
  constexpr std::int64_t kMost = INT64_MAX;
  static const struct {
    const wchar_t* text;
    std::int64_t number;
    std::uint32_t asUnsigned;
    std::int32_t asSigned;
  } kCases[] = {
      {L"", 0, 0, 0},
      {L"-", 0, 0, 0},
      {L"12x", 12, 12, 12},
      {L"\t\r\n -12", -12, 4294967284u, -12},
      {L"+-1", 0, 0, 0},
      {L"2147483648", 2147483648, 2147483648u, 2147483647},
      {L"-2147483649", -2147483649, 2147483647u, -2147483647 - 1},
      {L"4294967295", 4294967295, 4294967295u, 2147483647},
      {L"4294967296", 4294967296, 4294967295u, 2147483647},
      {L"-4294967296", -4294967296, 4294967295u, -2147483647 - 1},
      {L"9223372036854775807", kMost, 4294967295u, 2147483647},
      {L"9223372036854775808", kMost, 4294967295u, 2147483647},
      {L"-9223372036854775808", -kMost - 1, 4294967295u, -2147483647 - 1},
      {L"-92233720368547758080", -kMost - 1, 4294967295u, -2147483647 - 1},
      {L"184467440737095516160000000000000000000001", kMost, 4294967295u, 2147483647},
      {L"\u0661", 0, 0, 0},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(c.number, LeadingNumber(c.text)) << testing::PrintToString(c.text);
    EXPECT_EQ(c.asUnsigned, LeadingUint32(c.text)) << testing::PrintToString(c.text);
    EXPECT_EQ(c.asSigned, LeadingInt32(c.text)) << testing::PrintToString(c.text);
  }
}

TEST(Decimal, TakesDigitsOfABaseUpToALimit) {
  EXPECT_EQ(65535u, ParseDigits("0065535", 65535));
  EXPECT_EQ(UINT64_MAX, ParseDigits(L"18446744073709551615", UINT64_MAX));
  EXPECT_EQ(0xAfu, ParseDigits("Af", 255, 16));
  EXPECT_EQ(8u, ParseDigits("10", 255, 8));
  EXPECT_EQ(5u, ParseDigits("5", 5));
  for (const char* const text :
       {"", "-1", "+1", " 1", "1 ", "0x1", "65536", "99999999999999999999"}) {
    EXPECT_EQ(std::nullopt, ParseDigits(text, 65535)) << text;
  }
  EXPECT_EQ(std::nullopt, ParseDigits("8", 255, 8));
  EXPECT_EQ(std::nullopt, ParseDigits("6", 5));
  EXPECT_EQ(std::nullopt, ParseDigits(L"18446744073709551616", UINT64_MAX));
}

TEST(Decimal, FormatsNumbers) {
  EXPECT_EQ(L"0", FormatDecimal(0));
  EXPECT_EQ(L"-9223372036854775808", FormatDecimal(INT64_MIN));
}

}  // namespace
}  // namespace Corvane::Test
