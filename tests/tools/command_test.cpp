// Whole runs over recorded devices, and what the command line refuses.
#include <functional>

#include "base/utf8.h"
#include "tests/support/wine.h"
#include "tests/tools/tool_test.h"
#include "tools/ipp/printer_uri.h"
#include "tools/options/cache_location.h"
#include "tools/options/command_line.h"
#include "tools/output/failure.h"

namespace Corvane::Test {
namespace {

class CommandTest : public ToolTest {};

TEST_F(CommandTest, QueriesRecordedDevices) {
  int leftOut = 0;
  for (const Case& c : ReadCases("tools/queries.txt")) {
    if (UnderWine() && c.Find("wine")) {
      ++leftOut;
    } else {
      ExpectCase(c);
    }
  }
  if (leftOut > 0) std::cout << leftOut << " cases that Wine gets wrong are left out\n";
}

TEST_F(CommandTest, HelpAndVersionGoToTheOutput) {
  Expect("--version", "corvane *");
  const ProcessResult help = Run("--help");
  EXPECT_EQ(help.exitStatus, 0);
  EXPECT_EQ(help.error, "");
  EXPECT_TRUE(Contains(help.output, "corvane get --device")) << help.output;
}

TEST_F(CommandTest, RefusesWhatItCannotUse) {
  Serve("80/values.xml", "<x>1</x>");
  Specify("<DataMaps/>");
  for (const Case& c : ReadCases("tools/refusals.txt")) {
    SCOPED_TRACE(c.Where());
    const ProcessResult result = Run(c.Text("run"));
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(result.error.starts_with("corvane: ")) << result.error;
    EXPECT_TRUE(Contains(result.error, c.Text("complaint"))) << result.error;
  }
}

TEST_F(CommandTest, NeedsANetworkToPrint) {
  if (!UnderWine()) GTEST_SKIP() << "this build has one";
  Specify("<DataMaps/>");
  for (const std::string command : {"print @spec@", "cancel"}) {
    Expect(command + " --user u --uri ipp://192.0.2.7/p", "",
           "corvane: *: this build reads recorded devices only*\n", 2);
  }
}

TEST_F(CommandTest, OpensFilesWithNamesBeyondAscii) {
  std::filesystem::create_directory(m_folder.Path() / u8"Ger\u00e4t \u20ac");
  std::ofstream(m_folder.Path() / u8"sp\u00e9c \u20ac.xml")
      << "<DataMaps><XMLDataMap Protocol='PLSXML'/></DataMaps>";
  m_names["folder"] = Utf8(m_folder.Path());
  Expect(
      "dump --device 'recorded:@folder@/Ger\u00e4t \u20ac' --spec '@folder@/sp\u00e9c \u20ac.xml'",
      "", "corvane: no data map fits *\ncorvane: data map 1 (PLSXML): *\n", 3);
}

TEST_F(CommandTest, TraceShowsEachOperationWithItsEndAndDepth) {
  Specify(
      "<DataMaps><XMLDataMap Protocol='PLSXML'><DataItem Name='a&#10;b' URI='/values.xml' "
      "XPath='//&#10;a[&#x202E;'/></XMLDataMap></DataMaps>");
  std::vector<std::string> open;
  for (const std::string& line :
       LinesOf(Run("dump --device recorded:@data@/typical --spec @spec@ --trace").error)) {
    if (line.starts_with("corvane: a\\nb: no value ")) continue;
    ASSERT_TRUE(line.starts_with("trace: ")) << line;
    EXPECT_EQ(ControlsIn(line), U"") << line;
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

// What `parse` makes of a text, or why it refuses it.
std::string Parsed(const std::function<std::string()>& parse) {
  try {
    return parse();
  } catch (const Tool::Failure& failure) {
    EXPECT_EQ(failure.Status(), Tool::kBadUsage);
    return failure.what();
  }
}

TEST(NetworkOptions, AreTakenFromTheCommandLine) {
  const char* const words[] = {"corvane", "probe", "h",   "--timeout", "1.5", "--port",
                               "80=81",   "--tls", "443", "--cacert",  "f"};
  const auto options = Tool::ParseOptions(static_cast<int>(std::size(words)), words);
  ASSERT_TRUE(options);
  const Tool::NetworkArguments& network = options->network;
  EXPECT_EQ(network.timeoutMs, 1500u);
  EXPECT_EQ(network.portMap, (std::map<std::uint32_t, std::uint32_t>{{80, 81}}));
  EXPECT_EQ(network.tlsPorts, std::set<std::uint32_t>{kIppsPort});
  EXPECT_EQ(network.caFile, "f");
}

TEST(PrinterUri, HasHostPortAndPath) {
  for (const Case& c : ReadCases("tools/printer_uris.txt")) {
    const std::string read = Parsed([&] {
      const Tool::PrinterUri uri = Tool::ParsePrinterUri(c.Text("uri"));
      return uri.host + ' ' + (uri.port ? std::to_string(*uri.port) : "-") + ' ' + uri.path + ' ' +
             std::to_string(uri.servicePort);
    });
    if (c.Text("read").empty()) {
      EXPECT_TRUE(Contains(read, ": expected ipp://HOST/PATH")) << c.Where() << read;
    } else {
      EXPECT_EQ(read, c.Text("read")) << c.Where();
    }
  }
}

TEST(CacheLocation, IsARegistryKeyOrAPrinter) {
  for (const Case& c : ReadCases("tools/cache_locations.txt")) {
    const std::string told =
        Parsed([&] { return TextOf(Tool::ParseCacheLocation(c.Text("location"))); });
    if (c.Find("complaint")) {
      EXPECT_TRUE(Contains(told, c.Text("complaint"))) << c.Where() << told;
    } else {
      EXPECT_EQ(told, c.Text("told")) << c.Where();
    }
  }
}

}  // namespace
}  // namespace Corvane::Test
