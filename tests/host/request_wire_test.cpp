// What a request puts on the wire, and what it does not.
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "corvane/error_codes.h"
#include "tests/host/exchange.h"
#include "tests/support/hr.h"
#include "tests/support/peers/loopback_server.h"

namespace Corvane::Test {
namespace {

constexpr char kOk[] = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok";

using Configure = std::function<void(HTTPRequest*)>;

bool Has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

struct RequestWire : testing::Test {
  LoopbackServer m_server{LoopbackServer::AnswerEach(kOk)};
  Owned<Address> m_address = NetworkDevice(LoopbackOptions(m_server.Port()));

  std::string Sent(const std::wstring& path, const Configure& configure = {}) {
    EXPECT_HR(Exchange(m_address, path, configure).result, S_OK);
    return m_server.Requests().back();
  }
};

TEST_F(RequestWire, APathStaysAPathOnTheDevice) {
  const std::pair<std::wstring, std::string> kCases[] = {
      {L"/DevMgmt/x.xml?a=b&c=d", "/DevMgmt/x.xml?a=b&c=d"},
      {L"", "/"},
      {L"http://evil/x", "/http://evil/x"},
      {L"//evil/x", "//evil/x"},
      {L"@evil/x", "/@evil/x"},
      {L":1/x", "/:1/x"},
      {L"/x HTTP/1.1\r\nHost: evil\r\n\r\n", "/x%20HTTP/1.1%0D%0AHost:%20evil%0D%0A%0D%0A"},
      {L"/\\evil\\x", "/%5Cevil%5Cx"},
      {L"/x#y", "/x%23y"},
      {L"/%41%zz%", "/%41%25zz%25"},
      {L"/a/../b", "/a/../b"},
      {L"/\u00E9\U0001F5A8", "/%C3%A9%F0%9F%96%A8"},
      {std::wstring(L"/") + static_cast<wchar_t>(0xD800), "/%EF%BF%BD"}};
  const std::string host = "\r\nHost: 127.0.0.1:" + std::to_string(m_server.Port()) + "\r\n";
  for (const auto& [path, target] : kCases) {
    const std::string request = Sent(path);
    EXPECT_TRUE(request.starts_with("GET " + target + " HTTP/1.1\r\n")) << target << request;
    EXPECT_TRUE(Has(request, host)) << target << request;
  }
  EXPECT_EQ(m_server.Requests().size(), std::size(kCases));
}

TEST_F(RequestWire, SendsVerbHeadersAndBodyAsGiven) {
  const std::string body("<a/>\0b", 6);
  const std::string posted = Sent(L"/x", [&body](HTTPRequest* request) {
    PostText(request, body);
    request->AddHeader(L"Content-Type", L"text/plain");
    request->SetContentType(L"application/soap+xml");
    request->AddHeader(L"SOAPAction", L"");
    request->AddHeader(L"Pragma", L"no-cache");
  });
  EXPECT_EQ(posted.substr(posted.find("\r\n\r\n") + 4), body);
  for (const char* const line :
       {"POST /x HTTP/1.1\r\n", "\r\nContent-Type: application/soap+xml\r\n", "\r\nSOAPAction:\r\n",
        "\r\nPragma: no-cache\r\n", "\r\nContent-Length: 6\r\n"}) {
    EXPECT_TRUE(Has(posted, line)) << line << posted;
  }
  for (const char* const line : {"text/plain", "Expect", "Accept-Encoding", "Authorization"}) {
    EXPECT_FALSE(Has(posted, line)) << line;
  }
  const std::string empty = Sent(L"/x", [](HTTPRequest* r) { r->SetMethod(L"POST"); });
  EXPECT_TRUE(Has(empty, "\r\nContent-Length: 0\r\n")) << empty;
  EXPECT_FALSE(Has(empty, "Content-Type")) << empty;
  EXPECT_TRUE(Sent(L"/x", [](HTTPRequest* r) { r->SetMethod(L"LOCK"); }).starts_with("LOCK /x "));
}

TEST_F(RequestWire, RefusesSettingsThatWouldBreakTheMessage) {
  const std::pair<const char*, Configure> kCases[] = {
      {"verb with a line end", [](HTTPRequest* r) { r->SetMethod(L"GET /y\r\n"); }},
      {"empty verb", [](HTTPRequest* r) { r->SetMethod(nullptr); }},
      {"header name with a colon", [](HTTPRequest* r) { r->AddHeader(L"A:", L"b"); }},
      {"header without a name", [](HTTPRequest* r) { r->AddHeader(nullptr, L"b"); }},
      {"header value with a line end", [](HTTPRequest* r) { r->AddHeader(L"A", L"b\r\nC: d"); }},
      {"content type with a line end", [](HTTPRequest* r) { r->SetContentType(L"b\nC: d"); }},
      {"user name with a line end", [](HTTPRequest* r) { r->SetUserName(L"u\r\nC: d"); }},
      {"Host", [](HTTPRequest* r) { r->AddHeader(L"host", L"evil"); }},
      {"Content-Length", [](HTTPRequest* r) { r->AddHeader(L"Content-Length", L"0"); }},
      {"coding", [](HTTPRequest* r) { r->AddHeader(L"Transfer-Encoding", L"gzip"); }},
      {"no data", [](HTTPRequest* r) { r->SetRequestData(nullptr, 5); }},
      {"HEAD with a body", [](HTTPRequest* r) { PostText(r, "x"), r->SetMethod(L"HEAD"); }}};
  for (const auto& [name, configure] : kCases) {
    const Exchanged seen = Exchange(m_address, L"/", configure);
    EXPECT_HR(seen.result, E_INVALIDARG) << name;
    EXPECT_EQ(seen.status, 0U) << name;
    EXPECT_NE(seen.failure, L"") << name;
  }
  EXPECT_TRUE(m_server.Requests().empty());
}

TEST_F(RequestWire, CredentialsAnswerAChallengeAndNothingElse) {
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
  EXPECT_FALSE(Has(requests[0], "Authorization"));
  EXPECT_FALSE(Has(requests[1], "Authorization"));
  EXPECT_TRUE(
      Has(requests[2], "Digest username=\"admin\", realm=\"r\", nonce=\"n1\", uri=\"/closed\""))
      << requests[2];
  EXPECT_TRUE(requests[2].ends_with("\r\n\r\nbody")) << requests[2];
}

TEST_F(RequestWire, SecretsGoInClearAsFarAsTheOptionsSay) {
  const std::string kBasic = "WWW-Authenticate: Basic realm=\"r\"\r\n";
  const std::string kDigest = "WWW-Authenticate: Digest realm=\"r\", nonce=\"n\"\r\n";
  using Option = std::optional<bool>;
  const struct {
    const char* name;
    Option tlsOnly;
    bool forIPP;
    std::string challenge;
    bool basicInClear, sent, headerSent;
  } kCases[] = {
      {"XML, digest", {}, false, kDigest, false, true, true},
      {"XML, basic", {}, false, kBasic, false, false, true},
      {"XML, basic by name", {}, false, kBasic, true, true, true},
      {"XML, over TLS only", true, false, kDigest, true, false, false},
      {"IPP, digest", {}, true, kDigest, false, false, false},
      {"IPP, basic by name", {}, true, kBasic, true, false, false},
      {"IPP, digest by name", false, true, kDigest, false, true, true},
      {"IPP, basic in spite of that", false, true, kBasic, false, false, true},
  };
  const struct {
    Configure configure;
    bool isHeader = false;
  } kSettings[] = {
      {[](HTTPRequest* r) { r->SetPassword(L"secret"); }},
      {[](HTTPRequest* r) { r->AddHeader(L"aUTHORIZATION", L"Bearer secret"); }, true},
      {[](HTTPRequest* r) { r->AddHeader(L"Proxy-Authorization", L"Bearer secret"); }, true},
      {[](HTTPRequest*) {}}};
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    LoopbackServer server(LoopbackServer::AnswerEach("HTTP/1.1 401 No\r\nContent-Length: 0\r\n" +
                                                     row.challenge + "\r\n"));
    Host::NetworkOptions options = LoopbackOptions(server.Port());
    options.userName = L"admin";
    options.password = L"secret";
    options.secretsOverTlsOnly = row.tlsOnly;
    options.basicInClear = row.basicInClear;
    const Owned<Address> address = NetworkDevice(options);
    for (const auto& [configure, isHeader] : kSettings) {
      const std::size_t before = server.Requests().size();
      const Exchanged seen = Exchange(address, L"/x", configure, 8080, row.forIPP);
      EXPECT_EQ(seen.status, 401U);
      EXPECT_EQ(seen.failure.find(L"secret"), std::wstring::npos);
      std::string sent;
      for (std::size_t i = before; i < server.Requests().size(); ++i) sent += server.Requests()[i];
      EXPECT_EQ(Has(sent, "uthorization:") || Has(sent, "UTHORIZATION:"),
                isHeader ? row.headerSent : row.sent)
          << sent;
    }
  }
}

TEST_F(RequestWire, FollowsRedirectsWithinTheDeviceOnly) {
  const std::string other = "127.0.0.1:" + std::to_string(m_server.Port());
  const struct {
    std::string location;  // "%": the device's own port
    std::uint32_t status;
    std::size_t requests;
    const wchar_t* verb = L"GET";
  } kCases[] = {
      {"http://127.0.0.1:%/end", 200, 2},
      {"end?q#f", 200, 2},
      {"/\\" + other, 200, 2},
      {"http://" + other, 302, 1},
      {"//" + other, 302, 1},
      {"https://127.0.0.1:%/end", 302, 1},
      {"http://u:p@127.0.0.1:%/end", 302, 1},
      {"http://localhost:%/end", 302, 1},
      {"file:///end", 302, 1},
      {"/end", 302, 1, L"POST"},
      {"/from", 0, 6},  // a loop
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.location);
    LoopbackServer server([&row](LoopbackConnection& connection) {
      std::string location = row.location;
      const std::size_t port = location.find('%');
      if (port != location.npos) {
        location.replace(port, 1, std::to_string(connection.m_server->Port()));
      }
      for (std::string request; !(request = connection.ReadRequest()).empty();) {
        connection.Send(Has(request, " /from ") ? "HTTP/1.1 302 Found\r\nContent-Length: 0\r\n"
                                                  "Location: " +
                                                      location + "\r\n\r\n"
                                                : kOk);
      }
    });
    Host::NetworkOptions options = LoopbackOptions(server.Port());
    options.userName = L"admin";
    const Exchanged seen = Exchange(NetworkDevice(options), L"/from",
                                    [&row](HTTPRequest* r) { r->SetMethod(row.verb); });
    EXPECT_EQ(seen.status, row.status);
    EXPECT_EQ(seen.error, row.status == 0 ? kErrorRedirectFailed : 0U);
    EXPECT_EQ(server.Requests().size(), row.requests);
    EXPECT_EQ(seen.failure.empty(), row.status == 200);
  }
  EXPECT_TRUE(m_server.Requests().empty());
}

// A device may have acted on a POST before its kept connection broke.
TEST_F(RequestWire, ABrokenConnectionRepeatsAGetButNoPost) {
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

}  // namespace
}  // namespace Corvane::Test
