// "corvane print" on port 631, of a printer that does what a test tells it, and of a real one with
// TLS (Linux).
#include <signal.h>

#include <chrono>
#include <cstdlib>
#include <optional>

#include "ipp/wire/codes.h"
#include "tests/support/child_process.h"
#include "tests/support/ipp_bytes.h"
#include "tests/support/peers/ippeveprinter.h"
#include "tests/support/peers/loopback_server.h"
#include "tests/support/peers/private_network.h"
#include "tests/support/peers/scripted_printer.h"
#include "tests/tools/tool_test.h"

namespace Corvane::Test {
namespace {

using Clock = std::chrono::steady_clock;

// On port 631, as the case wants it.
class Printer {
 public:
  explicit Printer(const Case& c) : m_server(m_printer.OnSocket(), kIppPort) {
    m_printer.Locked([&](ScriptedPrinter::State& state) {
      state.Set("silenceMs=60000");
      state.states = c.Find("states").value_or(state.states);
      state.Set(c.Text("printer"));
      if (c.Find("job")) state.jobs[1] = {"ana", c.Text("job")};
    });
  }
  ~Printer() {
    m_printer.Locked([](auto& state) { state.isOver = true; });
  }
  ScriptedPrinter* operator->() { return &m_printer; }

 private:
  ScriptedPrinter m_printer;
  LoopbackServer m_server;
};

std::string Document(const Case& c) {
  std::string text = "%PDF-1.4\n";
  const auto bytes = static_cast<std::size_t>(c.Number("bytes"));
  for (unsigned seed = 1; text.size() < bytes; seed = seed * 1664525 + 1013904223) {
    text += static_cast<char>(seed >> 24);
  }
  return text.substr(0, bytes);
}

class PrintTest : public ToolTest {
 protected:
  void SetUp() override {
    const std::string failure = PrivateNetworkFailure();
    if (!failure.empty()) GTEST_SKIP() << failure;
  }
  void Save(const std::string& document) {
    m_names["file"] = Utf8(m_folder.Write("report.pdf", document));
  }
};

TEST_F(PrintTest, SendsTheDocumentAndTellsWhatBecameOfIt) {
  for (const Case& c : ReadCases("tools/print.txt")) {
    SCOPED_TRACE(c.Where());
    Printer printer(c);
    const std::string document = Document(c);
    Save(document);
    ChildProcess tool(Command(c.Text("run")));
    if (c.Find("input")) tool.Write(document);
    tool.EndInput();
    const int status = tool.Wait();
    ExpectResult({status, tool.Output(), tool.Error()}, c);
    if (!c.Find("asked")) continue;
    printer->Locked([&](ScriptedPrinter::State& state) {
      EXPECT_TRUE(state.Latest().document == document);
      std::string asked;
      for (const auto& request : state.asked) {
        if (request.operation != IPPOperation::kPrintJob) continue;
        for (const auto& [name, value] : request.attributes) asked += name + '=' + value + '\n';
      }
      EXPECT_EQ(asked, c.Text("asked"));
    });
  }
}

TEST_F(PrintTest, InterruptionsCancelTheJob) {
  for (const Case& c : ReadCases("tools/interruptions.txt")) {
    SCOPED_TRACE(c.Where());
    Printer printer(c);
    Save(Document(c));
    ChildProcess tool(Command(c.Text("run")));
    if (c.Find("input")) tool.Write(Document(c));
    const auto awaited = static_cast<std::size_t>(c.Number("awaited"));
    EXPECT_TRUE(tool.Await([&] {
      return Contains(tool.Error(), "printing ") && printer->Locked([&](auto& state) {
        return awaited == 0 || (!state.jobs.empty() && state.Latest().document.size() >= awaited);
      });
    })) << tool.Error();
    std::this_thread::sleep_for(std::chrono::milliseconds(c.Number("pause")));
    const Clock::time_point start = Clock::now();
    for (const char signal : c.Text("signals")) {
      tool.Signal(signal == 'T' ? SIGTERM : SIGINT);
      tool.Await([&] { return Contains(tool.Error(), "press Ctrl-C again"); });
    }
    const int status = tool.Wait();
    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(c.Number("limit")));
    ExpectResult({status, tool.Output(), tool.Error()}, c);
    printer->Locked([&](auto& state) { EXPECT_EQ(state.jobs[1].state, c.Number("state")); });
  }
}

TEST_F(PrintTest, CancelTellsWhatThePrinterRefuses) {
  const Case c("", {{"printer", "cancels=0"}, {"job", "x"}});
  const Printer printer(c);
  Expect("cancel --uri ipp://localhost/ipp/print --user ana", "",
         "corvane: the printer does not cancel job 1: IPP status 0x0500\n", 7);
}

// By name as by address, though the library wants an IP literal; and every command judges the
// version of an answer alike.
TEST_F(PrintTest, DataMapsReadAPrinter) {
  std::optional<Printer> printer(Case("", {}));
  for (const std::string device : {"127.0.0.1", "localhost"}) {
    Expect("get --device " + device + " --spec @data@/printer.xml Name", "Name\tp\n");
  }
  printer.reset();
  const LoopbackServer old(LoopbackServer::AnswerEach(IppResponse(kVersion1Answer)), kIppPort);
  const std::string version = "the printer speaks IPP 1.x, and 2.0 is needed: update *\n";
  Expect("dump --device localhost --spec @data@/printer.xml", "",
         "corvane: no data map fits *\ncorvane: data map 1 (IPP): " + version, 3);
  Expect("print --user ana --uri ipp://localhost/ipp/print @data@/printer.xml", "",
         "corvane: not printed: " + version, 7);
}

TEST_F(PrintTest, PasswordGoesToKnownKeysAlone) {
  std::filesystem::create_directory(m_folder.Path() / "keys");
  Ippeveprinter printer;
  ASSERT_TRUE(printer.Start(
      "-f application/pdf -s 10,5 -K '" + Utf8(m_folder.Path() / "keys") + "'", kIppPort))
      << printer.Failure();
  setenv("CORVANE_PASSWORD", "canary-7", 1);
  Save("%PDF-1.4\n");
  m_names["pins"] = Utf8(m_folder.Path() / "pins");
  const std::string print =
      "print @file@ --uri ipps://localhost:631/ipp/print --user ana --chunked --trace";
  const std::string account = print + " --account ana --trust-file @pins@";
  const auto expect = [this](const std::string& command, int status, const char* said) {
    const ProcessResult result = Run(command);
    EXPECT_EQ(result.exitStatus, status) << result.error;
    EXPECT_TRUE(Contains(result.error, said)) << result.error;
    EXPECT_FALSE(Contains(result.output + result.error, "canary-7"));
  };
  expect(account, 0, "corvane: printed: job 1");
  EXPECT_TRUE(m_folder.Read("pins").starts_with("localhost:631 sha256//"));
  m_folder.Write("pins", "localhost:631 sha256//" + std::string(43, 'A') + "=\n");
  expect(account, 7, "has changed");
  expect(print, 7, "certificate");
  unsetenv("CORVANE_PASSWORD");
}

}  // namespace
}  // namespace Corvane::Test
