#include <gtest/gtest.h>

#include "base/byte_reader.h"
#include "base/decimal.h"
#include "base/oid.h"
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

constexpr std::uint8_t kBytes[] = {0x01, 0x02, 0x03, 0xFF, 0xFE, 0xFD, 0xFC, 0x41, 0x42};

TEST(ByteReader, ReadsInNetworkOrder) {
  ByteReader reader(kBytes);
  EXPECT_EQ(0x01, reader.U8());
  EXPECT_EQ(0x0203, reader.U16());
  EXPECT_EQ(0xFFFEFDFCu, reader.U32());
  EXPECT_EQ(kBytes + 7, reader.Bytes(2).data());
  EXPECT_EQ(0u, reader.Left());
  EXPECT_TRUE(reader.Bytes(0).empty());
  EXPECT_FALSE(reader.Failed());
}

TEST(ByteReader, FailsForGoodBehindTheEnd) {
  ByteReader reader({kBytes, 3});
  EXPECT_EQ(0u, reader.U32());
  EXPECT_TRUE(reader.Failed());
  EXPECT_EQ(0, reader.U8());
  EXPECT_EQ(0u, ByteReader(kBytes).Bytes(SIZE_MAX).size());
}

}  // namespace
}  // namespace Corvane::Test
