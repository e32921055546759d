// Requests and answers as an independent reader understands them (Linux).
#include <cups/ipp.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tests/ipp/decoded.h"
#include "tests/support/cases.h"

namespace Corvane::Test {
namespace {

using Message = std::unique_ptr<ipp_t, decltype(&ippDelete)>;

Message ReadByCups(std::string_view bytes) {
  Message message(ippNew(), &ippDelete);
  const ipp_iocb_t read = [](void* from, ipp_uchar_t* data, std::size_t size) {
    auto& left = *static_cast<std::string_view*>(from);
    size = left.copy(reinterpret_cast<char*>(data), size);
    left.remove_prefix(size);
    return static_cast<ssize_t>(size);
  };
  EXPECT_EQ(IPP_STATE_DATA, ippReadIO(&bytes, read, 1, nullptr, message.get()));
  return message;
}

// With a "|" behind each value.
std::string ValuesOf(ipp_attribute_t* attribute);

std::string CollectionOf(ipp_t* collection) {
  std::string text = "IPP_Set_Start|";
  for (auto* each = ippFirstAttribute(collection); each; each = ippNextAttribute(collection)) {
    text.append(ippGetName(each)).append("|").append(ValuesOf(each));
  }
  return text + "IPP_Set_End";
}

std::string ValueOf(ipp_attribute_t* attribute, int index) {
  char text[64];
  int first = 0;
  int second = 0;
  switch (ippGetValueTag(attribute)) {
    case IPP_TAG_INTEGER:
    case IPP_TAG_ENUM:
      return std::to_string(ippGetInteger(attribute, index));
    case IPP_TAG_BOOLEAN:
      return std::to_string(ippGetBoolean(attribute, index));
    case IPP_TAG_DATE: {
      const ipp_uchar_t* const date = ippGetDate(attribute, index);
      std::snprintf(text, sizeof(text), "%04d-%02d-%02dT%02d:%02d:%02d.%d%c%02d:%02d",
                    date[0] * 256 + date[1], date[2], date[3], date[4], date[5], date[6], date[7],
                    date[8], date[9], date[10]);
      return text;
    }
    case IPP_TAG_RANGE:
      first = ippGetRange(attribute, index, &second);
      return std::to_string(first) + ',' + std::to_string(second);
    case IPP_TAG_RESOLUTION: {
      ipp_res_t units{};
      first = ippGetResolution(attribute, index, &second, &units);
      return std::to_string(first) + ',' + std::to_string(second) + ',' + std::to_string(units);
    }
    case IPP_TAG_STRING: {
      const void* const octets = ippGetOctetString(attribute, index, &first);
      std::string commas(static_cast<const char*>(octets), static_cast<std::size_t>(first));
      std::ranges::replace(commas, '=', ',');
      std::ranges::replace(commas, ';', ',');
      return commas;
    }
    case IPP_TAG_BEGIN_COLLECTION:
      return CollectionOf(ippGetCollection(attribute, index));
    default:
      return ippGetString(attribute, index, nullptr);
  }
}

std::string ValuesOf(ipp_attribute_t* attribute) {
  std::string text;
  if (ippGetValueTag(attribute) < IPP_TAG_INTEGER) return text;  // "unknown" and the like
  for (int i = 0; i < ippGetCount(attribute); ++i) text += ValueOf(attribute, i) + '|';
  return text;
}

// As Told() has it.
std::string ToldByCups(std::string_view bytes) {
  const Message message = ReadByCups(bytes);
  std::string lines;
  for (auto* each = ippFirstAttribute(message.get()); each;
       each = ippNextAttribute(message.get())) {
    if (!ippGetName(each)) continue;  // a delimiter
    std::string values = ValuesOf(each);
    if (!values.empty()) values.pop_back();
    char tags[16];
    std::snprintf(
        tags, sizeof(tags), "%d %X ", ippGetGroupTag(each),
        values.empty() && ippGetValueTag(each) < IPP_TAG_INTEGER ? 0 : ippGetValueTag(each));
    lines.append(lines.empty() ? "" : "\n").append(tags).append(ippGetName(each));
    if (ippGetValueTag(each) >= IPP_TAG_INTEGER) lines.append("=").append(values);
  }
  return lines;
}

TEST(CupsTest, ReadsOurRequestsAsWeMeanThem) {
  for (const Case& c : ReadCases("ipp/requests.txt")) {
    SCOPED_TRACE(c.Where());
    const std::string bytes = c.Text("bytes");
    EXPECT_EQ(c.Text("told"), ToldByCups(bytes));
    const Message message = ReadByCups(bytes);
    EXPECT_EQ(bytes[2] * 256 + bytes[3], ippGetOperation(message.get()));
    EXPECT_EQ(100, ippGetRequestId(message.get()));
    int minor = -1;
    EXPECT_EQ(2, ippGetVersion(message.get(), &minor));
    EXPECT_EQ(0, minor);
  }
}

TEST(CupsTest, ReadsAnswersAsWeDo) {
  int compared = 0;
  for (const Case& c : ReadCases("ipp/answers.txt")) {
    if (c.Find("cups") || c.Text("value") == "E_FAIL") continue;
    SCOPED_TRACE(c.Where());
    EXPECT_EQ(ToldByCups(c.Text("body")), Told(c.Text("body")));
    ++compared;
  }
  EXPECT_GT(compared, 50);
  const std::string recorded = ReadData("ipp/printer_attributes.ipp");  // of a real printer
  EXPECT_EQ(ToldByCups(recorded), Told(recorded));
  EXPECT_GT(std::ranges::count(Told(recorded), '\n'), 100);
}

}  // namespace
}  // namespace Corvane::Test
