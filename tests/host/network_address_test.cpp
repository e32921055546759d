// The address on the network against a real nginx.
#include "host/network_address.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "corvane/error_codes.h"
#include "tests/host/exchange.h"
#include "tests/support/hr.h"
#include "tests/support/peers/nginx.h"

namespace Corvane::Test {
namespace {

using namespace std::string_literals;

constexpr char kServers[] = R"(
server {
  listen @PORT0@;
  default_type text/xml;
  add_header X-Connection $connection:$connection_requests always;
  location /posted { error_page 405 =200 $uri; }
  location /guarded/ { auth_basic "device"; auth_basic_user_file passwords; }
}
server {
  listen @PORT1@ ssl;
  ssl_certificate device.pem;
  ssl_certificate_key device.key;
}
server {
  listen @PORT2@ ssl;
  ssl_certificate stranger.pem;
  ssl_certificate_key stranger.key;
}
)";

// Port 7627 speaks TLS.
class NetworkAddress : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    s_nginx = std::make_unique<Nginx>();
    const TempFolder& folder = s_nginx->Folder();
    folder.Write("root/tree.xml", "<tree/>");
    folder.Write("root/empty", "");
    folder.Write("root/binary", "a\0b\0"s);
    folder.Write("root/posted", "answer");
    folder.Write("root/guarded/secret", "granted");
    folder.Write("root/bytes", std::string(100'000, 'x'));
    folder.Write("passwords", "admin:{PLAIN}pass.word\nguest:{PLAIN}\n");
    s_ready = s_nginx->MakeCertificate("device", "IP:127.0.0.1") &&
              s_nginx->MakeCertificate("stranger", "DNS:other.test") && s_nginx->Start(kServers, 3);
  }
  static void TearDownTestSuite() { s_nginx.reset(); }

  void SetUp() override {
    ASSERT_TRUE(s_ready) << s_nginx->Failure();
    m_options = LoopbackOptions(s_nginx->Port(0));
    m_options.tlsPorts = {7627};
  }

  static std::unique_ptr<Nginx> s_nginx;
  static bool s_ready;
  Host::NetworkOptions m_options;
};

std::unique_ptr<Nginx> NetworkAddress::s_nginx;
bool NetworkAddress::s_ready = false;

TEST_F(NetworkAddress, DeliversBodiesWhole) {
  const std::tuple<const wchar_t*, const wchar_t*, std::string> kCases[] = {
      {L"GET", L"/tree.xml", "<tree/>"}, {L"GET", L"tree.xml", "<tree/>"},
      {L"GET", L"/empty", ""},           {L"GET", L"/binary", "a\0b\0"s},
      {L"POST", L"/posted", "answer"},   {L"HEAD", L"/tree.xml", ""}};
  const Owned<Address> address = NetworkDevice(m_options);
  for (const auto& [verb, path, body] : kCases) {
    SCOPED_TRACE(testing::PrintToString(path));
    const Exchanged seen = Exchange(address, path, [&](HTTPRequest* request) {
      if (verb == L"POST"s) PostText(request, "x");
      request->SetMethod(verb);
    });
    EXPECT_HR(seen.result, S_OK);
    EXPECT_EQ(seen.status, 200U);
    EXPECT_EQ(seen.body, body);
    EXPECT_EQ(seen.failure, L"");
    EXPECT_EQ(seen.contentType, L"text/xml");
  }
  const Exchanged refused = Exchange(address, L"/absent");
  EXPECT_HR(refused.result, S_OK);
  EXPECT_EQ(refused.status, 404U);
  EXPECT_EQ(refused.failure, L"GET http://127.0.0.1:" + std::to_wstring(s_nginx->Port(0)) +
                                 L"/absent: HTTP status 404");
}

TEST_F(NetworkAddress, AnswersBasicChallenges) {
  const struct {
    const char* name;
    const wchar_t *addressUser, *addressPassword, *user, *password;  // the last two: the request's
    std::uint32_t status;
  } kCases[] = {
      {"none", L"", L"", L"", L"", 401},
      {"the address's", L"admin", L"pass.word", L"", L"", 200},
      {"the request's before the address's", L"admin", L"wrong", L"admin", L"pass.word", 200},
      {"a bare name gives way to the address's", L"admin", L"pass.word", L"other", L"", 200},
      {"a bare name alone", L"", L"", L"guest", L"", 200},
      {"the wrong password", L"", L"", L"admin", L"word", 401},
  };
  m_options.basicInClear = true;
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    const Owned<Address> address = NetworkDevice(m_options);
    address->SetUserName(row.addressUser);
    address->SetPassword(row.addressPassword);
    const Exchanged seen = Exchange(address, L"/guarded/secret", [&row](HTTPRequest* request) {
      request->SetPassword(row.password);
      request->SetUserName(row.user);
    });
    EXPECT_EQ(seen.status, row.status);
    EXPECT_EQ(seen.body == "granted", row.status == 200);
    EXPECT_EQ(seen.failure.find(L"word"), std::wstring::npos);
  }
}

TEST_F(NetworkAddress, TrustsOnlyTheCertificatesThatItIsGiven) {
  const struct {
    const char *name, *caFile;
    bool verify;
    std::uint32_t server, error;
  } kCases[] = {
      {"not signed by what the system trusts", nullptr, true, 1, kErrorSecureFailure},
      {"its own certificate", "device.pem", true, 1, 0},
      {"another certificate", "stranger.pem", true, 1, kErrorSecureFailure},
      {"its certificate is for another host", "stranger.pem", true, 2, kErrorSecureFailure},
      {"no such file", "absent.pem", true, 1, kErrorSecureFailure},
      {"no verification", nullptr, false, 1, 0},
      {"no TLS there", "device.pem", true, 0, kErrorSecureFailure},
  };
  for (const auto& row : kCases) {
    m_options.caFile = row.caFile ? (s_nginx->Folder().Path() / row.caFile).string() : "";
    m_options.verifyCertificates = row.verify;
    m_options.portMap[kWsPort] = s_nginx->Port(row.server);
    const Exchanged seen = Exchange(NetworkDevice(m_options), L"/tree.xml", {}, 7627);
    EXPECT_EQ(seen.error, row.error) << row.name << ": " << testing::PrintToString(seen.failure);
    EXPECT_EQ(seen.body, row.error == 0 ? "<tree/>" : "") << row.name;
  }
}

TEST_F(NetworkAddress, RequestsShareAConnection) {
  const Owned<Address> address = NetworkDevice(m_options);
  std::vector<std::wstring> connections;
  for (const wchar_t* const path : {L"/tree.xml", L"/absent", L"/empty", L"/posted"}) {
    HTTPRequest* made = nullptr;
    ASSERT_HR(address->CreateHTTPRequest(&made, 8080), S_OK);
    const Owned<HTTPRequest> request(made);
    request->SetURI(path);
    if (path == L"/posted"s) PostText(made, "x");
    HTTPResponse* response = nullptr;
    ASSERT_HR(request->GetResponse(&response), S_OK);
    connections.push_back(response->GetHeader(L"x-connection"));
  }
  // "connection:request on it"
  const std::wstring first = connections[0].substr(0, connections[0].find(L':'));
  EXPECT_EQ(connections, (std::vector<std::wstring>{first + L":1", first + L":2", first + L":3",
                                                    first + L":4"}));
}

TEST_F(NetworkAddress, ManyThreadsShareAnAddress) {
  const Owned<Address> address = NetworkDevice(m_options);
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&address, i] {
      for (int round = 0; round < 20; ++round) {
        const bool absent = (i + round) % 2 == 0;
        const Exchanged seen = Exchange(address, absent ? L"/absent" : L"/bytes");
        EXPECT_EQ(seen.status, absent ? 404U : 200U);
        EXPECT_EQ(seen.body.size() == 100'000U, !absent);
        address->SetTimeouts(5'000, 10'000);
        address->SetPassword(L"any");
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST_F(NetworkAddress, BoundsTheBody) {
  for (const auto& [limit, error] :
       {std::pair{99'999U, kErrorResponseTooLarge}, std::pair{100'000U, 0U}}) {
    m_options.maxResponseBytes = limit;
    EXPECT_EQ(Exchange(NetworkDevice(m_options), L"/bytes").error, error) << limit;
  }
}

TEST_F(NetworkAddress, EnvironmentCannotDivertIt) {
  for (const char* const name : {"http_proxy", "all_proxy", "ALL_PROXY"}) {
    setenv(name, "http://127.0.0.1:1", 1);
    EXPECT_EQ(Exchange(NetworkDevice(m_options), L"/tree.xml").status, 200U) << name;
    unsetenv(name);
  }
}

TEST(NetworkAddressOptions, RefusesWhatNoDeviceHas) {
  Host::NetworkOptions options = LoopbackOptions(1);
  for (const wchar_t* const host :
       {L"printer-1.example_net.test", L"192.0.2.7", L"2001:db8::1", L"fe80::1%eth0"}) {
    options.host = host;
    const Owned<Address> address = NetworkDevice(options);
    EXPECT_STREQ(address ? address->GetAddress() : L"refused", host);
  }
  for (const wchar_t* const host :
       {L"", L"user@host", L"host:80", L"host/x", L"host?x", L"host#x", L"http://host", L"[::1]",
        L"host\r\nX: y", L"a host", L"host%2fx", L"host\uFF0Fx", L"fe80::1%]/x", L"fe80::1%"}) {
    options.host = host;
    EXPECT_EQ(NetworkDevice(options), nullptr) << testing::PrintToString(host);
  }
  options = LoopbackOptions(1);
  options.portMap = {{kHttpPort, 65536}};
  EXPECT_EQ(NetworkDevice(options), nullptr);
  options = LoopbackOptions(1);
  options.totalTimeoutMs = 0;
  EXPECT_EQ(NetworkDevice(options), nullptr);
}

}  // namespace
}  // namespace Corvane::Test
