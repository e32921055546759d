// The tool against devices on the network: a real nginx for each protocol, and devices that
// misbehave (Linux).
#include <gtest/gtest.h>

#include <unistd.h>

#include <chrono>

#include "tests/support/peers/loopback_server.h"
#include "tests/support/peers/nginx.h"
#include "tests/tools/tool_run.h"

namespace Corvane::Test {
namespace {

constexpr char kSpecification[] =
    "<DataMaps>"
    "<XMLDataMap Protocol='QUARN'>"
    "<DataItem Name='Protocol' URI='quarn:zqQuarnProductConfigDyn' XPath='//dd:Kind'/>"
    "<DataItem Name='Status' URI='/status.xml' XPath='//s:State' LifeSpan='600'>"
    "<Conversion Contains='inPowerSave' Value='Sleeping'/></DataItem>"
    "<DataItem Prefix='toner' Name='Black' URI='quarn:supplies' XPath='//i[@c=\"K\"]/level'/>"
    "</XMLDataMap>"
    "<XMLDataMap Protocol='WS'>"
    "<DataItem Name='Protocol' URI='urn:zq:imaging:con:service:device:DeviceService'"
    " XPath='//dd:Kind'/></XMLDataMap>"
    "<XMLDataMap Protocol='PLSXML'>"
    "<DataItem Name='Protocol' URI='/zq/device/product_information.xml' XPath='//Kind'/>"
    "<DataItem Name='Empty' URI='/zq/device/product_information.xml' XPath='//Nothing'/>"
    "</XMLDataMap></DataMaps>";

// One nginx with three sites, a device's services on the ports 8080, 7627 and 80.
class NginxDevice : public testing::Test {
 protected:
  void SetUp() override {
    const TempFolder& files = m_nginx.Folder();
    files.Write("root/quarn/DevMgmt/DiscoveryTree.xml",
                "<t xmlns:dd='urn:d'>"
                "<r><dd:ResourceType>quarn:zqQuarnProductConfigDyn</dd:ResourceType>"
                "<dd:ResourceURI>/config.xml</dd:ResourceURI></r>"
                "<r><dd:ResourceType>quarn:supplies</dd:ResourceType>"
                "<dd:ResourceURI>/supplies.xml?kind=all</dd:ResourceURI></r></t>");
    files.Write("root/quarn/config.xml", "<c xmlns:dd='urn:d'><dd:Kind>quarn</dd:Kind></c>");
    files.Write("root/quarn/status.xml", "<x xmlns:s='urn:s'><s:State>InPowerSave</s:State></x>");
    files.Write("root/quarn/supplies.xml",
                "<x><i c='C'><level>7</level></i>"
                "<i c='K'><level> 42 </level></i></x>");
    files.Write("root/ws/device",
                "<s:Envelope xmlns:s='http://www.w3.org/2003/05/soap-envelope' "
                "xmlns:dd='urn:d'><s:Body><dd:MakeAndModel>M</dd:MakeAndModel>"
                "<dd:Kind>ws</dd:Kind></s:Body></s:Envelope>");
    files.Write("root/plsxml/zq/device/product_information.xml",
                "<p><ProductSerialNumber>S1</ProductSerialNumber><Kind>plsxml</Kind></p>");
    files.Write("specification.xml", kSpecification);
    ASSERT_TRUE(
        m_nginx.Start("server { listen @PORT0@; root root/quarn; }"
                      "server { listen @PORT1@; root root/ws; error_page 405 =200 $uri; }"
                      "server { listen @PORT2@; root root/plsxml; }",
                      3))
        << m_nginx.Failure();
  }

  // `protocols`: which of the device's services answer, of "quarn", "ws" and "plsxml".
  ProcessResult Get(const std::string& protocols, const std::vector<std::string>& names) {
    std::uint16_t closed = 0;
    close(ListenOnLoopback(1, &closed));
    const auto port = [&](const char* name, std::size_t index) {
      return std::to_string(protocols.find(name) == std::string::npos ? closed
                                                                      : m_nginx.Port(index));
    };
    std::vector<std::string> arguments = {"get",
                                          "--device",
                                          "127.0.0.1",
                                          "--spec",
                                          Utf8(m_nginx.Folder().Path() / "specification.xml"),
                                          "--port",
                                          "8080=" + port("quarn", 0),
                                          "--port",
                                          "7627=" + port("ws", 1),
                                          "--port",
                                          "80=" + port("plsxml", 2)};
    arguments.insert(arguments.end(), names.begin(), names.end());
    return RunTool(arguments);
  }

  Nginx m_nginx;
};

TEST_F(NginxDevice, AnswersByTheFirstProtocolThatItSpeaks) {
  static const struct {
    const char* protocols;
    const char* output;
    int exitStatus;
  } kCases[] = {
      {"quarn ws plsxml", "Protocol\tquarn\n", 0},
      {"ws plsxml", "Protocol\tws\n", 0},
      {"plsxml", "Protocol\tplsxml\n", 0},
      {"none", "", 3},
  };
  for (const auto& c : kCases) {
    const ProcessResult result = Get(c.protocols, {"Protocol"});
    EXPECT_EQ(c.output, result.output) << c.protocols << result.error;
    EXPECT_EQ(c.exitStatus, result.exitStatus) << c.protocols << result.error;
  }
}

TEST_F(NginxDevice, ReadsByPathAndByResourceType) {
  const ProcessResult result = Get("quarn", {"toner:Black", "Status", "Protocol", "Status"});
  EXPECT_EQ("toner:Black\t42\nStatus\tSleeping\nProtocol\tquarn\nStatus\tSleeping\n",
            result.output);
  EXPECT_EQ(0, result.exitStatus) << result.error;
}

TEST_F(NginxDevice, TellsWhatHasNoValue) {
  const ProcessResult result = Get("plsxml", {"--json", "Empty", "Protocol"});
  EXPECT_EQ(1, result.exitStatus);
  EXPECT_NE(std::string::npos, result.output.find("\"Empty\": null")) << result.output;
  EXPECT_NE(std::string::npos, result.output.find("\"Protocol\": \"plsxml\"")) << result.output;
  EXPECT_NE(std::string::npos, result.error.find("Empty")) << result.error;
  EXPECT_NE(std::string::npos, result.error.find("0x00000001")) << result.error;
}

// A PLSXML device that answers its probe well and then every request for /bad.xml by `script`.
ProcessResult GetFrom(LoopbackServer::Script script) {
  constexpr char kProbe[] =
      "HTTP/1.1 200 OK\r\nContent-Length: 45\r\nConnection: close\r\n\r\n"
      "<p><ProductSerialNumber>S</ProductSerialNumber></p>";
  LoopbackServer server([&](LoopbackConnection& connection) {
    const std::string request = connection.ReadRequest();
    if (request.rfind("GET /bad.xml ", 0) == 0) {
      script(connection);
    } else if (!request.empty()) {
      std::string probe = kProbe;
      const std::size_t body = probe.find("<p>");
      probe.replace(probe.find("45"), 2, std::to_string(probe.size() - body));
      connection.Send(probe);
    }
  });
  const TempFolder folder;
  const auto specification = folder.Write(
      "specification.xml",
      "<DataMaps><XMLDataMap Protocol='PLSXML'><StaticDataItem Name='Fixed'>f</StaticDataItem>"
      "<DataItem Name='Bad' URI='/bad.xml' XPath='//v'/></XMLDataMap></DataMaps>");
  return RunTool({"get", "--device", "127.0.0.1", "--spec", Utf8(specification), "--port",
                  "80=" + std::to_string(server.Port()), "--timeout", "2", "Bad", "Fixed"});
}

std::string Response(const std::string& body, const char* status = "200 OK") {
  return std::string("HTTP/1.1 ") + status + "\r\nContent-Length: " + std::to_string(body.size()) +
         "\r\n\r\n" + body;
}

TEST(BadDevice, EndsInTimeWithACodeAndAMessage) {
  const std::string kNul("<x><v>1</v>\0</x>", 16);
  static const struct {
    const char* name;
    LoopbackServer::Script script;
    const char* code;
  } kCases[] = {
      {"404", [](LoopbackConnection& c) { c.Send(Response("<x><v>1</v></x>", "404 Not Found")); },
       "0x80004005"},
      {"closes at once", [](LoopbackConnection&) {}, "0x80004005"},
      {"stays silent", [](LoopbackConnection& c) { c.WaitForClose(); }, "0x80004005"},
      {"empty body", [](LoopbackConnection& c) { c.Send(Response("")); }, "0x00000001"},
      {"half a document", [](LoopbackConnection& c) { c.Send(Response("<x><v>1</v>")); },
       "0x00000001"},
      {"NUL bytes", [&](LoopbackConnection& c) { c.Send(Response(kNul)); }, "0x00000001"},
      {"entity bomb",
       [](LoopbackConnection& c) {
         c.Send(
             Response("<!DOCTYPE x [<!ENTITY a 'aaaaaaaaaa'><!ENTITY b '&a;&a;&a;&a;'>]>"
                      "<x><v>&b;</v></x>"));
       },
       "0x00000001"},
      {"200 MB",
       [](LoopbackConnection& c) {
         c.Send("HTTP/1.1 200 OK\r\nContent-Length: 209715200\r\n\r\n<x>");
         const std::string block(1 << 20, ' ');
         for (int i = 0; i < 200 && c.Send(block); ++i) {
         }
       },
       "0x80004005"},
      {"200 MB in chunks",
       [](LoopbackConnection& c) {
         c.Send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
         const std::string block = "100000\r\n" + std::string(1 << 20, '<') + "\r\n";
         for (int i = 0; i < 200 && c.Send(block); ++i) {
         }
       },
       "0x80004005"},
      {"never ends",
       [](LoopbackConnection& c) {
         c.Send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
         while (c.Send("1\r\n \r\n") && c.Pause(50)) {
         }
       },
       "0x80004005"},
      {"deep nesting",
       [](LoopbackConnection& c) {
         std::string deep;
         for (int i = 0; i < 1'000'000; ++i) deep += "<v>";
         for (int i = 0; i < 1'000'000; ++i) deep += "</v>";
         c.Send(Response(deep));
       },
       "0x00000001"},
  };
  for (const auto& c : kCases) {
    const auto start = std::chrono::steady_clock::now();
    const ProcessResult result = GetFrom(c.script);
    const auto elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_EQ("Fixed\tf\n", result.output) << c.name << ": " << result.error;
    EXPECT_EQ(1, result.exitStatus) << c.name << ": " << result.error;
    EXPECT_NE(std::string::npos, result.error.find("Bad")) << c.name << ": " << result.error;
    EXPECT_NE(std::string::npos, result.error.find(c.code)) << c.name << ": " << result.error;
    EXPECT_LT(elapsed, std::chrono::seconds(15)) << c.name;
  }
}

TEST(IppDevice, IsToldWhyItsNameDoesNotDo) {
  const ProcessResult result = RunTool(
      {"get", "--device", "localhost", "--spec", CORVANE_EXAMPLES "/ipp-printer.xml", "Model"});
  EXPECT_EQ(result.exitStatus, 3);
  EXPECT_NE(std::string::npos, result.error.find("data map 1 (IPP): the device is no IP address"))
      << result.error;
}

}  // namespace
}  // namespace Corvane::Test
