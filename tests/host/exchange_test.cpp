// Exchanges with a device: what comes of its answers, and what it sees.
#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include "tests/host/exchange.h"
#include "tests/support/cases.h"
#include "tests/support/peers/loopback_server.h"

namespace Corvane::Test {
namespace {

const std::string kOk = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok";

// "verb path credentials body"
std::string Shown(const std::string& request) {
  std::string shown = request.substr(0, request.find(" HTTP/") + 1);
  const std::size_t credentials = request.find("Digest ");
  if (credentials != request.npos) {
    shown += request.substr(credentials, request.find(", cnonce") - credentials) + ' ';
  }
  return shown + request.substr(request.find("\r\n\r\n") + 4);
}

// A device that answers as the case says.
struct Device {
  explicit Device(const Case& c) : m_case(c), m_answers(c.Parts("answers")) {}

  void Serve(LoopbackConnection& connection) {
    SetLast(&connection);
    Answer(connection);
    SetLast(nullptr);
  }
  void Answer(LoopbackConnection& connection) {
    for (std::string request; !(request = connection.ReadRequest()).empty();) {
      std::unique_lock lock(m_mutex);
      m_saw += std::to_string(connection.m_number) + ' ' + Shown(request) + '|';
      const std::string answer = m_answers.at(std::min(m_answered++, m_answers.size() - 1));
      lock.unlock();
      if (answer == "gone") return;
      if (answer == "silence") return connection.WaitForClose();
      connection.Send(answer == "ok" ? kOk : m_case.Text(answer));
    }
  }

  void SetLast(LoopbackConnection* connection) {
    const std::lock_guard lock(m_mutex);
    m_last = connection;
  }
  // What nobody asked for, on the connection that is open.
  void SendLate() {
    const std::lock_guard lock(m_mutex);
    if (m_last) m_last->Send(m_case.Text("late"));
  }

  const Case& m_case;
  const std::vector<std::string> m_answers;
  std::mutex m_mutex;  // guards the next ones
  LoopbackConnection* m_last = nullptr;
  std::size_t m_answered = 0;
  std::string m_saw;
};

Exchanged ExchangeOf(const Case& c, const Owned<Address>& address, const std::string& request) {
  std::istringstream words(request);
  std::string verb, path, body;
  words >> verb >> path >> body;
  if (c.Text("way") == "one piece") return ExchangeBy("one piece", address, kIppPort, body);
  const auto configure = [&](HTTPRequest* made) {
    made->SetURI(ToWide(path).c_str());
    PostText(made, body);
    made->SetMethod(ToWide(verb).c_str());
    made->SetOption(static_cast<std::uint32_t>(c.Number("option")));
  };
  if (c.Text("way") != "ipp") return Exchange(address, L"", configure);
  const PrinterRequest printer(address);
  configure(printer.request.get());
  return printer.Respond();
}

TEST(Exchange, IsWhatItsAnswersAllow) {
  for (const Case& c : ReadCases("host/exchanges.txt")) {
    SCOPED_TRACE(c.Where() + " " + c.Text("name"));
    Device device(c);
    LoopbackServer server([&device](LoopbackConnection& connection) { device.Serve(connection); });
    Host::NetworkOptions options = LoopbackOptions(server.Port());
    options.userName = c.Wide("user");
    options.password = options.userName;
    options.secretsOverTlsOnly = false;
    const Owned<Address> address = NetworkDevice(options);
    std::string came;
    for (const std::string& request : c.Parts("requests")) {
      came += Told(ExchangeOf(c, address, request)) + '|';
      if (c.Find("late")) device.SendLate();
    }
    const std::string failure = ToUtf8(address->GetLastFailure());
    const std::size_t reason = failure.find(": ");
    EXPECT_EQ(came + (reason == failure.npos ? "" : failure.substr(reason)), c.Text("came"));
    const std::lock_guard lock(device.m_mutex);
    EXPECT_EQ(device.m_saw, c.Text("saw"));
  }
}

TEST(Exchange, RefusesSettingsThatCannotBeUsed) {
  LoopbackServer server(LoopbackServer::AnswerEach(kOk));
  const Owned<Address> address = NetworkDevice(LoopbackOptions(server.Port()));
  for (const Configure& configure :
       {Configure([](HTTPRequest* r) { r->SetRequestData(nullptr, 5); }),
        Configure([](HTTPRequest* r) { r->AddHeader(nullptr, L"b"); }),
        Configure([](HTTPRequest* r) { r->SetMethod(nullptr); })}) {
    const Exchanged seen = Exchange(address, L"/", configure);
    EXPECT_EQ(seen.error, kErrorInvalidParameter);
    EXPECT_NE(seen.failure, L"");
  }
  EXPECT_TRUE(server.Requests().empty());
  // The last content type counts.
  Exchange(address, L"x", [](HTTPRequest* r) {
    r->AddHeader(L"content-type", L"a/b");
    r->SetContentType(L"c/d");
  });
  EXPECT_TRUE(server.Requests().at(0).starts_with("GET /x HTTP/1.1\r\n"));
  EXPECT_TRUE(server.Requests().at(0).ends_with("\r\nContent-Type: c/d\r\n\r\n"));
}

}  // namespace
}  // namespace Corvane::Test
