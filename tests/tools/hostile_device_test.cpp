// A device, and a specification, whose every text tries to be more than text.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "base/utf8.h"
#include "tests/support/wine.h"
#include "tests/tools/tool_run.h"
#include "tools/output/text_escape.h"

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

TEST(HostileDevice, ValuesStayInTheirLine) {
  const RecordedDevice device(Item("a") + Item("b"),
                              std::string("<a>") + kHostile + "</a><b>" + kHostile + "</b>");
  const ProcessResult text = device.Run("dump", {});
  EXPECT_EQ(text.exitStatus, 0) << text.error;
  EXPECT_EQ(ControlsIn(text.output), U"\t\n\t\n") << text.output;
  const ProcessResult asked = device.Run("get", {"b", "a"});
  EXPECT_EQ(ControlsIn(asked.output), U"\t\n\t\n") << asked.output;

  const ProcessResult json = device.Run("dump", {"--json"});
  EXPECT_EQ(ControlsIn(json.output), U"\n\n\n\n") << json.output;
  const auto parsed = nlohmann::json::parse(json.output);
  EXPECT_EQ(parsed["a"], kHostileText);
  EXPECT_EQ(parsed["b"], kHostileText);
}

TEST(HostileDevice, DocumentsThatAreNoneGiveNoValue) {
  const RecordedDevice device(Item("a"), "");
  for (const std::string body :
       {"", "<V><a>\x1b[2J</a></V>",
        "<!DOCTYPE V [<!ENTITY b 'bbbb'><!ENTITY c '&b;&b;'>]><V><a>&c;</a></V>",
        "<!DOCTYPE V [<!ENTITY f SYSTEM 'file:///etc/passwd'>]><V><a>&f;</a></V>"}) {
    if (UnderWine() && body.starts_with("<!DOCTYPE")) continue;  // Wine's DOM reads one
    device.Serve("80/values.xml", body);
    const ProcessResult result = device.Run("get", {"a"});
    EXPECT_EQ(result.exitStatus, 1) << body << ": " << result.output;
    EXPECT_EQ(result.output, "") << body;
    EXPECT_EQ(ControlsIn(result.error), U"\n") << result.error;
  }
}

TEST(HostileDevice, BytesThatAreNoTextAreShownAsReplaced) {
  const RecordedDevice device(Item("a"), "<a>x\xff\x9b[2J\xfey</a>");
  for (const char* const format : {"--", "--json"}) {
    const std::string output = device.Run("dump", {format}).output;
    EXPECT_EQ(ToUtf8(ToWide(output)), output) << format;
    EXPECT_TRUE(Contains(output, "x\uFFFD\uFFFD[2J\uFFFDy")) << output;
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
  EXPECT_FALSE(Contains(result.error, "\ncorvane: forged")) << result.error;
  EXPECT_EQ(ControlsIn(result.error), std::u32string(LinesOf(result.error).size(), U'\n'));
}

}  // namespace
}  // namespace Corvane::Test
