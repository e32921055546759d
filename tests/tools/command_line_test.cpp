// The command line itself: help, version, and what is refused.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/tools/tool_run.h"

namespace Corvane::Test {
namespace {

TEST(CommandLine, HelpAndVersionGoToTheOutput) {
  for (const char* const argument : {"--help", "--version"}) {
    const ProcessResult result = RunTool({argument});
    EXPECT_EQ(result.exitStatus, 0) << argument;
    EXPECT_EQ(result.error, "") << argument;
    EXPECT_NE(result.output.find("corvane"), std::string::npos) << argument;
  }
  const ProcessResult help = RunTool({"get", "--help"});
  EXPECT_NE(help.output.find("--port FROM=TO"), std::string::npos) << help.output;
}

TEST(CommandLine, RefusesWhatItCannotUse) {
  const RecordedDevice device(Item("x"), "<x>1</x>");
  const std::string spec = device.Specification();
  const struct {
    const char* name;
    std::vector<std::string> arguments;
    const char* complaint;
  } kCases[] = {
      {"nothing", {}, "get or dump"},
      {"unknown command", {"put"}, "put"},
      {"no device", {"get", "--spec", spec, "x"}, "--device"},
      {"no specification", {"get", "--device", device.Address(), "x"}, "--spec"},
      {"no name", {"get", "--device", device.Address(), "--spec", spec}, "NAME"},
      {"name for dump", {"dump", "--device", device.Address(), "--spec", spec, "x"}, "x"},
      {"unknown option", {"dump", "--device", device.Address(), "--spec", spec, "--q"}, "--q"},
      {"port without target", {"dump", "--device", "h", "--spec", spec, "--port", "80"}, "FROM=TO"},
      {"port 0", {"dump", "--device", "h", "--spec", spec, "--port", "80=0"}, "1 to 65535"},
      {"port too large", {"dump", "--device", "h", "--spec", spec, "--port", "65536=1"}, "65535"},
      {"port no number", {"dump", "--device", "h", "--spec", spec, "--tls", "4x"}, "--tls 4x"},
      {"endless timeout", {"dump", "--device", "h", "--spec", spec, "--timeout", "inf"}, "seconds"},
      {"timeout 0", {"dump", "--device", "h", "--spec", spec, "--timeout", "0"}, "seconds"},
      {"folder missing", {"dump", "--device", "recorded:/no/where", "--spec", spec}, "folder"},
      {"network option for a folder",
       {"dump", "--device", device.Address(), "--spec", spec, "--port", "80=81"},
       "on the network"},
      {"URL", {"dump", "--device", "http://h/", "--spec", spec}, "expected"},
  };
  for (const auto& row : kCases) {
    const ProcessResult result = RunTool(row.arguments);
    EXPECT_EQ(result.exitStatus, 2) << row.name;
    EXPECT_EQ(result.output, "") << row.name;
    EXPECT_EQ(result.error.rfind("corvane: ", 0), 0u) << row.name << ": " << result.error;
    EXPECT_NE(result.error.find(row.complaint), std::string::npos) << row.name << result.error;
  }
}

TEST(CommandLine, RepeatedOptionsLeaveNamesAlone) {
  const RecordedDevice device(Item("x"), "<x>1</x>");
  // The mapping reaches the check of the device, and x stays a name.
  const ProcessResult result = device.Run("get", {"--port", "80=81", "--port", "81=82", "x"});
  EXPECT_NE(result.error.find("on the network"), std::string::npos) << result.error;
  EXPECT_EQ(device.Run("get", {"--", "x"}).output, "x\t1\n");
}

TEST(CommandLine, TakesNamesAsTheyAre) {
  const struct {
    const char* name;
    const char* attribute;
    std::string argument;
  } kCases[] = {
      {"beyond ASCII", "Gr\u00f6\u00dfe \u20ac", "Gr\u00f6\u00dfe \u20ac"},
      {"beyond the basic plane", "\U0001F5A8", "\U0001F5A8"},
      {"slash", "/x", "/x"},
      {"quotes and backslash", "&quot;a\\b&quot; c\\", "\"a\\b\" c\\"},
      {"comma", "a,b", "a,b"},
  };
  for (const auto& row : kCases) {
    const RecordedDevice device(
        std::string("<DataItem Name=\"") + row.attribute + "\" URI='/values.xml' XPath='//x'/>",
        "<x>1</x>");
    const ProcessResult result = device.Run("get", {"--json", row.argument});
    EXPECT_EQ(result.exitStatus, 0) << row.name << ": " << result.error;
  }
}

TEST(CommandLine, OpensFilesWithNamesBeyondAscii) {
  const TempFolder folder;
  const auto device = folder.Path() / u8"Ger\u00e4t \u20ac";
  std::filesystem::create_directory(device);
  const auto spec = folder.Path() / u8"sp\u00e9c \u20ac.xml";
  std::ofstream(spec) << "<DataMaps><XMLDataMap Protocol='PLSXML'/></DataMaps>";
  const ProcessResult result =
      RunTool({"dump", "--device", "recorded:" + Utf8(device), "--spec", Utf8(spec)});
  EXPECT_EQ(result.exitStatus, 3) << result.error;  // both were found
}

}  // namespace
}  // namespace Corvane::Test
