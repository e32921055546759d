#include "base/byte_reader.h"

#include <gtest/gtest.h>

namespace Corvane::Test {
namespace {

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
