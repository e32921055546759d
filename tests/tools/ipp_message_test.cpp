// Where the reader of IPP answers stops.
#include <gtest/gtest.h>

#include "tests/support/ipp_bytes.h"
#include "tools/ipp/ipp_message.h"
#include "tools/ipp/ipp_values.h"

namespace Corvane::Test {
namespace {

std::string WithByte(std::string text, std::size_t position, char byte) {
  text[position] = byte;
  return text;
}

TEST(IppAnswer, IsNoneWhereverItIsCutOff) {
  const std::string whole =
      ToolAnswer(0, IppGroup(1) + IppValue(0x47, "attributes-charset", "utf-8") + IppGroup(4) +
                        IppValue(0x42, "printer-name", "P") + IppValue(0x42, "", "Q") +
                        IppValue(0x34, "c", "") + IppValue(0x4A, "", "m") + IppValue(0x37, "", ""));
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_FALSE(Tool::ReadIPPAnswer(whole.substr(0, size))) << size;
  }
  const auto answer = Tool::ReadIPPAnswer(whole + "what follows the end is no part");
  ASSERT_TRUE(answer);
  EXPECT_EQ(Tool::TextOf(answer->Find(Tool::IPPTag::kPrinterGroup, "printer-name")), "P");
  EXPECT_FALSE(answer->Find(Tool::IPPTag::kPrinterGroup, "m"));
  EXPECT_FALSE(answer->Find(Tool::IPPTag::kJobGroup, "printer-name"));
}

TEST(IppAnswer, IsNoneOfAnotherRequestOrBeyondALimit) {
  const std::string good = ToolAnswer(0, IppGroup(2));
  ASSERT_TRUE(Tool::ReadIPPAnswer(good));
  ASSERT_TRUE(Tool::ReadIPPAnswer(ToolAnswer(0, std::string(10'000, '\2'))));
  const std::string filler = IppValue(0x42, "n", std::string(65'000, 'x'));
  std::string huge = IppGroup(2);
  while (huge.size() <= Tool::kMaxIPPAnswerBytes) huge += filler;
  const struct {
    const char* name;
    std::string body;
  } kCases[] = {
      {"version 0", WithByte(good, 0, 0)},
      {"version 3", WithByte(good, 0, 3)},
      {"another request's, high half", WithByte(good, 4, 1)},
      {"another request's, low half", WithByte(good, 7, 2)},
      {"an attribute before any group", ToolAnswer(0, IppValue(0x42, "n", "v"))},
      {"another value of no attribute", ToolAnswer(0, IppGroup(2) + IppValue(0x42, "", "v"))},
      {"too many groups", ToolAnswer(0, std::string(10'001, '\2'))},
      {"too many bytes", ToolAnswer(0, huge)},
  };
  for (const auto& c : kCases) EXPECT_FALSE(Tool::ReadIPPAnswer(c.body)) << c.name;
}

}  // namespace
}  // namespace Corvane::Test
