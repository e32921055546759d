// The tool as its user meets it: output, order, reports, exit statuses.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tests/support/wine.h"
#include "tests/tools/tool_run.h"

namespace Corvane::Test {
namespace {

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

std::vector<std::string> LinesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::size_t CountLinesWith(const std::string& text, const std::string& part) {
  const std::vector<std::string> lines = LinesOf(text);
  return static_cast<std::size_t>(
      std::count_if(lines.begin(), lines.end(),
                    [&part](const std::string& line) { return Contains(line, part); }));
}

RecordedDevice TypicalDevice() {
  return RecordedDevice(
      Item("Model") + Item("State", "LifeSpan='600'") + Item("Level", "Prefix='toner'") +
          Item("Missing") + "<StaticDataItem Name='Maker'>Quillmere</StaticDataItem>" +
          "<StaticDataItem Name='Series' Prefix='site'>A &amp; B</StaticDataItem>" +
          "<DataItem Name='Coded' URI='/values.xml' XPath='//State' Transient='true'>"
          "<Conversion Contains='IDLE' Value='Ready'/></DataItem>",
      "<Model>Q 420</Model><State>idle</State><Level>64</Level>");
}

TEST(Get, PrintsValuesInTheOrderAsked) {
  const ProcessResult result = TypicalDevice().Run(
      "get", {"Maker", "toner:Level", "Coded", "Model", "Model", "site:Series"});
  EXPECT_EQ(result.output,
            "Maker\tQuillmere\ntoner:Level\t64\nCoded\tReady\nModel\tQ 420\nModel\tQ 420\n"
            "site:Series\tA & B\n");
  EXPECT_EQ(result.error, "");
  EXPECT_EQ(result.exitStatus, 0);
}

TEST(Get, ReportsNamesWithoutAValueAndGoesOn) {
  const RecordedDevice device = TypicalDevice();
  const ProcessResult text = device.Run("get", {"Missing", "State", "model", "Series"});
  EXPECT_EQ(text.output, "State\tidle\n");
  EXPECT_EQ(text.error,
            "corvane: Missing: no value (0x00000001): the device's /values.xml has no //Missing\n"
            "corvane: model: no value (0x80004005): the data map has no such item\n"
            "corvane: Series: no value (0x80004005): a static item; its name is site:Series\n");
  EXPECT_EQ(text.exitStatus, 1);
  const ProcessResult json = device.Run("get", {"Missing", "State", "--json"});
  EXPECT_EQ(json.output, "{\n  \"Missing\": null,\n  \"State\": \"idle\"\n}\n");
  EXPECT_EQ(json.exitStatus, 1);
}

TEST(Get, SaysWhyAnItemHasNoValue) {
  const struct {
    const char* name;
    const char* item;
    const char* expected;
  } kCases[] = {
      {"no URI", "<DataItem Name='x' XPath='//x'/>", "its item has no URI"},
      {"no XPath", "<DataItem Name='x' URI='/values.xml'/>", "its item has no XPath"},
      {"no Name", "<DataItem URI='/values.xml' XPath='//x'/>", "the data map has no such item"},
      {"no such resource", "<DataItem Name='x' URI='/gone.xml' XPath='//x'/>",
       "/gone.xml: HTTP status 404"},
      {"malformed XPath", "<DataItem Name='x' URI='/values.xml' XPath='//x['/>",
       "its XPath does not parse: //x["},
      {"not an item", "<Thing Name='x' URI='/values.xml' XPath='//x'/>",
       "the data map has no such item"},
  };
  for (const auto& row : kCases) {
    const RecordedDevice device(row.item, "<x>1</x>");
    const ProcessResult result = device.Run("get", {"x"});
    EXPECT_TRUE(Contains(result.error, row.expected)) << row.name << ": " << result.error;
    EXPECT_EQ(LinesOf(result.error).size(), 1u) << row.name;
    EXPECT_EQ(result.output, "") << row.name;
    EXPECT_EQ(result.exitStatus, 1) << row.name;
  }
}

TEST(Dump, PrintsEveryItemOfTheMapByName) {
  const RecordedDevice device = TypicalDevice();
  const ProcessResult result = device.Run("dump", {});
  EXPECT_EQ(result.output,
            "Coded\tReady\ntoner:Level\t64\nMaker\tQuillmere\nModel\tQ 420\nsite:Series\tA & B\n"
            "State\tidle\n");
  EXPECT_EQ(result.exitStatus, 1);  // Missing
  const ProcessResult json = device.Run("dump", {"--json"});
  EXPECT_TRUE(Contains(json.output, "\"toner:Level\": \"64\",\n  \"Maker\": ")) << json.output;
}

TEST(DataMaps, FirstThatFitsIsUsed) {
  const RecordedDevice device = TypicalDevice();
  device.Specify(
      "<DataMaps><!-- none --><XMLDataMap Protocol='WS'><StaticDataItem Name='which'>WS"
      "</StaticDataItem></XMLDataMap><XMLDataMap Protocol='plsxml'><StaticDataItem Name='which'>"
      "first</StaticDataItem></XMLDataMap><XMLDataMap Protocol='PLSXML'>"
      "<StaticDataItem Name='which'>second</StaticDataItem></XMLDataMap></DataMaps>");
  EXPECT_EQ(device.Run("get", {"which"}).output, "which\tfirst\n");
  device.Serve("7627/device.xml", "<e xmlns:dd='u'><dd:MakeAndModel>Q</dd:MakeAndModel></e>");
  EXPECT_EQ(device.Run("get", {"which"}).output, "which\tWS\n");
}

TEST(DataMaps, NoneThatFitsIsExplainedMapByMap) {
  const RecordedDevice device = TypicalDevice();
  device.Serve("7627/device.xml", "<other/>");
  device.Specify(
      "<DataMaps><XMLDataMap Protocol='QUARN'/><!-- not counted --><XMLDataMap Protocol='WS'/>"
      "<XMLDataMap/><OIDDataMap/><XMLDataMap Protocol='SN&#10;MP'/><Note/></DataMaps>");
  const ProcessResult result = device.Run("dump", {});
  EXPECT_EQ(result.exitStatus, 3);
  EXPECT_EQ(result.output, "");
  const std::vector<std::string> lines = LinesOf(result.error);
  const char* const kExpected[] = {
      "corvane: no data map fits the device ",
      "corvane: data map 1 (QUARN): GET ",
      "corvane: data map 2 (WS): the device answers, but does not speak the protocol",
      "corvane: data map 3 (XMLDataMap): no protocol",
      "corvane: data map 4 (OID): this build has no provider for the protocol",
      "corvane: data map 5 (SN\\nMP): this build has no protocol of that name",
      "corvane: data map 6 (Note): no protocol",
  };
  ASSERT_EQ(lines.size(), std::size(kExpected)) << result.error;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    EXPECT_EQ(lines[i].rfind(kExpected[i], 0), 0u) << lines[i];
  }
  EXPECT_TRUE(Contains(lines[1], "/DevMgmt/DiscoveryTree.xml: HTTP status 404")) << lines[1];
}

TEST(DataMaps, ResourceTypesAreFoundThroughTheDiscoveryTree) {
  if (UnderWine()) GTEST_SKIP() << "Wine's DOM cannot filter \".\" (//.[x]/y)";
  const RecordedDevice device = TypicalDevice();
  device.Serve("8080/DevMgmt/DiscoveryTree.xml",
               "<t xmlns:dd='u'><r><dd:ResourceURI>/p.xml</dd:ResourceURI>"
               "<dd:ResourceType>quarn:zqQuarnProductConfigDyn</dd:ResourceType></r>"
               "<r><dd:ResourceURI>/gone&#10;corvane: forged</dd:ResourceURI>"
               "<dd:ResourceType>gone</dd:ResourceType></r></t>");
  device.Serve("8080/p.xml", "<p xmlns:dd='u'><dd:SerialNumber>S1</dd:SerialNumber></p>");
  device.Specify(
      "<DataMaps><XMLDataMap Protocol='QUARN'>"
      "<DataItem Name='Serial' URI='quarn:zqQuarnProductConfigDyn' XPath='//dd:SerialNumber'/>"
      "<DataItem Name='Gone' URI='gone' XPath='//x'/></XMLDataMap></DataMaps>");
  const ProcessResult result = device.Run("get", {"Serial", "Gone"});
  EXPECT_EQ(result.output, "Serial\tS1\n");
  EXPECT_EQ(LinesOf(result.error).size(), 1u) << "the device forged a line: " << result.error;
  EXPECT_TRUE(Contains(result.error, "/gone")) << result.error;
}

TEST(Trace, ShowsEachOperationWithItsEndAndDepth) {
  const ProcessResult result = TypicalDevice().Run("get", {"State", "State", "--trace"});
  EXPECT_EQ(result.output, "State\tidle\nState\tidle\n");
  std::vector<std::string> open;
  for (const std::string& line : LinesOf(result.error)) {
    ASSERT_EQ(line.rfind("trace: ", 0), 0u) << line;
    const std::string text = line.substr(7 + 2 * (open.size() - (Contains(line, " < ") ? 1 : 0)));
    ASSERT_FALSE(text.empty() || text[0] == ' ') << line;
    if (text.rfind("> ", 0) == 0) open.push_back(text.substr(2));
    if (text.rfind("< ", 0) != 0) continue;
    ASSERT_FALSE(open.empty()) << line;
    EXPECT_EQ(text.rfind("< " + open.back() + " ", 0), 0u) << line;
    EXPECT_TRUE(text.ends_with(" ms")) << line;
    open.pop_back();
  }
  EXPECT_TRUE(open.empty());
}

// A query is counted by the exchanges that it makes beside the probe's one.
TEST(Trace, CountsExchangesOfKeptAndTransientItems) {
  const struct {
    const char* name;
    const char* item;
    std::size_t exchanges;
  } kCases[] = {{"static", "Maker", 0}, {"kept", "State", 1}, {"transient", "Coded", 2}};
  for (const auto& row : kCases) {
    const ProcessResult result = TypicalDevice().Run("get", {row.item, row.item, "--trace"});
    EXPECT_EQ(CountLinesWith(result.error, "> Corvane::XMLProvider::GetContent"), 1 + row.exchanges)
        << row.name;
  }
}

}  // namespace
}  // namespace Corvane::Test
