// The tool as its user meets it: output, order, reports, exit statuses.
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "tests/support/wine.h"
#include "tests/tools/tool_run.h"

namespace Corvane::Test {
namespace {

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
  const std::pair<const char*, const char*> kCases[] = {
      {"<DataItem Name='x' XPath='//x'/>", "its item has no URI"},
      {"<DataItem Name='x' URI='/values.xml'/>", "its item has no XPath"},
      {"<DataItem URI='/values.xml' XPath='//x'/>", "the data map has no such item"},
      {"<Thing Name='x' URI='/values.xml' XPath='//x'/>", "the data map has no such item"},
      {"<DataItem Name='x' URI='/gone.xml' XPath='//x'/>", "/gone.xml: HTTP status 404"},
      {"<DataItem Name='x' URI='/values.xml' XPath='//x['/>", "its XPath does not parse: //x["}};
  for (const auto& [item, expected] : kCases) {
    const ProcessResult result = RecordedDevice(item, "<x>1</x>").Run("get", {"x"});
    EXPECT_TRUE(Contains(result.error, expected)) << item << ": " << result.error;
    EXPECT_EQ(LinesOf(result.error).size(), 1u) << item;
    EXPECT_EQ(result.output, "") << item;
    EXPECT_EQ(result.exitStatus, 1) << item;
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
  std::string maps = "<DataMaps><!-- none -->";
  for (const std::string protocol : {"WS", "plsxml", "PLSXML"}) {
    maps += "<XMLDataMap Protocol='" + protocol + "'><StaticDataItem Name='which'>" + protocol +
            "</StaticDataItem></XMLDataMap>";
  }
  device.Specify(maps + "</DataMaps>");
  EXPECT_EQ(device.Run("get", {"which"}).output, "which\tplsxml\n");
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
      "corvane: data map 4 (OID): the device has no SNMP",
      "corvane: data map 5 (SN\\nMP): this build has no protocol of that name",
      "corvane: data map 6 (Note): no protocol",
  };
  ASSERT_EQ(lines.size(), std::size(kExpected)) << result.error;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    EXPECT_TRUE(lines[i].starts_with(kExpected[i])) << lines[i];
  }
  EXPECT_TRUE(Contains(lines[1], "/DevMgmt/DiscoveryTree.xml: HTTP status 404")) << lines[1];
}

// network_device_test reads resource types; here the device tries to forge a line with one.
TEST(DataMaps, PlacesThatTheDeviceNamesAreEscaped) {
  if (UnderWine()) GTEST_SKIP() << "Wine's DOM cannot filter \".\" (//.[x]/y)";
  const RecordedDevice device = TypicalDevice();
  device.Serve("8080/DevMgmt/DiscoveryTree.xml",
               "<t xmlns:dd='u'><r><dd:ResourceURI>/p.xml</dd:ResourceURI>"
               "<dd:ResourceType>quarn:zqQuarnProductConfigDyn</dd:ResourceType></r>"
               "<r><dd:ResourceURI>/gone&#10;corvane: forged</dd:ResourceURI>"
               "<dd:ResourceType>gone</dd:ResourceType></r></t>");
  device.Serve("8080/p.xml", "<p xmlns:dd='u'><dd:SerialNumber>S1</dd:SerialNumber></p>");
  device.Specify(
      "<DataMaps><XMLDataMap Protocol='QUARN'><DataItem Name='Gone' URI='gone' XPath='//x'/>"
      "</XMLDataMap></DataMaps>");
  const ProcessResult result = device.Run("get", {"Gone"});
  EXPECT_EQ(LinesOf(result.error).size(), 1u) << result.error;
  EXPECT_TRUE(Contains(result.error, "/gone")) << result.error;
}

TEST(Trace, ShowsEachOperationWithItsEndAndDepth) {
  const ProcessResult result = TypicalDevice().Run("get", {"State", "State", "--trace"});
  EXPECT_EQ(result.output, "State\tidle\nState\tidle\n");
  std::vector<std::string> open;
  for (const std::string& line : LinesOf(result.error)) {
    ASSERT_TRUE(line.starts_with("trace: ")) << line;
    const std::string text = line.substr(7 + 2 * (open.size() - (Contains(line, " < ") ? 1 : 0)));
    ASSERT_FALSE(text.empty() || text[0] == ' ') << line;
    if (text.starts_with("> ")) open.push_back(text.substr(2));
    if (!text.starts_with("< ")) continue;
    ASSERT_FALSE(open.empty()) << line;
    EXPECT_TRUE(text.starts_with("< " + open.back() + " ")) << line;
    EXPECT_TRUE(text.ends_with(" ms")) << line;
    open.pop_back();
  }
  EXPECT_TRUE(open.empty());
}

// A query is counted by the exchanges that it makes beside the probe's one.
TEST(Trace, CountsExchangesOfKeptAndTransientItems) {
  for (const auto& [item, exchanges] : {std::pair{"Maker", 0}, {"State", 1}, {"Coded", 2}}) {
    const auto lines = LinesOf(TypicalDevice().Run("get", {item, item, "--trace"}).error);
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                            [](const std::string& line) {
                              return Contains(line, "> Corvane::XMLProvider::GetContent");
                            }),
              1 + exchanges)
        << item;
  }
}

}  // namespace
}  // namespace Corvane::Test
