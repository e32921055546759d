// A device, and a specification, whose every text tries to be more than text.
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tests/support/wine.h"
#include "tests/tools/tool_run.h"
#include "tools/text_escape.h"
#include "tools/utf8.h"

namespace Corvane::Test {
namespace {

// As XML; a terminal's escape character itself is no XML, its C1 forms are.
const char kHostile[] =
    "\"; $(x) %n %s ' &#13;&#10;../&#x9B;2J&#x9D;0;title&#x9C;&#x85;\u202e\u2066\u200f\u061c"
    "\u2028\u2029&#9;\\x41 $&lt;";
// What it stands for, in UTF-8.
const char kHostileText[] =
    "\"; $(x) %n %s ' \r\n../\u009b2J\u009d0;title\u009c\u0085\u202e\u2066\u200f\u061c"
    "\u2028\u2029\t\\x41 $<";

void ExpectHarmless(const std::string& text) {
  const std::wstring wide = Tool::WideFromUtf8(text);
  for (std::size_t i = 0; i < wide.size();) {
    const char32_t c = Tool::NextCodePoint(wide, i);
    EXPECT_TRUE(c == U'\n' || c == U'\t' || !Tool::IsControl(c))
        << std::hex << static_cast<unsigned>(c);
  }
}

TEST(HostileDevice, ValuesStayInTheirLine) {
  const RecordedDevice device(Item("a") + Item("b"),
                              std::string("<a>") + kHostile + "</a><b>" + kHostile + "</b>");
  const ProcessResult text = device.Run("dump", {});
  EXPECT_EQ(text.exitStatus, 0) << text.error;
  EXPECT_EQ(std::count(text.output.begin(), text.output.end(), '\n'), 2) << text.output;
  EXPECT_EQ(std::count(text.output.begin(), text.output.end(), '\t'), 2) << text.output;
  ExpectHarmless(text.output);

  const ProcessResult json = device.Run("dump", {"--json"});
  ExpectHarmless(json.output);
  const auto parsed = nlohmann::json::parse(json.output);
  EXPECT_EQ(parsed["a"], kHostileText);
  EXPECT_EQ(parsed["b"], kHostileText);
}

TEST(HostileDevice, DocumentsThatAreNoneGiveNoValue) {
  const struct {
    const char* name;
    std::string body;
  } kCases[] = {
      {"escape character", "<V><a>\x1b[2J</a></V>"},
      {"entity bomb", "<!DOCTYPE V [<!ENTITY b 'bbbb'><!ENTITY c '&b;&b;'>]><V><a>&c;</a></V>"},
      {"file inclusion", "<!DOCTYPE V [<!ENTITY f SYSTEM 'file:///etc/passwd'>]><V><a>&f;</a></V>"},
      {"empty", ""},
  };
  for (const auto& row : kCases) {
    const bool usesDoctype = row.body.rfind("<!DOCTYPE", 0) == 0;
    if (UnderWine() && usesDoctype) continue;  // Wine's DOM reads a document type
    const RecordedDevice device(Item("a"), "");
    device.Serve("80/values.xml", row.body);
    const ProcessResult result = device.Run("get", {"a"});
    EXPECT_EQ(result.exitStatus, 1) << row.name << ": " << result.output;
    EXPECT_EQ(result.output, "") << row.name;
    ExpectHarmless(result.error);
  }
}

TEST(HostileDevice, BytesThatAreNoTextAreShownAsReplaced) {
  const RecordedDevice device(Item("a"), "<a>x\xff\x9b[2J\xfey</a>");
  for (const char* const format : {"--", "--json"}) {
    const ProcessResult result = device.Run("dump", {format});
    EXPECT_EQ(Tool::Utf8FromWide(Tool::WideFromUtf8(result.output)), result.output) << format;
    EXPECT_NE(result.output.find("x\uFFFD\uFFFD[2J\uFFFDy"), std::string::npos) << result.output;
  }
}

TEST(HostileSpecification, NamesAndPlacesAreEscapedWhereverTheyShow) {
  const RecordedDevice device(
      "<DataItem Name=\"n&#10;corvane forged&#x9B;\" URI='/values.xml' "
      "XPath='//a'/><DataItem Name=\"gone\" URI='/g&#10;corvane: forged' "
      "XPath='//&#10;a[&#x202E;'/>",
      "<a>1</a>");
  const ProcessResult result = device.Run("dump", {"--trace"});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.output, "n\\ncorvane forged\\u{009B}\t1\n");
  EXPECT_EQ(result.error.find("\ncorvane: forged"), std::string::npos) << result.error;
  ExpectHarmless(result.error);
}

}  // namespace
}  // namespace Corvane::Test
