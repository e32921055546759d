// The address on the network against a real nginx.
#include "host/network_address.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/host/exchange.h"
#include "tests/support/hr.h"
#include "tests/support/nginx.h"

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

// What the certificates are for, as the tests ask: port 7627 speaks TLS.
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
    m_options.host = L"127.0.0.1";
    m_options.portMap = {{8080, s_nginx->Port(0)}, {7627, s_nginx->Port(1)}};
    m_options.tlsPorts = {7627};
    m_options.totalTimeoutMs = 10'000;
  }

  static std::string CaFile(const char* name) { return (s_nginx->Folder().Path() / name).string(); }

  Exchanged Get(const wchar_t* path, std::uint32_t port = 8080) {
    const Owned<Address> address(Host::CreateNetworkAddress(m_options));
    return Exchange(address.get(), port, path);
  }

  static std::unique_ptr<Nginx> s_nginx;
  static bool s_ready;
  Host::NetworkOptions m_options;
};

std::unique_ptr<Nginx> NetworkAddress::s_nginx;
bool NetworkAddress::s_ready = false;

TEST_F(NetworkAddress, DeliversBodiesWhole) {
  const struct {
    const char* name;
    const wchar_t* path;
    const wchar_t* verb;
    std::uint32_t status;
    std::string body;
  } kCases[] = {
      {"document", L"/tree.xml", L"GET", 200, "<tree/>"},
      {"no slash in front", L"tree.xml", L"GET", 200, "<tree/>"},
      {"empty body", L"/empty", L"GET", 200, ""},
      {"NUL bytes", L"/binary", L"GET", 200, "a\0b\0"s},
      {"POST", L"/posted", L"POST", 200, "answer"},
      {"HEAD has no body", L"/tree.xml", L"HEAD", 200, ""},
  };
  for (const auto& row : kCases) {
    const Owned<Address> address(Host::CreateNetworkAddress(m_options));
    const Exchanged seen = Exchange(address.get(), 8080, row.path, [&row](HTTPRequest* request) {
      request->SetMethod(row.verb);
      if (row.verb == L"POST"s) request->SetRequestData("x", 1);
    });
    EXPECT_HR(seen.result, S_OK) << row.name;
    EXPECT_EQ(seen.status, row.status) << row.name;
    EXPECT_EQ(seen.body, row.body) << row.name;
    EXPECT_EQ(seen.failure, L"") << row.name;
    EXPECT_EQ(seen.contentType, L"text/xml") << row.name;
  }
}

TEST_F(NetworkAddress, TellsTheStatusOfARefusal) {
  const Exchanged seen = Get(L"/absent");
  EXPECT_HR(seen.result, S_OK);
  EXPECT_EQ(seen.status, 404U);
  EXPECT_EQ(seen.failure, L"GET http://127.0.0.1:" + std::to_wstring(s_nginx->Port(0)) +
                              L"/absent: HTTP status 404");
}

TEST_F(NetworkAddress, AnswersBasicChallenges) {
  const struct {
    const char* name;
    const wchar_t* addressUser;
    const wchar_t* addressPassword;
    const wchar_t* user;  // the request's own
    const wchar_t* password;
    std::uint32_t status;
  } kCases[] = {
      {"none", L"", L"", L"", L"", 401},
      {"the address's", L"admin", L"pass.word", L"", L"", 200},
      {"the request's", L"", L"", L"admin", L"pass.word", 200},
      {"the request's before the address's", L"admin", L"wrong", L"admin", L"pass.word", 200},
      {"a bare name gives way to the address's", L"admin", L"pass.word", L"other", L"", 200},
      {"a bare name alone", L"", L"", L"guest", L"", 200},
      {"the wrong password", L"", L"", L"admin", L"word", 401},
  };
  for (const auto& row : kCases) {
    const Owned<Address> address(Host::CreateNetworkAddress(m_options));
    address->SetUserName(row.addressUser);
    address->SetPassword(row.addressPassword);
    const Exchanged seen =
        Exchange(address.get(), 8080, L"/guarded/secret", [&row](HTTPRequest* request) {
          request->SetPassword(row.password);
          request->SetUserName(row.user);
        });
    EXPECT_HR(seen.result, S_OK) << row.name;
    EXPECT_EQ(seen.status, row.status) << row.name;
    EXPECT_EQ(seen.body == "granted", row.status == 200) << row.name;
    EXPECT_EQ(seen.failure.find(L"word"), std::wstring::npos) << row.name;
  }
}

TEST_F(NetworkAddress, TrustsOnlyTheCertificatesThatItIsGiven) {
  const struct {
    const char* name;
    std::string caFile;
    bool verify;
    std::size_t server;
    std::uint32_t error;
  } kCases[] = {
      {"the system's certificates do not vouch for it", "", true, 1, 12175},
      {"its own certificate", CaFile("device.pem"), true, 1, 0},
      {"another certificate", CaFile("stranger.pem"), true, 1, 12175},
      {"its certificate is for another host", CaFile("stranger.pem"), true, 2, 12175},
      {"no such file", CaFile("absent.pem"), true, 1, 12175},
      {"no verification", "", false, 1, 0},
      {"no TLS there", CaFile("device.pem"), true, 0, 12175},
  };
  for (const auto& row : kCases) {
    m_options.caFile = row.caFile;
    m_options.verifyCertificates = row.verify;
    m_options.portMap[7627] = s_nginx->Port(row.server);
    const Exchanged seen = Get(L"/tree.xml", 7627);
    EXPECT_EQ(seen.error, row.error) << row.name << ": " << testing::PrintToString(seen.failure);
    EXPECT_EQ(seen.body, row.error == 0 ? "<tree/>" : "") << row.name;
  }
}

TEST_F(NetworkAddress, RequestsShareAConnection) {
  const Owned<Address> address(Host::CreateNetworkAddress(m_options));
  std::vector<std::wstring> connections;
  for (const wchar_t* const path : {L"/tree.xml", L"/absent", L"/empty", L"/posted"}) {
    HTTPRequest* made = nullptr;
    ASSERT_HR(address->CreateHTTPRequest(&made, 8080), S_OK);
    const Owned<HTTPRequest> request(made);
    request->SetURI(path);
    if (path == L"/posted"s) PostText(request.get(), "x");
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
  const Owned<Address> address(Host::CreateNetworkAddress(m_options));
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&address, i] {
      for (int round = 0; round < 20; ++round) {
        const bool absent = (i + round) % 2 == 0;
        const Exchanged seen = Exchange(address.get(), 8080, absent ? L"/absent" : L"/bytes");
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
  for (const auto& [limit, error] : {std::pair{99'999U, 12184U}, std::pair{100'000U, 0U}}) {
    m_options.maxResponseBytes = limit;
    const Exchanged seen = Get(L"/bytes");
    EXPECT_EQ(seen.error, error) << limit;
    EXPECT_EQ(seen.status, error == 0 ? 200U : 0U) << limit;
  }
}

TEST_F(NetworkAddress, EnvironmentCannotDivertIt) {
  for (const char* const name : {"http_proxy", "all_proxy", "ALL_PROXY"}) {
    setenv(name, "http://127.0.0.1:1", 1);
  }
  EXPECT_EQ(Get(L"/tree.xml").status, 200U);
  for (const char* const name : {"http_proxy", "all_proxy", "ALL_PROXY"}) unsetenv(name);
}

TEST(NetworkAddressOptions, RefusesWhatNoDeviceHas) {
  const struct {
    const char* name;
    const wchar_t* host;
    bool accepted;
  } kHosts[] = {
      {"name", L"printer-1.example_net.test", true},
      {"IPv4", L"192.0.2.7", true},
      {"IPv6", L"2001:db8::1", true},
      {"IPv6 with a zone", L"fe80::1%eth0", true},
      {"none", L"", false},
      {"user information", L"user@host", false},
      {"port", L"host:80", false},
      {"path", L"host/x", false},
      {"query", L"host?x", false},
      {"fragment", L"host#x", false},
      {"URL", L"http://host", false},
      {"brackets", L"[::1]", false},
      {"line end", L"host\r\nX: y", false},
      {"space", L"a host", false},
      {"percent", L"host%2fx", false},
      {"wide slash, a plain one once mapped", L"host\uFF0Fx", false},
      {"zone that ends the host", L"fe80::1%]/x", false},
      {"zone that is empty", L"fe80::1%", false},
  };
  for (const auto& row : kHosts) {
    Host::NetworkOptions options;
    options.host = row.host;
    const Owned<Address> address(Host::CreateNetworkAddress(options));
    EXPECT_EQ(address != nullptr, row.accepted) << row.name;
    EXPECT_STREQ(address ? address->GetAddress() : row.host, row.host) << row.name;
  }
  Host::NetworkOptions options;
  options.host = L"127.0.0.1";
  options.portMap = {{80, 65536}};
  EXPECT_EQ(Host::CreateNetworkAddress(options), nullptr);
  options.portMap.clear();
  options.totalTimeoutMs = 0;
  EXPECT_EQ(Host::CreateNetworkAddress(options), nullptr);
}

}  // namespace
}  // namespace Corvane::Test
