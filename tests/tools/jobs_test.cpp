// "corvane jobs" against a real IPP printer, and against devices that lie (Linux).
#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <thread>

#include "ipp/wire/writer.h"
#include "tests/support/ipp_bytes.h"
#include "tests/support/peers/ippeveprinter.h"
#include "tests/support/peers/loopback_server.h"
#include "tests/tools/tool_run.h"
#include "tools/ipp/ipp_exchange.h"
#include "tools/options/device.h"
#include "tools/output/console.h"

namespace Corvane::Test {
namespace {

using nlohmann::json;

ProcessResult RunJobs(std::uint16_t port, const std::vector<std::string>& more,
                      const std::string& path = "/ipp/print") {
  std::vector<std::string> arguments = {"jobs",
                                        "--device",
                                        "127.0.0.1",
                                        "--uri",
                                        "ipp://localhost:" + std::to_string(port) + path,
                                        "--timeout",
                                        "2"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return RunTool(arguments);
}

class JobsOfPrinter : public testing::Test {
 protected:
  void SetUp() override {
    // Its one job at a time is printed for as long as the test wants.
    const auto command = m_folder.Write(
        "print", "#!/bin/sh\nwhile [ ! -e '" + Utf8(Release()) + "' ]; do sleep 0.05; done\n");
    std::filesystem::permissions(command, std::filesystem::perms::owner_all);
    ASSERT_TRUE(m_printer.Start("-f text/plain -c '" + Utf8(command) + "'")) << m_printer.Failure();
  }
  void TearDown() override { LetJobsEnd(); }

  std::filesystem::path Release() const { return m_folder.Path() / "release"; }
  void LetJobsEnd() const { m_folder.Write("release", ""); }

  void Print(const std::string& user, const std::string& name) const {
    Tool::Options options;
    options.device = "127.0.0.1";
    options.network.portMap[kIppPort] = m_printer.Port();
    const RefPtr<Address> device = Tool::OpenDevice(options);
    std::string request =
        Tool::BeginIPPRequest(IPPOperation::kPrintJob, "ipp://localhost/ipp/print");
    AppendIPPValue(&request, IPPTag::kName, "requesting-user-name", user);
    AppendIPPValue(&request, IPPTag::kName, "job-name", name);
    AppendIPPValue(&request, IPPTag::kMimeMediaType, "document-format", "text/plain");
    request += static_cast<char>(IPPTag::kEndOfAttributes);
    request += "hello\n";  // and the end tag that the exchange adds
    std::string problem;
    const auto answer = Tool::ExchangeIPP(*device.Get(), 631, "/ipp/print", request, &problem);
    ASSERT_TRUE(answer && Tool::IsSuccessful(*answer)) << problem;
  }

  ProcessResult Jobs(const std::vector<std::string>& more) const {
    return RunJobs(m_printer.Port(), more);
  }

  const TempFolder m_folder;
  Ippeveprinter m_printer;
};

TEST_F(JobsOfPrinter, AreListedWhileTheyLastAndAfterwards) {
  EXPECT_EQ(Jobs({"--user", "ana"}).output, "");
  EXPECT_EQ(Jobs({"--user", "ana", "--json"}).output, "[]\n");
  Print("ana", "Sitzung \u00fc\tA");

  const std::string uri = "ipp://localhost/ipp/print/1";
  const ProcessResult text = Jobs({"--user", "ana"});
  EXPECT_EQ(text.output, "1\tprocessing\tjob-printing\tSitzung \u00fc\\tA\tana\t" + uri + "\n");
  EXPECT_EQ(text.exitStatus, 0) << text.error;
  EXPECT_EQ(text.error, "");
  const json expected = {{{"job-id", 1},
                          {"job-state", "processing"},
                          {"job-state-reasons", {"job-printing"}},
                          {"job-name", "Sitzung \u00fc\tA"},
                          {"job-originating-user-name", "ana"},
                          {"job-uri", uri}}};
  EXPECT_EQ(json::parse(Jobs({"--user", "ana", "--json"}).output), expected);
  EXPECT_EQ(Jobs({"--user", "bob"}).output, "");
  EXPECT_EQ(Jobs({"--user", "ana", "--completed"}).output, "");

  LetJobsEnd();
  ProcessResult ended;
  for (int i = 0; i < 100 && ended.output.empty(); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    ended = Jobs({"--user", "ana", "--completed"});
  }
  EXPECT_TRUE(ended.output.starts_with("1\tcompleted\tjob-completed-successfully\t"))
      << ended.output << ended.error;
  EXPECT_EQ(Jobs({"--user", "ana"}).output, "");
}

TEST_F(JobsOfPrinter, AreToldOnlyByThePrinterAtTheUri) {
  const ProcessResult result = RunJobs(m_printer.Port(), {"--user", "ana"}, "/ipp/other");
  EXPECT_EQ(result.exitStatus, 3);
  EXPECT_EQ(result.output, "");
  EXPECT_TRUE(Contains(result.error, "0x0406")) << result.error;
  // The command line's mapping wins over the port of the URI.
  const std::string port = std::to_string(m_printer.Port());
  EXPECT_EQ(RunTool({"jobs", "--device", "127.0.0.1", "--uri", "ipp://localhost:9/ipp/print",
                     "--user", "ana", "--port", "631=" + port})
                .exitStatus,
            0);
}

constexpr char kSaid[] = "x\x1b[2J\ncorvane: forged\u202e\u009b\xff";
constexpr char kSaidEscaped[] = "x\\x1B[2J\\ncorvane: forged\\u{202E}\\u{009B}\uFFFD";

TEST(JobsOfLyingPrinter, AreListedAsFarAsTheyAreAny) {
  constexpr int kInteger = 0x21, kEnum = 0x23, kBegin = 0x34, kWithLanguage = 0x36, kEnd = 0x37,
                kName = 0x42, kKeyword = 0x44, kMember = 0x4A;
  const std::string number("\0\0\0\5", 4);
  const std::string german("\0\2de\0\3B\xc3\xa4", 9);
  static const struct {
    const char* name;
    std::string groups;
    std::string output;
    const char* error;
  } kCases[] = {
      {"escapes everywhere",
       IppGroup(2) + IppValue(kName, "job-name", kSaid) + IppValue(kKeyword, "job-uri", kSaid) +
           IppValue(kKeyword, "job-state-reasons", "a\tb") + IppValue(kKeyword, "", "c"),
       std::string("-\t-\ta\\tb,c\t") + kSaidEscaped + "\t-\t" + kSaidEscaped + "\n", ""},
      {"no attributes, then a text with its language",
       IppGroup(2) + IppGroup(2) + IppValue(kWithLanguage, "job-name", german),
       "-\t-\t-\t-\t-\t-\n-\t-\t-\tB\u00e4\t-\t-\n", ""},
      {"wrong types, sizes and states",
       IppGroup(2) + IppValue(kInteger, "job-id", "123") + IppValue(kEnum, "job-state", "\0") +
           IppValue(kWithLanguage, "job-name", std::string("\0\2de\0\x09x", 7)) +
           IppValue(0x10, "job-uri", "unsupported"),
       "-\t-\t-\t\\x00\\x02de\\x00\\tx\t-\t-\n", ""},
      {"a number that is no state", IppGroup(2) + IppValue(kEnum, "job-state", "\x7f\xff\xff\xff"),
       "-\t2147483647\t-\t-\t-\t-\n", ""},
      {"names within a collection",
       IppGroup(2) + IppValue(kInteger, "job-id", number) + IppValue(kBegin, "x-col", "") +
           IppValue(kMember, "", "job-name") + IppValue(kName, "", "forged") +
           IppValue(kEnd, "", ""),
       "5\t-\t-\t-\t-\t-\n", ""},
      {"Latin-1",
       IppValue(0x47, "attributes-charset", "iso-8859-1") + IppGroup(2) +
           IppValue(kName, "job-name", "Caf\xe9"),
       "-\t-\t-\tCaf\u00e9\t-\t-\n", ""},
      {"a printer that does not choose",
       IppGroup(5) + IppValue(0x10, "my-jobs", "") + IppGroup(2) +
           IppValue(kInteger, "job-id", number),
       "5\t-\t-\t-\t-\t-\n", "my-jobs"},
  };
  for (const auto& c : kCases) {
    LoopbackServer server(LoopbackServer::AnswerEach(IppResponse(LibraryAnswer(0, c.groups))));
    const ProcessResult text = RunJobs(server.Port(), {"--user", "ana"});
    EXPECT_EQ(text.output, c.output) << c.name;
    EXPECT_EQ(text.exitStatus, 0) << c.name << text.error;
    EXPECT_TRUE(Contains(text.error, c.error)) << c.name << text.error;
    const ProcessResult object = RunJobs(server.Port(), {"--user", "ana", "--json"});
    EXPECT_EQ(ControlsIn(object.output), std::u32string(LinesOf(object.output).size(), U'\n'))
        << c.name;
    EXPECT_EQ(json::parse(object.output).size(), LinesOf(text.output).size()) << c.name;
  }
}

TEST(JobsOfLyingPrinter, AreNoneWithoutAWholeAnswer) {
  const std::string refusal =
      LibraryAnswer(0x0500, IppGroup(1) + IppValue(0x41, "status-message", kSaid));
  const std::string flood(1 << 20, '\2');
  const struct {
    const char* name;
    LoopbackServer::Script script;
    const char* error;
  } kCases[] = {
      {"HTTP 404", LoopbackServer::AnswerEach("HTTP/1.1 404 No\r\nContent-Length: 0\r\n\r\n"),
       "404"},
      {"empty", LoopbackServer::AnswerEach(IppResponse("")), "not with IPP"},
      {"IPP 1.1", LoopbackServer::AnswerEach(IppResponse(kVersion1Answer)),
       "speaks IPP 1.1, and 2.0"},
      {"a page", LoopbackServer::AnswerEach(IppResponse("<html>jobs</html>")), "not with IPP"},
      {"not HTTP", LoopbackServer::AnswerEach(LibraryAnswer(0, "")), "corvane: "},
      {"closes", [](LoopbackConnection&) {}, "corvane: "},
      {"silent", [](LoopbackConnection& c) { c.WaitForClose(); }, "corvane: "},
      {"a refusal with escapes", LoopbackServer::AnswerEach(IppResponse(refusal)),
       "IPP status 0x0500: x\\x1B[2J\\ncorvane: forged"},
      {"a million groups", LoopbackServer::AnswerEach(IppResponse(LibraryAnswer(0, flood))),
       "not with IPP"},
      {"200 MB",
       [&flood](LoopbackConnection& c) {
         c.ReadRequest();
         c.Send("HTTP/1.1 200 OK\r\nContent-Length: 209715200\r\n\r\n");
         for (int i = 0; i < 200 && c.Send(flood); ++i) {
         }
       },
       "corvane: "},
  };
  for (const auto& c : kCases) {
    LoopbackServer server(c.script);
    const auto start = std::chrono::steady_clock::now();
    const ProcessResult result = RunJobs(server.Port(), {"--user", "ana"});
    EXPECT_EQ(result.exitStatus, 3) << c.name << result.error;
    EXPECT_EQ(result.output, "") << c.name;
    EXPECT_EQ(LinesOf(result.error).size(), 1u) << c.name << result.error;
    EXPECT_EQ(ControlsIn(result.error), U"\n") << c.name << result.error;
    EXPECT_TRUE(Contains(result.error, c.error)) << c.name << result.error;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10)) << c.name;
  }
}

// Jobs of a service or a container, whose environment names nobody, are the account's.
TEST(LoginName, ComesFromTheEnvironmentElseFromTheAccounts) {
  const passwd* const account = getpwuid(geteuid());
  ASSERT_NE(nullptr, account);
  const std::string accountName = account->pw_name;
  const std::string before = std::getenv("USER") ? std::getenv("USER") : "";
  const struct {
    const char* user;
    const char* logname;
    std::string name;
  } kCases[] = {{"ana", "ben", "ana"}, {"", "ben", "ben"}, {"", "", accountName}};
  for (const auto& c : kCases) {
    setenv("USER", c.user, 1);
    setenv("LOGNAME", c.logname, 1);
    EXPECT_EQ(c.name, Tool::LoginName());
  }
  setenv("USER", before.c_str(), 1);
  unsetenv("LOGNAME");
}

}  // namespace
}  // namespace Corvane::Test
