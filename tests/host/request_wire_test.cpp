// What a request puts on the wire, and what it does not.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

#include "host/network_address.h"
#include "tests/host/exchange.h"
#include "tests/support/hr.h"
#include "tests/support/loopback_server.h"

namespace Corvane::Test {
namespace {

constexpr char kOk[] = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok";

Owned<Address> AddressOf(const LoopbackServer& server) {
  Host::NetworkOptions options;
  options.host = L"127.0.0.1";
  options.portMap = {{8080, server.Port()}};
  options.totalTimeoutMs = 5'000;
  return Owned<Address>(Host::CreateNetworkAddress(options));
}

bool Has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(RequestWire, APathStaysAPathOnTheDevice) {
  const struct {
    const char* name;
    std::wstring path;
    const char* target;
  } kCases[] = {
      {"plain", L"/DevMgmt/x.xml?a=b&c=d", "/DevMgmt/x.xml?a=b&c=d"},
      {"none", L"", "/"},
      {"URL", L"http://evil/x", "/http://evil/x"},
      {"other host", L"//evil/x", "//evil/x"},
      {"user information", L"@evil/x", "/@evil/x"},
      {"port", L":1/x", "/:1/x"},
      {"line end", L"/x HTTP/1.1\r\nHost: evil\r\n\r\n",
       "/x%20HTTP/1.1%0D%0AHost:%20evil%0D%0A%0D%0A"},
      {"backslash", L"/\\evil\\x", "/%5Cevil%5Cx"},
      {"fragment", L"/x#y", "/x%23y"},
      {"escapes stay, stray percents do not", L"/%41%zz%", "/%41%25zz%25"},
      {"dots", L"/a/../b", "/a/../b"},
      {"beyond ASCII", L"/\u00E9\U0001F5A8", "/%C3%A9%F0%9F%96%A8"},
      {"no character", std::wstring(L"/") + static_cast<wchar_t>(0xD800), "/%EF%BF%BD"},
  };
  LoopbackServer server(LoopbackServer::AnswerEach(kOk));
  const Owned<Address> address = AddressOf(server);
  for (const auto& row : kCases) {
    const Exchanged seen = Exchange(address.get(), 8080, row.path.c_str());
    EXPECT_HR(seen.result, S_OK) << row.name;
    const std::string request = server.Requests().back();
    EXPECT_EQ(request.substr(0, request.find("\r\n")),
              "GET " + std::string(row.target) + " HTTP/1.1")
        << row.name;
    EXPECT_TRUE(Has(request, "\r\nHost: 127.0.0.1:" + std::to_string(server.Port()) + "\r\n"))
        << row.name;
  }
  EXPECT_EQ(server.Requests().size(), std::size(kCases));
}

TEST(RequestWire, SendsVerbHeadersAndBodyAsGiven) {
  LoopbackServer server(LoopbackServer::AnswerEach(kOk));
  const Owned<Address> address = AddressOf(server);
  const std::string body("<a/>\0b", 6);
  Exchange(address.get(), 8080, L"/x", [&body](HTTPRequest* request) {
    PostText(request, body);
    request->AddHeader(L"Content-Type", L"text/plain");
    request->SetContentType(L"application/soap+xml");
    request->AddHeader(L"SOAPAction", L"");
    request->AddHeader(L"Pragma", L"no-cache");
  });
  const std::string posted = server.Requests().at(0);
  EXPECT_EQ(posted.substr(posted.find("\r\n\r\n") + 4), body);
  for (const char* const line :
       {"POST /x HTTP/1.1\r\n", "\r\nContent-Type: application/soap+xml\r\n", "\r\nSOAPAction:\r\n",
        "\r\nPragma: no-cache\r\n", "\r\nContent-Length: 6\r\n"}) {
    EXPECT_TRUE(Has(posted, line)) << line << posted;
  }
  for (const char* const line : {"text/plain", "Expect", "Accept-Encoding", "Authorization"}) {
    EXPECT_FALSE(Has(posted, line)) << line;
  }

  Exchange(address.get(), 8080, L"/x", [](HTTPRequest* request) { request->SetMethod(L"POST"); });
  const std::string empty = server.Requests().at(1);
  EXPECT_TRUE(Has(empty, "\r\nContent-Length: 0\r\n")) << empty;
  EXPECT_FALSE(Has(empty, "Content-Type")) << empty;
  Exchange(address.get(), 8080, L"/x", [](HTTPRequest* request) { request->SetMethod(L"LOCK"); });
  EXPECT_TRUE(server.Requests().at(2).starts_with("LOCK /x ")) << server.Requests().at(2);
}

TEST(RequestWire, RefusesSettingsThatWouldBreakTheMessage) {
  using Configure = void (*)(HTTPRequest*);
  const struct {
    const char* name;
    Configure configure;
  } kCases[] = {
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
      {"HEAD with a body",
       [](HTTPRequest* r) {
         PostText(r, "x");
         r->SetMethod(L"HEAD");
       }},
  };
  LoopbackServer server(LoopbackServer::AnswerEach(kOk));
  const Owned<Address> address = AddressOf(server);
  for (const auto& row : kCases) {
    const Exchanged seen = Exchange(address.get(), 8080, L"/", row.configure);
    EXPECT_HR(seen.result, E_INVALIDARG) << row.name;
    EXPECT_EQ(seen.status, 0U) << row.name;
    EXPECT_FALSE(seen.failure.empty()) << row.name;
  }
  EXPECT_TRUE(server.Requests().empty());
}

TEST(RequestWire, CredentialsAnswerAChallengeAndNothingElse) {
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
  const Owned<Address> address = AddressOf(server);
  address->SetUserName(L"admin");
  address->SetPassword(L"secret");
  EXPECT_EQ(Exchange(address.get(), 8080, L"/open").body, "ok");
  const Exchanged seen = Exchange(address.get(), 8080, L"/closed",
                                  [](HTTPRequest* request) { PostText(request, "body"); });
  EXPECT_EQ(seen.status, 200U);
  EXPECT_EQ(seen.body, "ok");
  const std::vector<std::string> requests = server.Requests();
  ASSERT_EQ(requests.size(), 3U);
  EXPECT_FALSE(Has(requests[0], "Authorization"));
  EXPECT_FALSE(Has(requests[1], "Authorization"));
  EXPECT_TRUE(
      Has(requests[2], "Digest username=\"admin\", realm=\"r\", nonce=\"n1\", uri=\"/closed\""))
      << requests[2];
  EXPECT_TRUE(requests[2].ends_with("\r\n\r\nbody")) << requests[2];
}

TEST(RequestWire, FollowsRedirectsWithinTheDeviceOnly) {
  LoopbackServer other(LoopbackServer::AnswerEach(kOk));
  std::atomic<std::uint16_t> port = 0;
  LoopbackServer server([&port, &other](LoopbackConnection& connection) {
    const std::string self = "http://127.0.0.1:" + std::to_string(port.load());
    const std::string elsewhere = "127.0.0.1:" + std::to_string(other.Port());
    const struct {
      const char* path;
      std::string location;
    } kRoutes[] = {
        {"/absolute", self + "/end"},
        {"/relative", "end?q#f"},
        {"/port", "http://" + elsewhere},
        {"/scheme", "https" + self.substr(4) + "/end"},
        {"/network", "//" + elsewhere},
        {"/backslash", "/\\" + elsewhere},
        {"/user", "http://u:p@127.0.0.1:" + std::to_string(port.load()) + "/end"},
        {"/file", "file:///end"},
        {"/loop", "/loop"},
        {"/name", "http://localhost:" + std::to_string(port.load()) + "/end"},
    };
    for (std::string request; !(request = connection.ReadRequest()).empty();) {
      std::string answer = kOk;
      for (const auto& route : kRoutes) {
        if (Has(request, std::string(" ") + route.path + " ")) {
          answer =
              "HTTP/1.1 302 Found\r\nContent-Length: 0\r\nLocation: " + route.location + "\r\n\r\n";
        }
      }
      connection.Send(answer);
    }
  });
  port = server.Port();
  const struct {
    const wchar_t* path;
    const wchar_t* verb;
    std::uint32_t status;
    std::size_t requests;
  } kCases[] = {
      {L"/absolute", L"GET", 200, 2}, {L"/relative", L"GET", 200, 2},
      {L"/port", L"GET", 302, 1},     {L"/scheme", L"GET", 302, 1},
      {L"/network", L"GET", 302, 1},  {L"/backslash", L"GET", 200, 2},
      {L"/user", L"GET", 302, 1},     {L"/file", L"GET", 302, 1},
      {L"/name", L"GET", 302, 1},     {L"/absolute", L"POST", 302, 1},
      {L"/loop", L"GET", 0, 6},
  };
  const Owned<Address> address = AddressOf(server);
  address->SetUserName(L"admin");
  address->SetPassword(L"secret");
  for (const auto& row : kCases) {
    const std::size_t before = server.Requests().size();
    const Exchanged seen = Exchange(address.get(), 8080, row.path,
                                    [&row](HTTPRequest* request) { request->SetMethod(row.verb); });
    EXPECT_EQ(seen.status, row.status) << testing::PrintToString(row.path);
    EXPECT_EQ(seen.error, row.status == 0 ? 12156U : 0U) << testing::PrintToString(row.path);
    EXPECT_EQ(server.Requests().size() - before, row.requests) << testing::PrintToString(row.path);
    EXPECT_EQ(seen.failure.empty(), row.status == 200) << testing::PrintToString(row.path);
  }
  EXPECT_TRUE(other.Requests().empty());
}

// A device may have acted on a POST before its kept connection broke.
TEST(RequestWire, ABrokenConnectionRepeatsAGetButNoPost) {
  const struct {
    const char* name;
    const wchar_t* verb;
    const char* body;
    std::uint32_t error;
    std::size_t requests;  // after the first
  } kCases[] = {
      {"GET", L"GET", "", 0, 2},
      {"POST", L"POST", "print", 12030, 1},
      {"POST without a body", L"POST", "", 0, 1},  // over a connection of its own
  };
  for (const auto& row : kCases) {
    LoopbackServer server([](LoopbackConnection& connection) {
      connection.ReadRequest();
      connection.Send(kOk);
      if (connection.m_number == 1) connection.ReadRequest();  // and goes
    });
    const Owned<Address> address = AddressOf(server);
    EXPECT_EQ(Exchange(address.get(), 8080, L"/first").status, 200U) << row.name;
    const Exchanged seen = Exchange(address.get(), 8080, L"/", [&row](HTTPRequest* request) {
      PostText(request, row.body);
      request->SetMethod(row.verb);
    });
    EXPECT_EQ(seen.error, row.error) << row.name;
    EXPECT_EQ(server.Requests().size(), 1 + row.requests) << row.name;
  }
}

}  // namespace
}  // namespace Corvane::Test
