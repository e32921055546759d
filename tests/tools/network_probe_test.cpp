// "corvane probe" over devices on the network: a real printer, a real agent, and devices that
// misbehave (Linux).
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <nlohmann/json.hpp>

#include "tests/support/ipp_bytes.h"
#include "tests/support/peers/ippeveprinter.h"
#include "tests/support/peers/loopback_server.h"
#include "tests/support/peers/snmpd.h"
#include "tests/tools/tool_run.h"

namespace Corvane::Test {
namespace {

// Swallows what it is sent.
class SilentUdpPort {
 public:
  SilentUdpPort() : m_socket(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    const bool bound = bind(m_socket, reinterpret_cast<const sockaddr*>(&address), size) == 0 &&
                       getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &size) == 0;
    m_port = bound ? ntohs(address.sin_port) : std::uint16_t{0};
  }
  SilentUdpPort(const SilentUdpPort&) = delete;
  SilentUdpPort& operator=(const SilentUdpPort&) = delete;
  ~SilentUdpPort() { close(m_socket); }
  std::uint16_t Port() const { return m_port; }

 private:
  const int m_socket;
  std::uint16_t m_port = 0;
};

// A port of 0 is one where nothing listens.
ProcessResult Probe(std::uint16_t xml, std::uint16_t snmp, std::uint16_t ipp,
                    const std::vector<std::string>& more) {
  std::uint16_t closed = 0;
  close(ListenOnLoopback(1, &closed));
  std::vector<std::string> arguments = {"probe", "127.0.0.1"};
  const auto map = [&](const char* from, std::uint16_t to) {
    arguments.insert(arguments.end(), {"--port", from + std::to_string(to == 0 ? closed : to)});
  };
  for (const char* const from : {"8080=", "7627=", "80="}) map(from, xml);
  map("161=", snmp);
  map("631=", ipp);
  arguments.insert(arguments.end(), more.begin(), more.end());
  return RunTool(arguments);
}

TEST(NetworkProbe, TellsARealPrinterAndItsAgent) {
  Ippeveprinter printer;
  ASSERT_TRUE(printer.Start("-M Quillmere -m 420dn")) << printer.Failure();
  Snmpd agent;
  ASSERT_TRUE(
      agent.Start("rocommunity public\n"
                  "override 1.3.6.1.2.1.25.3.2.1.3.1 octet_str \"Quillmere 420dn\"\n"
                  "override 1.3.6.1.2.1.1.5.0 octet_str lobby\n"
                  "override 1.3.6.1.4.1.11.2.3.9.4.2.1.1.3.3.0 octet_str QM42\n"))
      << agent.Failure();
  const ProcessResult text = Probe(0, agent.Port(), printer.Port(), {});
  EXPECT_EQ(text.exitStatus, 0) << text.error;
  EXPECT_TRUE(Contains(text.output, "\nSNMP\t" + std::to_string(agent.Port()) +
                                        "\tyes\tQuillmere 420dn\tQM42\t-\tlobby\t-\n"))
      << text.output;

  const ProcessResult result = Probe(0, agent.Port(), printer.Port(), {"--json"});
  const auto ipp = nlohmann::json::parse(result.output)[4];
  EXPECT_EQ(ipp["protocol"], "IPP");
  EXPECT_EQ(ipp["port"], printer.Port());
  EXPECT_EQ(ipp["answers"], true);
  EXPECT_EQ(ipp["model"], "Quillmere 420dn");
  EXPECT_EQ(ipp["name"], "Printer");
  EXPECT_EQ(ipp["state"], "idle");
  const std::string uuid = ipp["uuid"];
  EXPECT_EQ(uuid.size(), 36u) << uuid;
  EXPECT_EQ(ipp["serial"], nullptr);
  EXPECT_EQ(ipp["problem"], nullptr);
}

TEST(NetworkProbe, TellsAPrinterThatRefuses) {
  LoopbackServer server(LoopbackServer::AnswerEach(IppResponse(LibraryAnswer(0x0406, ""))));
  const ProcessResult result = Probe(0, 0, server.Port(), {});
  EXPECT_EQ(result.exitStatus, 0) << result.error;
  EXPECT_TRUE(Contains(result.output, "\tyes\t-\t-\t-\t-\tIPP status 0x0406\n")) << result.output;
}

TEST(NetworkProbe, TellsAPrinterOfVersionOneAndItsTexts) {
  const struct {
    std::string body;
    const char* line;
  } kCases[] = {
      {kVersion1Answer, "\tno\t-\t-\t-\t-\tthe printer speaks IPP 1.1, and 2.0 is needed"},
      {LibraryAnswer(0, IppGroup(1) + IppValue(0x47, "attributes-charset", "iso-8859-1") +
                            IppGroup(4) + IppValue(0x42, "printer-name", "Caf\xe9")),
       "\tyes\t-\t-\t-\tCaf\u00e9\t-\n"},
  };
  for (const auto& c : kCases) {
    LoopbackServer server(LoopbackServer::AnswerEach(IppResponse(c.body)));
    const ProcessResult result = Probe(0, 0, server.Port(), {});
    EXPECT_TRUE(Contains(result.output, c.line)) << result.output;
  }
}

TEST(NetworkProbe, EndsInTimeWhateverADeviceDoes) {
  const std::string block(1 << 20, '<');
  const struct {
    const char* name;
    LoopbackServer::Script script;
  } kCases[] = {
      {"silent", [](LoopbackConnection& c) { c.WaitForClose(); }},
      {"garbage", LoopbackServer::AnswerEach(std::string("\x80\0\xff garbage\r\n\r\n", 14))},
      {"a page", LoopbackServer::AnswerEach(IppResponse("<html><p>x</p></html>"))},
      {"drips",
       [](LoopbackConnection& c) {
         c.Send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
         while (c.Send("1\r\n \r\n") && c.Pause(50)) {
         }
       }},
      {"floods",
       [&block](LoopbackConnection& c) {
         c.Send("HTTP/1.1 200 OK\r\nContent-Length: 209715200\r\n\r\n");
         for (int i = 0; i < 200 && c.Send(block); ++i) {
         }
       }},
  };
  const SilentUdpPort snmp;
  for (const auto& c : kCases) {
    LoopbackServer server(c.script);
    const auto start = std::chrono::steady_clock::now();
    const ProcessResult result =
        Probe(server.Port(), snmp.Port(), server.Port(), {"--timeout", "1"});
    const auto elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(result.exitStatus, 3) << c.name << result.output;
    EXPECT_EQ(LinesOf(result.output).size(), 5u) << c.name << result.output;
    EXPECT_EQ(ControlsIn(result.error), U"\n") << c.name << result.error;
    for (const std::string& line : LinesOf(result.output)) {
      EXPECT_TRUE(Contains(line, "\tno\t-\t-\t-\t-\t")) << c.name << line;
      EXPECT_FALSE(line.ends_with("\t-")) << c.name << line;
    }
    // One after the other they would take 5 seconds of a silent device.
    EXPECT_LT(elapsed, std::chrono::seconds(4)) << c.name;
  }
}

}  // namespace
}  // namespace Corvane::Test
