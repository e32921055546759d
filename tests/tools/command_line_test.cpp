// The command line itself: help, version, and what is refused.
#include <gtest/gtest.h>

#include <tuple>
#include <utility>

#include "tests/tools/tool_run.h"

namespace Corvane::Test {
namespace {

TEST(CommandLine, HelpAndVersionGoToTheOutput) {
  for (const char* const argument : {"--help", "--version"}) {
    const ProcessResult result = RunTool({argument});
    EXPECT_EQ(result.exitStatus, 0) << argument;
    EXPECT_EQ(result.error, "") << argument;
    EXPECT_TRUE(Contains(result.output, "corvane")) << argument;
  }
}

TEST(CommandLine, RefusesWhatItCannotUse) {
  const RecordedDevice device(Item("x"), "<x>1</x>");
  const std::string spec = device.Specification();
  using Arguments = std::vector<std::string>;
  std::vector<std::pair<Arguments, std::string>> cases = {
      {{}, "get, dump, probe, jobs, print, cancel or cache"},
      {{"cache"}, "show or clear"},
      {{"cache", "show"}, "--cache"},
      {{"cache", "clear", "--cache", "registry:A", "--spec", spec}, "--spec"},
      {{"put"}, "put"},
      {{"get", "--spec", spec, "x"}, "--device"},
      {{"get", "--device", device.Address(), "x"}, "--spec"},
      {{"get", "--device", device.Address(), "--spec", spec}, "NAME"},
      {{"dump", "--device", device.Address(), "--spec", spec, "x"}, "x"},
      {{"dump", "--device", device.Address(), "--spec", spec, "--q"}, "--q"},
      {{"dump", "--device", device.Address(), "--spec", spec, "--port", "80=81"}, "on the network"},
      {{"dump", "--device", device.Address(), "--spec", spec, "--snmp-user", "u"},
       "on the network"},
      {{"dump", "--device", "recorded:/no/where", "--spec", spec}, "folder"},
      {{"dump", "--device", "http://h/", "--spec", spec}, "expected"},
      {{"probe"}, "ADDRESS"},
      {{"probe", "recorded:/no/where"}, "folder"},
      {{"probe", device.Address(), "--timeout", "1"}, "on the network"},
      {{"jobs", "--device", "h"}, "--uri"},
      {{"jobs", "--device", device.Address(), "--uri", "ipp://h/p", "--user", "u"}, "recorded"},
      {{"jobs", "--device", "h", "--uri", "ipp://h/p", "--user", std::string(256, 'u')}, "255"}};
  for (const char* const uri :
       {"", "http://h/p", "IPP://h/p", "ipp:/h/p", "ipp:///p", "ipp://:631/p", "ipp://u:p@h/p",
        "ipp://h:0/p", "ipp://h:65536/p", "ipp://h:6x/p", "ipp://h:/p", "ipp://h/p#f", "ipp://h/ p",
        "ipp://h/p\n", "ipp://h/\u00e4"}) {
    cases.push_back({{"jobs", "--device", "h", "--uri", uri, "--user", "u"}, "expected ipp://"});
  }
  const std::string uri = "ipp://192.0.2.7/ipp/print";
  const std::tuple<const char*, Arguments, std::string> kPrinting[] = {
      {"print", {"--uri", uri}, "FILE"},
      {"print", {spec}, "--uri"},
      {"print", {spec, "--uri", "http://h/p"}, "expected ipp://"},
      {"print", {spec, "--uri", "ipp://h:8631/p"}, "say --port 631=8631"},
      {"print", {spec, "--uri", uri, "--copies", "0"}, "--copies"},
      {"print", {spec, "--uri", uri, "--copies", "10000"}, "--copies"},
      {"print", {spec, "--uri", uri, "--sides", "both"}, "--sides"},
      {"print", {spec, "--uri", uri, "--color", "red"}, "--color"},
      {"print", {"/no/where", "--uri", uri}, "no such file"},
      {"print", {"/", "--uri", uri}, "is a folder"},
      {"print", {spec, "--uri", uri, "--device", device.Address()}, "recorded"},
      {"print", {spec, "--uri", uri, "--job-name", std::string(256, 'n')}, "255"},
      {"print", {spec, "--uri", uri, "--account", "a"}, "with ipps:// only"},
      {"print", {spec, "--uri", "ipps://h/p", "--account", "a"}, "set CORVANE_PASSWORD"},
      {"print", {spec, "--uri", uri, "--secrets", "f"}, "--secrets is for"},
      {"print", {spec, "--uri", uri, "--timeout", "0"}, "seconds"},
      {"cancel", {"1"}, "--uri"},
      {"cancel", {"0", "--uri", uri}, "JOB-ID"},
      {"cancel", {"x", "--uri", uri}, "JOB-ID"},
      {"cancel", {"--uri", uri, "--device", device.Address()}, "recorded"}};
  for (const auto& [command, more, complaint] : kPrinting) {
    Arguments arguments = {command, "--user", "u"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    cases.emplace_back(std::move(arguments), complaint);
  }
#if !CORVANE_HOST_NETWORK
  cases.push_back({{"print", spec, "--uri", uri, "--user", "u"}, "recorded devices only"});
  cases.push_back({{"cancel", "--uri", uri, "--user", "u"}, "recorded devices only"});
#endif
  const std::tuple<const char*, const char*, const char*> kOptions[] = {
      {"--port", "80", "FROM=TO"},         {"--port", "80=0", "1 to 65535"},
      {"--port", "65536=1", "1 to 65535"}, {"--tls", "4x", "--tls 4x"},
      {"--timeout", "inf", "seconds"},     {"--timeout", "0", "seconds"},
      {"--timeout", "2s", "seconds"}};
  for (const auto& [option, value, complaint] : kOptions) {
    cases.push_back({{"dump", "--device", "h", "--spec", spec, option, value}, complaint});
  }
  const std::pair<const char*, const char*> kCaches[] = {
      {"", "expected registry:PATH"},        {"SOFTWARE\\Corvane", "expected registry:PATH"},
      {"file:x", "expected registry:PATH"},  {"registry:", "is missing"},
      {"registry:\\\\", "is missing"},       {"printer:", "is missing"},
      {"registry:\\A", "begins below"},      {"registry:HKEY_LOCAL_MACHINE\\A", "begins below"},
      {"printer:a,b\\c", "cannot be opened"}};
  for (const auto& [cache, complaint] : kCaches) {
    cases.push_back({{"cache", "show", "--cache", cache}, complaint});
    cases.push_back(
        {{"get", "x", "--device", device.Address(), "--spec", spec, "--cache", cache}, complaint});
  }
  for (const auto& [arguments, complaint] : cases) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const ProcessResult result = RunTool(arguments);
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(result.error.starts_with("corvane: ")) << result.error;
    EXPECT_TRUE(Contains(result.error, complaint)) << result.error;
  }
}

TEST(CommandLine, RepeatedOptionsLeaveNamesAlone) {
  const RecordedDevice device(Item("x"), "<x>1</x>");
  // The mapping reaches the check of the device, and x stays a name.
  const ProcessResult result = device.Run("get", {"--port", "80=81", "--port", "81=82", "x"});
  EXPECT_TRUE(Contains(result.error, "on the network")) << result.error;
  EXPECT_EQ(device.Run("get", {"--", "x"}).output, "x\t1\n");
}

TEST(CommandLine, TakesNamesAsTheyAre) {
  const std::string names[] = {"Gr\u00f6\u00dfe \u20ac", "\U0001F5A8", "/x", "\"a\\b\" c\\", "a,b"};
  for (const std::string& name : names) {
    const std::string item = "' URI='/values.xml' XPath='//x'/>";
    const RecordedDevice device("<DataItem Name='" + name + item, "<x>1</x>");
    const ProcessResult result = device.Run("get", {"--json", name});
    EXPECT_EQ(result.exitStatus, 0) << name << ": " << result.error;
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
