// "corvane print" and "corvane cancel" on port 631: a real printer, and printers that fail (Linux).
#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <thread>

#include "tests/support/child_process.h"
#include "tests/support/ipp_bytes.h"
#include "tests/support/peers/ippeveprinter.h"
#include "tests/support/peers/loopback_server.h"
#include "tests/support/peers/private_network.h"
#include "tests/tools/tool_run.h"

namespace Corvane::Test {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr char kUri[] = "ipp://localhost/ipp/print";

std::vector<std::string> Command(const char* command, const std::vector<std::string>& more,
                                 const char* uri = kUri) {
  std::vector<std::string> arguments = {command, "--uri", uri, "--user", "ana"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return arguments;
}

ProcessResult RunCommand(const char* command, const std::vector<std::string>& more,
                         const char* uri = kUri) {
  return RunTool(Command(command, more, uri));
}

std::string Pdf(std::size_t bytes) {
  std::string text = "%PDF-1.4\n";
  for (unsigned seed = 1; text.size() < bytes; seed = seed * 1664525 + 1013904223) {
    text += static_cast<char>(seed >> 24);
  }
  return text;
}

std::string Content(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

bool Await(const std::function<bool()>& question) {
  const auto end = Clock::now() + std::chrono::seconds(20);
  while (!question()) {
    if (Clock::now() > end) return false;
    std::this_thread::sleep_for(milliseconds(50));
  }
  return true;
}

// What another client is told of a job, or of the jobs.
std::string Ipptool(const TempFolder& folder, const char* operation, const char* attribute) {
  folder.Write("question.test", "{\nNAME \"question\"\nOPERATION " + std::string(operation) +
                                    "\nGROUP operation-attributes-tag\n"
                                    "ATTR charset attributes-charset utf-8\n"
                                    "ATTR naturalLanguage attributes-natural-language en\n"
                                    "ATTR uri printer-uri $uri\n" +
                                    attribute + "\n}\n");
  const std::string output = RunProcess({"ipptool", "-tv", "ipp://localhost:631/ipp/print",
                                         (folder.Path() / "question.test").string()})
                                 .output;
  EXPECT_TRUE(Contains(output, "successful-ok")) << output;
  const std::size_t answer = output.find("RECEIVED:");
  return answer == std::string::npos ? output : output.substr(answer);
}

class PrintOnPort631 : public testing::Test {
 protected:
  void SetUp() override {
    if (const std::string failure = PrivateNetworkFailure(); !failure.empty()) {
      GTEST_SKIP() << failure;
    }
  }
  std::string File(const std::string& content) const {
    return Utf8(m_folder.Write("report.pdf", content));
  }

  const TempFolder m_folder;
};

class PrintOnRealPrinter : public PrintOnPort631 {
 protected:
  void SetUp() override {
    PrintOnPort631::SetUp();
    if (IsSkipped()) return;
    // A job is printed at once, or while a file "hold" is there.
    const auto command = m_folder.Write(
        "print", "#!/bin/sh\nwhile [ -e '" + Utf8(Hold()) + "' ]; do sleep 0.05; done\n");
    std::filesystem::permissions(command, std::filesystem::perms::owner_all);
    std::filesystem::create_directory(m_folder.Path() / "keys");
    ASSERT_TRUE(m_printer.Start("-f application/pdf -2 -s 10,5 -K '" +
                                    Utf8(m_folder.Path() / "keys") + "' -c '" + Utf8(command) + "'",
                                631))
        << m_printer.Failure();
  }
  void TearDown() override { std::filesystem::remove(Hold()); }

  std::filesystem::path Hold() const { return m_folder.Path() / "hold"; }
  void HoldJobs() const { m_folder.Write("hold", ""); }

  // Of the job that a run told.
  std::string Spooled(const std::string& output) const {
    const std::string begin = output.substr(0, output.find('\t')) + '-';
    for (const auto& entry : std::filesystem::directory_iterator(m_printer.SpoolFolder())) {
      const std::filesystem::path& file = entry.path();
      const bool isDocument = file.extension() == ".pdf";  // else the output of the command
      if (isDocument && file.filename().string().starts_with(begin)) return Content(file);
    }
    return "no file " + begin;
  }
  static bool HasJobs() {
    const ProcessResult jobs = RunCommand("jobs", {"--device", "127.0.0.1"});
    EXPECT_EQ(jobs.exitStatus, 0) << jobs.error;
    return !jobs.output.empty();
  }

  Ippeveprinter m_printer;
};

TEST_F(PrintOnRealPrinter, DocumentsArriveByteForByte) {
  static const struct {
    const char* name;
    std::size_t bytes;
    std::vector<std::string> more;
    bool isInput = false;
  } kCases[] = {
      {"in one piece", 300'000, {}},
      {"in pieces", 600'000, {"--chunked"}},
      {"in one piece exactly", 262'144, {"--chunked"}},
      {"too large for one piece", 16'000'001, {}},
      {"the input", 300'000, {}, true},
      {"to an address", 1000, {"--device", "127.0.0.1"}},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    ASSERT_TRUE(Await([] { return !HasJobs(); }));
    const std::string document = Pdf(c.bytes);
    std::vector<std::string> arguments = {c.isInput ? "-" : File(document)};
    arguments.insert(arguments.end(), c.more.begin(), c.more.end());
    ChildProcess tool(ToolCommand(Command("print", arguments)));
    if (c.isInput) tool.Write(document);
    tool.EndInput();
    EXPECT_EQ(tool.Wait(), 0) << tool.Error();
    EXPECT_EQ(LinesOf(tool.Output()).size(), 1u) << tool.Output();
    EXPECT_TRUE(Spooled(tool.Output()) == document) << tool.Output() << tool.Error();
    // No terminal: the lines of the beginning and the end, and no line that is drawn again.
    EXPECT_EQ(ControlsIn(tool.Error()), U"\n\n") << tool.Error();
    EXPECT_TRUE(Contains(tool.Error(), "corvane: printed: job ")) << tool.Error();
  }
}

TEST_F(PrintOnRealPrinter, JobIsAsAskedFor) {
  static const struct {
    const char* name;
    std::vector<std::string> more;
    std::vector<const char*> told;
  } kCases[] = {
      {"everything",
       {"--copies", "2", "--sides", "two-sided-short-edge", "--color", "color", "--job-name",
        "Brief \u00fc"},
       {"copies (integer) = 2", "sides (keyword) = two-sided-short-edge",
        "print-color-mode (keyword) = color", "job-name (nameWithoutLanguage) = Brief \u00fc",
        "job-originating-user-name (nameWithoutLanguage) = ana"}},
      {"in pieces",
       {"--chunked", "--color", "monochrome", "--sides", "one-sided"},
       {"print-color-mode (keyword) = monochrome", "sides (keyword) = one-sided",
        "job-name (nameWithoutLanguage) = report.pdf"}},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    ASSERT_TRUE(Await([] { return !HasJobs(); }));
    std::vector<std::string> arguments = {File(Pdf(1000))};
    arguments.insert(arguments.end(), c.more.begin(), c.more.end());
    const ProcessResult result = RunCommand("print", arguments);
    ASSERT_EQ(result.exitStatus, 0) << result.error;
    const std::string id = "ATTR integer job-id " + result.output.substr(0, 1);
    const std::string job = Ipptool(m_folder, "Get-Job-Attributes", id.c_str());
    for (const char* const told : c.told) EXPECT_TRUE(Contains(job, told)) << told << '\n' << job;
  }
}

TEST_F(PrintOnRealPrinter, InterruptionCancelsTheJob) {
  static constexpr struct {
    const char* name;
    int signal;
    bool isFed;  // the input goes on, else nothing more comes
  } kCases[] = {{"SIGINT between pieces", SIGINT, true},
                {"SIGTERM while it waits for input", SIGTERM, false}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    ASSERT_TRUE(Await([] { return !HasJobs(); }));
    ChildProcess tool(ToolCommand(Command("print", {"-"})));
    tool.Write(Pdf(1'000'000));
    ASSERT_TRUE(Await(HasJobs)) << tool.Error();
    std::atomic<bool> isOver{false};
    std::thread feeder([&] {
      while (c.isFed && !isOver && tool.Write(std::string(10'000, 'x'))) {
        std::this_thread::sleep_for(milliseconds(1));
      }
    });
    tool.Signal(c.signal);
    EXPECT_EQ(tool.Wait(), 6) << tool.Error();
    isOver = true;
    feeder.join();
    EXPECT_EQ(tool.Output(), "");
    EXPECT_TRUE(Contains(tool.Error(), "cancelled: the printer has cancelled job "))
        << tool.Error();
    EXPECT_TRUE(Await([] { return !HasJobs(); }));
    const std::string ended = Ipptool(m_folder, "Get-Jobs",
                                      "ATTR keyword which-jobs completed\n"
                                      "ATTR keyword requested-attributes job-id,job-state");
    EXPECT_FALSE(Contains(ended, "= completed")) << ended;
  }
}

TEST_F(PrintOnRealPrinter, OnlyOwnJobIsCancelled) {
  HoldJobs();
  ASSERT_EQ(RunCommand("print", {File(Pdf(1000)), "--job-name", "stdin"}).exitStatus, 0);
  // Waits for that one, which has its name.
  ChildProcess waiting(ToolCommand(Command("print", {"-"})));
  waiting.Write(Pdf(300'000));  // it reads no more than it can send
  EXPECT_TRUE(Await([&] { return Contains(waiting.Error(), "printing stdin"); }));
  waiting.Signal(SIGINT);
  EXPECT_EQ(waiting.Wait(), 6) << waiting.Error();
  EXPECT_TRUE(Contains(waiting.Error(), "lists no job of it")) << waiting.Error();
  EXPECT_TRUE(HasJobs());

  EXPECT_EQ(RunCommand("cancel", {"--user", "otto"}).exitStatus, 2);  // --user twice
  const ProcessResult other = RunCommand("cancel", {"2"});
  EXPECT_EQ(other.exitStatus, 3);
  EXPECT_EQ(other.error, "corvane: no job 2 of ana goes on\n");
  EXPECT_EQ(RunTool({"cancel", "--uri", kUri, "--user", "otto"}).exitStatus, 3);
  const ProcessResult first = RunCommand("cancel", {});
  EXPECT_EQ(first.exitStatus, 0) << first.error;
  EXPECT_EQ(first.output, "cancelled job 1: stdin\n");
  std::filesystem::remove(Hold());
  EXPECT_TRUE(Await([] { return !HasJobs(); }));
  EXPECT_TRUE(Contains(Ipptool(m_folder, "Get-Job-Attributes", "ATTR integer job-id 1"),
                       "job-state (enum) = canceled"));
}

TEST_F(PrintOnRealPrinter, PasswordGoesToKnownKeysAlone) {
  const std::string canary = "canary-7";
  ASSERT_EQ(setenv("CORVANE_PASSWORD", canary.c_str(), 1), 0);
  constexpr char kSecure[] = "ipps://localhost:631/ipp/print";
  const std::string pins = Utf8(m_folder.Path() / "pins");
  const std::vector<std::string> arguments = {File(Pdf(1000)), "--account", "ana",      "--trace",
                                              "--trust-file",  pins,        "--chunked"};
  const ProcessResult first = RunCommand("print", arguments, kSecure);
  EXPECT_EQ(first.exitStatus, 0) << first.error;
  EXPECT_TRUE(Contains(first.error, "trace: "));
  EXPECT_FALSE(Contains(first.output + first.error, canary));
  EXPECT_TRUE(Content(pins).starts_with("localhost:631 sha256//")) << Content(pins);

  std::ofstream(pins) << "localhost:631 sha256//" + std::string(43, 'A') + "=\n";
  const ProcessResult changed = RunCommand("print", arguments, kSecure);
  EXPECT_EQ(changed.exitStatus, 7);
  EXPECT_TRUE(Contains(changed.error, "has changed")) << changed.error;
  EXPECT_FALSE(Contains(changed.output + changed.error, canary));
  const ProcessResult unknown = RunCommand("print", {File(Pdf(1000))}, kSecure);
  EXPECT_EQ(unknown.exitStatus, 7);
  EXPECT_TRUE(Contains(unknown.error, "certificate")) << unknown.error;
  unsetenv("CORVANE_PASSWORD");
}

TEST_F(PrintOnRealPrinter, SaysWhyItDoesNotPrint) {
  const std::string file = File(Pdf(1000));
  const std::string text = Utf8(m_folder.Write("text", "no PDF\n"));
  const std::string empty = Utf8(m_folder.Write("empty", ""));
  const struct {
    const char* name;
    std::vector<std::string> arguments;
    const char* uri;
    int status;
    const char* error;
  } kCases[] = {
      {"empty", {empty}, kUri, 7, "the document is empty"},
      {"empty, in pieces", {empty, "--chunked"}, kUri, 7, "the document is empty"},
      {"refused", {text}, kUri, 7, "IPP status 0x040B, client-error-attributes-or-values"},
      {"short path", {file}, "ipp://localhost/ab", 2, "path"},
      {"unknown host", {file}, "ipp://printer.invalid/ipp/print", 2, "no such host"},
      {"nobody there", {file}, "ipp://127.0.0.2/ipp/print", 7, "127.0.0.2 does not answer"},
  };
  for (const auto& c : kCases) {
    const ProcessResult result = RunCommand("print", c.arguments, c.uri);
    EXPECT_EQ(result.exitStatus, c.status) << c.name << result.error;
    EXPECT_EQ(result.output, "") << c.name;
    EXPECT_TRUE(Contains(result.error, c.error)) << c.name << result.error;
  }
}

// By name as by address: the library wants an IP literal of a printer.
TEST_F(PrintOnPort631, GetReadsAPrinterByItsName) {
  LoopbackServer printer(LoopbackServer::AnswerEach(IppResponse(LibraryAnswer(
                             0, IppGroup(4) + IppValue(0x42, "printer-name", "office")))),
                         631);
  const std::string specification = Utf8(
      m_folder.Write("map.xml",
                     "<DataMaps><IPPDataMap><IPPParams Name='Defaults' ResourceURI='/ipp/print'/>"
                     "<DataItem Name='Name' AttributeID='printer-name'/></IPPDataMap></DataMaps>"));
  for (const char* const device : {"127.0.0.1", "localhost"}) {
    for (const char* const command : {"get", "dump"}) {
      std::vector<std::string> arguments = {command, "--device", device, "--spec", specification};
      if (command == std::string("get")) arguments.push_back("Name");
      const ProcessResult result = RunTool(arguments);
      EXPECT_TRUE(result.output.starts_with("Name\toffice")) << result.output << result.error;
      EXPECT_EQ(result.exitStatus, 0) << device << ' ' << command;
    }
  }
}

// A printer that is idle, takes a document as `onDocument` does, and then lists job 7 until that is
// cancelled; unless it falls silent.
class ScriptedPrinter {
 public:
  using Script = LoopbackServer::Script;

  ScriptedPrinter(Script onDocument, bool listsJob, bool fallsSilent)
      : m_onDocument(std::move(onDocument)),
        m_listsJob(listsJob),
        m_fallsSilent(fallsSilent),
        m_server([this](LoopbackConnection& connection) { Serve(connection); }, 631) {}

  bool HasDocument() const { return m_hasDocument; }

 private:
  void Serve(LoopbackConnection& connection) {
    constexpr int kPrintJob = 2, kCancelJob = 8, kGetJobs = 10;
    for (std::string request; !(request = connection.ReadRequest()).empty();) {
      const std::size_t body = request.find("\r\n\r\n") + 4;
      const bool isChunked = request.size() < body + 4;
      const int operation = isChunked ? kPrintJob : request[body + 3];
      if (operation == kPrintJob) {
        m_hasDocument = true;
        return m_onDocument(connection);
      }
      if (m_hasDocument && m_fallsSilent) return connection.WaitForClose();
      if (operation == kCancelJob) m_isCancelled = true;
      std::string groups = IppGroup(4) + IppValue(0x42, "printer-name", "p") +
                           IppNumber(0x23, "printer-state", 3) +
                           IppValue(0x44, "printer-state-reasons", "none");
      if (operation == kGetJobs || operation == kCancelJob) groups.clear();
      if (operation == kGetJobs && m_hasDocument && m_listsJob && !m_isCancelled) {
        groups = IppGroup(2) + IppNumber(0x21, "job-id", 7) + IppValue(0x42, "job-name", "stdin") +
                 IppValue(0x45, "job-uri", "ipp://localhost/ipp/print/7") +
                 IppNumber(0x23, "job-state", 5) +
                 IppValue(0x44, "job-state-reasons", "job-incoming");
      }
      if (!connection.Send(IppResponse(LibraryAnswer(0, groups)))) return;
    }
  }

  const Script m_onDocument;
  const bool m_listsJob;
  const bool m_fallsSilent;
  std::atomic<bool> m_hasDocument{false};
  std::atomic<bool> m_isCancelled{false};
  LoopbackServer m_server;
};

const LoopbackServer::Script kTakeNoMore = [](LoopbackConnection& connection) {
  connection.Pause(60'000);
};

TEST_F(PrintOnPort631, InterruptionEndsAtAPrinterThatDoesNothing) {
  static const struct {
    const char* name;
    bool listsJob;
    bool fallsSilent;
    bool isWhole;
    int signals;
    int status;
    const char* error;
    milliseconds inTime;
  } kCases[] = {
      {"cancels and keeps the sender waiting", true, false, false, 1, 6, "has cancelled job 7",
       milliseconds(10'000)},
      {"answers nothing", true, true, false, 1, 6, "lists no jobs", milliseconds(8'000)},
      {"two interruptions", true, true, false, 2, 128 + SIGINT, "cancelling", milliseconds(1'900)},
      {"has the whole document", false, false, true, 1, 8, "perhaps printed", milliseconds(10'000)},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    ScriptedPrinter printer(kTakeNoMore, c.listsJob, c.fallsSilent);
    ChildProcess tool(ToolCommand(Command("print", {c.isWhole ? File(Pdf(1000)) : "-"})));
    if (!c.isWhole) tool.Write(Pdf(200'000));
    std::thread feeder([&] {
      while (!c.isWhole && tool.Write(std::string(10'000, 'x'))) {
      }
    });
    EXPECT_TRUE(Await([&] { return printer.HasDocument(); })) << tool.Error();
    std::this_thread::sleep_for(milliseconds(1'000));  // the sender fills what takes bytes
    const Clock::time_point start = Clock::now();
    tool.Signal(SIGINT);
    if (c.signals == 2) {
      EXPECT_TRUE(Await([&] { return Contains(tool.Error(), "press Ctrl-C again"); }));
      tool.Signal(SIGINT);
    }
    EXPECT_EQ(tool.Wait(), c.status) << tool.Error();
    EXPECT_LT(Clock::now() - start, c.inTime);
    feeder.join();
    EXPECT_EQ(tool.Output(), "");
    EXPECT_TRUE(Contains(tool.Error(), c.error)) << tool.Error();
  }
}

// Every command judges the printer's answer by the same rule, and tells why.
TEST_F(PrintOnPort631, RefusesAPrinterOfVersionOneInEveryCommand) {
  const LoopbackServer printer(LoopbackServer::AnswerEach(IppResponse(kVersion1Answer)), 631);
  const std::string map = Utf8(
      m_folder.Write("map.xml",
                     "<DataMaps><IPPDataMap><IPPParams Name='P' ResourceURI='/ipp/print'/>"
                     "<DataItem Name='Info' AttributeID='printer-info'/></IPPDataMap></DataMaps>"));
  const struct {
    std::vector<std::string> arguments;
    int status;
  } kCases[] = {
      {{"probe", "127.0.0.1", "--timeout", "1"}, 3},
      {{"jobs", "--device", "127.0.0.1", "--uri", kUri, "--user", "ana"}, 3},
      {{"cancel", "--uri", kUri, "--user", "ana"}, 3},
      {{"get", "--device", "127.0.0.1", "--spec", map, "Info"}, 3},
      {{"dump", "--device", "127.0.0.1", "--spec", map}, 3},
      {{"print", "--uri", kUri, "--user", "ana", File("text")}, 7},
  };
  for (const auto& c : kCases) {
    const ProcessResult result = RunTool(c.arguments);
    EXPECT_EQ(result.exitStatus, c.status) << c.arguments[0] << result.error;
    const std::string told = result.output + result.error;
    EXPECT_TRUE(Contains(told, "the printer speaks IPP 1.")) << c.arguments[0] << told;
    EXPECT_TRUE(Contains(told, ", and 2.0 is needed: update")) << c.arguments[0] << told;
  }
}

TEST_F(PrintOnPort631, TellsWhenADocumentIsPerhapsPrinted) {
  ScriptedPrinter printer([](LoopbackConnection&) {}, false, true);
  const ProcessResult result = RunCommand("print", {File(Pdf(1000)), "--timeout", "1"});
  EXPECT_EQ(result.exitStatus, 8) << result.error;
  EXPECT_TRUE(Contains(result.error, "may print it twice")) << result.error;
}

}  // namespace
}  // namespace Corvane::Test
