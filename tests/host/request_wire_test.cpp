// What a request puts on the wire, and what it does not.
#include <gtest/gtest.h>

#include <future>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "base/utf8.h"
#include "corvane/error_codes.h"
#include "host/http/challenge.h"
#include "host/http/request_head.h"
#include "host/http/request_url.h"
#include "tests/host/exchange.h"
#include "tests/support/cases.h"
#include "tests/support/hr.h"
#include "tests/support/peers/loopback_server.h"

namespace Corvane::Test {
namespace {

constexpr char kOk[] = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok";

bool Has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(RequestUrl, LeadsNowhereElse) {
  using Function = std::string (*)(const Case&);
  const std::map<std::string, Function> functions = {
      {"target", [](const Case& c) { return Host::EncodeTarget(c.Text("text")); }},
      {"head",
       [](const Case& c) {
         const Host::UrlInHead url = Host::SplitUrl(c.Text("text"));
         return url.host + ' ' + url.target;
       }},
      {"host", [](const Case& c) { return Host::UrlHost(c.Wide("text")).value_or("none"); }},
      {"redirect", [](const Case& c) {
         return Host::RedirectWithinOrigin(c.Text("from"), c.Text("text")).value_or("none");
       }}};
  for (const Case& c : ReadCases("host/request_urls.txt")) {
    EXPECT_EQ(functions.at(c.Text("function"))(c), c.Text("result")) << c.Where();
  }
}

// The head, or why there is none.
std::string Head(const Case& c) {
  Host::RequestSettings settings;
  settings.verb = ToWide(c.Find("verb").value_or("GET"));
  settings.contentType = c.Wide("type");
  settings.userName = c.Wide("user");
  settings.password = c.Wide("password");
  const std::string body = c.Text("body");
  settings.body = body;
  std::istringstream lines(c.Text("lines"));
  for (std::string line; std::getline(lines, line, '|');) {
    const std::size_t colon = line.find(": ");
    settings.headers.emplace_back(ToWide(line.substr(0, colon)), ToWide(line.substr(colon + 2)));
  }
  Host::DeviceSettings device;
  if (c.Find("address")) device.userName = L"admin", device.password = L"secret";
  if (c.Find("tls only")) device.secretsOverTlsOnly = c.Text("tls only") == "yes";
  device.basicInClear = c.Find("basic in clear").has_value();

  Host::WireRequest request;
  request.url = c.Find("url").value_or("http://127.0.0.1:8080/x");
  const wchar_t* fault =
      Host::BuildWireRequest(settings, device, c.Find("way").has_value(), &request);
  std::string head;
  if (!fault && c.Text("way") == "streamed") {
    fault = Host::BuildStreamedHead(request, &head);
  } else if (!fault) {
    head =
        Host::BuildHead(request, Host::AnswerChallenge(c.Text("challenge"), request, false, "c"));
  }
  return fault ? ToUtf8(fault) : head;
}

TEST(RequestHead, SaysWhatTheSettingsSay) {
  for (const Case& c : ReadCases("host/request_heads.txt")) {
    EXPECT_EQ(Head(c), c.Text("head") + c.Text("fault")) << c.Where() << ' ' << c.Text("name");
  }
}

TEST(Request, RefusesSettingsThatCannotBeUsed) {
  LoopbackServer server(LoopbackServer::AnswerEach(kOk));
  const Owned<Address> address = NetworkDevice(LoopbackOptions(server.Port()));
  const Configure kCases[] = {[](HTTPRequest* r) { r->SetRequestData(nullptr, 5); },
                              [](HTTPRequest* r) { r->AddHeader(nullptr, L"b"); },
                              [](HTTPRequest* r) { r->SetMethod(nullptr); }};
  for (const Configure& configure : kCases) {
    const Exchanged seen = Exchange(address, L"/", configure);
    EXPECT_HR(seen.result, E_INVALIDARG);
    EXPECT_EQ(seen.error, kErrorInvalidParameter);
    EXPECT_NE(seen.failure, L"");
  }
  EXPECT_TRUE(server.Requests().empty());
  // The last content type counts.
  Exchange(address, L"x", [](HTTPRequest* r) {
    r->AddHeader(L"content-type", L"a/b");
    r->SetContentType(L"c/d");
  });
  EXPECT_TRUE(Has(server.Requests().at(0), "GET /x HTTP/1.1\r\n"));
  EXPECT_TRUE(Has(server.Requests().at(0), "\r\nContent-Type: c/d\r\n\r\n"));
}

TEST(Request, CredentialsAnswerAChallengeAndNothingElse) {
  LoopbackServer server([](LoopbackConnection& connection) {
    for (std::string request; !(request = connection.ReadRequest()).empty();) {
      const bool open = request.starts_with("GET /open");
      connection.Send(open || Has(request, "\r\nAuthorization: Digest ")
                          ? kOk
                          : "HTTP/1.1 401 No\r\nContent-Length: 3\r\n"
                            "WWW-Authenticate: Basic realm=\"r\"\r\n"
                            "WWW-Authenticate: Digest realm=\"r\", nonce=\"n1\", qop=\"auth\"\r\n"
                            "\r\nno!");
    }
  });
  Host::NetworkOptions options = LoopbackOptions(server.Port());
  options.userName = L"admin";
  options.password = L"secret";
  const Owned<Address> address = NetworkDevice(options);
  EXPECT_EQ(Exchange(address, L"/open").body, "ok");
  EXPECT_EQ(Exchange(address, L"/closed", [](HTTPRequest* r) { PostText(r, "body"); }).body, "ok");
  const std::vector<std::string> requests = server.Requests();
  ASSERT_EQ(requests.size(), 3U);
  EXPECT_FALSE(Has(requests[0] + requests[1], "Authorization"));
  EXPECT_TRUE(
      Has(requests[2], "Digest username=\"admin\", realm=\"r\", nonce=\"n1\", uri=\"/closed\""));
  EXPECT_TRUE(requests[2].ends_with("\r\n\r\nbody")) << requests[2];
}

TEST(Request, FollowsRedirectsWithinTheDevice) {
  const struct {
    const wchar_t* verb;
    std::string location;
    std::uint32_t status, error;
    std::size_t requests;
  } kCases[] = {{L"GET", "/end", 200, 0, 2},
                {L"GET", "//evil", 302, 0, 1},
                {L"POST", "/end", 302, 0, 1},
                {L"GET", "/from", 0, kErrorRedirectFailed, 6}};
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.location);
    LoopbackServer server([&row](LoopbackConnection& connection) {
      for (std::string request; !(request = connection.ReadRequest()).empty();) {
        connection.Send(Has(request, " /end ") ? kOk
                                               : "HTTP/1.1 302 Found\r\nContent-Length: 0\r\n"
                                                 "Location: " +
                                                     row.location + "\r\n\r\n");
      }
    });
    const Exchanged seen = Exchange(NetworkDevice(LoopbackOptions(server.Port())), L"/from",
                                    [&row](HTTPRequest* r) { r->SetMethod(row.verb); });
    EXPECT_EQ(seen.status, row.status);
    EXPECT_EQ(seen.error, row.error);
    EXPECT_EQ(server.Requests().size(), row.requests);
    EXPECT_EQ(seen.failure.empty(), row.status == 200);
  }
}

// A device may have acted on a POST before its kept connection broke.
TEST(Request, ABrokenConnectionRepeatsAGetButNoPost) {
  const struct {
    const wchar_t* verb;
    const char* body;
    std::uint32_t error;
    std::size_t requests;
  } kCases[] = {
      {L"GET", "", 0, 3},
      {L"POST", "print", kErrorConnection, 2},
      {L"POST", "", 0, 2},  // over a connection of its own
  };
  for (const auto& row : kCases) {
    LoopbackServer server([](LoopbackConnection& connection) {
      connection.ReadRequest();
      connection.Send(kOk);
      if (connection.m_number == 1) connection.ReadRequest();  // and goes
    });
    const Owned<Address> address = NetworkDevice(LoopbackOptions(server.Port()));
    EXPECT_EQ(Exchange(address, L"/first").status, 200U);
    const Exchanged seen = Exchange(address, L"/", [&row](HTTPRequest* request) {
      PostText(request, row.body);
      request->SetMethod(row.verb);
    });
    EXPECT_EQ(seen.error, row.error) << row.requests << row.body;
    EXPECT_EQ(server.Requests().size(), row.requests) << row.requests << row.body;
  }
}

// The next request must not take for its own what a device sent too much, with its answer or, as
// one does that closes an idle connection with 408, behind it.
TEST(Request, TakesNoAnswerThatCameBeforeIt) {
  const std::string foreign = "HTTP/1.1 408 Late\r\nContent-Length: 7\r\n\r\nforeign";
  for (const bool later : {false, true}) {
    std::promise<void> read, sent;
    LoopbackServer server([&](LoopbackConnection& connection) {
      connection.ReadRequest();
      connection.Send(later || connection.m_number > 1 ? kOk : kOk + foreign);
      if (later && connection.m_number == 1) {
        read.get_future().wait();
        connection.Send(foreign);
        sent.set_value();
      }
      connection.WaitForClose();
    });
    const Owned<Address> address = NetworkDevice(LoopbackOptions(server.Port()));
    EXPECT_EQ(Exchange(address, L"/").status, 200U);
    if (later) {
      read.set_value();
      sent.get_future().wait();
    }
    EXPECT_EQ(Exchange(address, L"/").status, 200U);
    EXPECT_EQ(server.Requests().size(), 2U);
  }
}

}  // namespace
}  // namespace Corvane::Test
