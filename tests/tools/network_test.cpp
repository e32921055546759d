// The tool over devices on the network: printers and pages that answer from a table, devices that
// fall silent or flood, a real SNMP agent (Linux).
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>

#include "tests/support/ipp_bytes.h"
#include "tests/support/peers/loopback_server.h"
#include "tests/support/peers/snmpd.h"
#include "tests/support/test_store.h"
#include "tests/tools/tool_test.h"

namespace Corvane::Test {
namespace {

using Clock = std::chrono::steady_clock;

// Of every protocol.
constexpr char kAllPorts[] =
    " --port 8080=@port@ --port 7627=@port@ --port 80=@port@ --port 161=@udp@ --port 631=@port@";

class NetworkTest : public ToolTest {
 protected:
  NetworkTest() {
    std::uint16_t closed = 0;
    close(ListenOnLoopback(1, &closed));
    m_names["closed"] = m_names["udp"] = std::to_string(closed);
  }
  void Meet(const LoopbackServer& server) { m_names["port"] = std::to_string(server.Port()); }
};

TEST_F(NetworkTest, GetReadsPagesOverMappedPorts) {
  LoopbackServer device([](LoopbackConnection& connection) {
    for (std::string request; !(request = connection.ReadRequest()).empty();) {
      const bool isKnown = Contains(request, "/zq/device/product_information.xml");
      const std::string body = "<p><ProductSerialNumber>S1</ProductSerialNumber></p>";
      connection.Send("HTTP/1.1 " + std::string(isKnown ? "200 OK" : "404 No") +
                      "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
    }
  });
  Meet(device);
  Specify(
      "<DataMaps><XMLDataMap Protocol='PLSXML'><DataItem Name='Serial' "
      "URI='/zq/device/product_information.xml' XPath='//ProductSerialNumber'/>"
      "<DataItem Name='Gone' URI='/gone.xml' XPath='//x'/></XMLDataMap></DataMaps>");
  Expect("get --device localhost --spec @spec@ --port 80=@port@ Gone Serial", "Serial\tS1\n",
         "corvane: Gone: no value (0x80004005): GET http://localhost:@port@/gone.xml: HTTP status "
         "404\n",
         1);
}

TEST_F(NetworkTest, TellsWhatPrintersAnswer) {
  for (const Case& c : ReadCases("tools/printers.txt")) {
    std::string message = LibraryAnswer(static_cast<int>(c.Number("code")), c.Text("groups"));
    if (c.Find("version")) message.replace(0, 2, c.Text("version"));
    const std::string response = IppResponse(c.Find("body").value_or(message));
    LoopbackServer printer(LoopbackServer::AnswerEach(c.Find("http").value_or(response)));
    Meet(printer);
    ExpectCase(c);
    if (!c.Find("asked")) continue;
    EXPECT_TRUE(Contains(printer.Requests().back(), c.Text("asked"))) << printer.Requests().back();
  }
}

TEST_F(NetworkTest, DevicesThatFallSilentEndInTime) {
  const LoopbackServer silent([](LoopbackConnection& c) { c.WaitForClose(); });
  Meet(silent);
  std::uint16_t udp = 0;
  const int agent = BindToLoopback(SOCK_DGRAM, &udp);
  m_names["udp"] = std::to_string(udp);
  const auto start = Clock::now();
  Expect(std::string("probe 127.0.0.1 --timeout 1") + kAllPorts,
         "QUARN\t*\tno\t-\t-\t-\t-\t* *\nWS\t*\tno\t-\t-\t-\t-\t* *\nPLSXML\t*\tno\t-\t-\t-\t-\t* "
         "*\nSNMP\t*\tno\t-\t-\t-\t-\t* *\nIPP\t*\tno\t-\t-\t-\t-\t* *\n",
         "corvane: the device answers no protocol\n", 3);
  // One after the other they would take 5 seconds.
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(4));
  close(agent);
  Expect("jobs --device 127.0.0.1 --uri ipp://h:@port@/p --user ana --timeout 0.5", "",
         "corvane: the printer tells no jobs: *\n", 3);
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(8));
}

TEST_F(NetworkTest, AnswersBeyondFourMegabytesAreNone) {
  std::string page = "<p><ProductSerialNumber>S1</ProductSerialNumber></p>";
  page.resize((std::size_t{4} << 20) + 1, ' ');
  const LoopbackServer printer(LoopbackServer::AnswerEach(IppResponse(page)));
  Meet(printer);
  Expect(std::string("probe 127.0.0.1") + kAllPorts,
         "*\tno\t*\n*\tno\t*\nPLSXML\t@port@\tno\t-\t-\t-\t-\t*\n*\tno\t*\n*\tno\t*\n",
         "corvane: the device answers no protocol\n", 3);
}

class SnmpTest : public NetworkTest {
 protected:
  void Start(const std::string& access) {
    ASSERT_TRUE(m_agent.Start(access + ReadData("tools/snmpd.conf"))) << m_agent.Failure();
    m_names["udp"] = std::to_string(m_agent.Port());
    m_names["agent"] = "--device 127.0.0.1 --port 161=" + m_names["udp"];
  }

  Snmpd m_agent;
};

TEST_F(SnmpTest, AnAgentIsReadWithEveryStepOfItsWalks) {
  Start("rocommunity public\n");
  for (const Case& c : ReadCases("tools/agent.txt")) ExpectCase(c);
}

TEST_F(SnmpTest, CachedValuesNeedNoAgentBeyondItsProbe) {
  Start("rocommunity public\n");
  const TestStore store;
  for (const bool isCached : {false, true}) {
    const ProcessResult result =
        Run("get --device 127.0.0.1 --port 161=@udp@ --spec @examples@/snmp-printer.xml HostName "
            "--trace --cache registry:SOFTWARE\\T");
    EXPECT_EQ(result.output, "HostName\tlobby\n");
    EXPECT_NE(Contains(result.error, "::GetMultipleValues"), isCached) << result.error;
  }
  Expect("cache show --cache registry:SOFTWARE\\T",
         "QM42-0071934, OID:\n  HostName\tlobby\t* old\n  Location\tFloor 2\t* old\n"
         "  Source\tSNMP\tnever goes stale\n");
}

TEST_F(SnmpTest, SecretsReachTheAgentAndShowNowhere) {
  Start("createUser reader SHA-256 canary-7A AES canary-7P\nrouser reader priv\n");
  const auto file =
      m_folder.Write("secrets", "auth-passphrase = canary-7A\npriv-passphrase = canary-7P\n");
  std::filesystem::permissions(file, std::filesystem::perms::owner_read);
  m_names["file"] = Utf8(file);
  const ProcessResult result = Run(
      "get --device 127.0.0.1 --port 161=@udp@ --spec @examples@/snmp-printer.xml Model --trace "
      "--snmp-version 3 --snmp-user reader --snmp-auth sha256 --snmp-secrets @file@");
  EXPECT_EQ(result.output, "Model\tQuillmere 420dn\n");
  EXPECT_FALSE(Contains(result.error, "canary")) << result.error;
}

}  // namespace
}  // namespace Corvane::Test
