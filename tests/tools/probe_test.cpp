// "corvane probe" over recorded devices.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/support/wine.h"
#include "tests/tools/tool_run.h"

namespace Corvane::Test {
namespace {

std::string Probed(const RecordedDevice& device, int exitStatus) {
  const ProcessResult result = RunTool({"probe", device.Address()});
  EXPECT_EQ(result.exitStatus, exitStatus) << result.error;
  EXPECT_EQ(result.error, exitStatus == 0 ? "" : "corvane: the device answers no protocol\n");
  return result.output;
}

TEST(Probe, TellsEachProtocolOfARecordedDevice) {
  const RecordedDevice device("", "");
  device.Serve("7627/device.xml", "<e xmlns:dd='u'><dd:MakeAndModel>W</dd:MakeAndModel></e>");
  const std::vector<std::string> lines = LinesOf(Probed(device, 0));
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_TRUE(lines[0].starts_with("QUARN\t8080\tno\t-\t-\t-\t-\t")) << lines[0];
  EXPECT_EQ(lines[1], "WS\t7627\tyes\tW\t-\t-\t-\t-");
  EXPECT_EQ(lines[2], "PLSXML\t80\tyes\t-\t1\t-\t-\t-");
  EXPECT_EQ(lines[3], "SNMP\t161\tno\t-\t-\t-\t-\tthe device does not speak the protocol");
  EXPECT_EQ(lines[4], "IPP\t631\tno\t-\t-\t-\t-\tthe device has no IPP");
}

TEST(Probe, TellsADeviceWithADiscoveryTree) {
  if (UnderWine()) GTEST_SKIP() << "Wine's DOM does not find a resource type in the tree";
  const ProcessResult result =
      RunTool({"probe", std::string("recorded:") + CORVANE_EXAMPLES "/recorded/office-printer"});
  EXPECT_TRUE(
      result.output.starts_with("QUARN\t8080\tyes\tQuillmere 420dn\tQM42-0071934\t-\t-\t-\n"))
      << result.output;
}

TEST(Probe, EndsWithStatus3WhenNothingAnswers) {
  const RecordedDevice device("", "");
  device.Serve("80/zq/device/product_information.xml", "<P/>");
  const std::string output = Probed(device, 3);
  EXPECT_EQ(LinesOf(output).size(), 5u) << output;
  EXPECT_FALSE(Contains(output, "yes")) << output;
}

TEST(Probe, KeepsWhatADeviceSaysInItsField) {
  const RecordedDevice device("", "");
  const std::string hostile = "a&#9;b&#10;c&#x9B;2J\u202e\\";
  device.Serve("80/zq/device/product_information.xml",
               "<P><ProductSerialNumber>" + hostile + "</ProductSerialNumber><ProductName>" +
                   std::string(256, 'x') + "</ProductName></P>");
  const std::string output = Probed(device, 0);
  EXPECT_TRUE(Contains(output, "PLSXML\t80\tyes\t-\ta\\tb\\nc\\u{009B}2J\\u{202E}\\\\\t-\t-\t-\n"))
      << output;
  const ProcessResult result = RunTool({"probe", device.Address(), "--json"});
  EXPECT_EQ(ControlsIn(result.output), std::u32string(LinesOf(result.output).size(), U'\n'));
  const auto found = nlohmann::json::parse(result.output)[2];
  EXPECT_EQ(found["serial"], "a\tb\nc\u009b2J\u202e\\");
  EXPECT_EQ(found["model"], nullptr);
}

}  // namespace
}  // namespace Corvane::Test
