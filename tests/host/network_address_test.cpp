// The address on the network against a real nginx.
#include "host/network_address.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/host/exchange.h"
#include "tests/support/cases.h"
#include "tests/support/peers/loopback_server.h"
#include "tests/support/peers/nginx.h"

namespace Corvane::Test {
namespace {

// Of the certificates, by the program openssl.
const std::string kStranger = "sha256//PVV0o3kXyJHZYEgr72n6GTel6H6KrO4fkxjjce/nArs=";
const std::string kDevice = "sha256//gqFTzUIELy6hjtOshqcXRiBmYF1qy3+XtmPDfEzY6Wc=";

// nginx, and a printer behind it.
struct Servers {
  Servers() {
    const TempFolder& folder = nginx.Folder();
    folder.Write("root/tree.xml", "<tree/>");
    folder.Write("root/bytes", std::string(100'000, 'x'));
    folder.Write("passwords", "admin:{PLAIN}pass.word\n");
    std::string servers = ReadData("host/nginx.conf");
    for (std::size_t at; (at = servers.find("@PRINTER@")) != servers.npos;) {
      servers.replace(at, 9, std::to_string(printer.Port()));
    }
    for (const std::string name : {"device.pem", "stranger.pem"}) {
      folder.Write(name, ReadData("host/" + name));
    }
    areReady = nginx.Start(servers, 4);
  }
  LoopbackServer printer{
      LoopbackServer::AnswerEach("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok")};
  Nginx nginx;
  bool areReady = false;
};

Servers& TheServers() {
  static Servers servers;
  return servers;
}

struct NetworkAddress : testing::Test {
  void SetUp() override {
    ASSERT_TRUE(TheServers().areReady) << m_nginx.Failure();
    m_options = LoopbackOptions(m_nginx.Port(0));
    m_options.tlsPorts.insert(kWsPort);
    m_options.portMap[kIppsPort] = m_nginx.Port(1);
    m_options.caFile = (m_folder.Path() / "device.pem").string();
  }

  // What is told of an exchange that sends the device nothing.
  std::string Refusal(const std::string& way, const Owned<Address>& address) {
    const std::size_t before = m_printer.Requests().size();
    const Exchanged seen = ExchangeBy(way, address, kIppsPort, "document");
    EXPECT_EQ(seen.error, kErrorSecureFailure);
    EXPECT_EQ(m_printer.Requests().size(), before);
    return ToUtf8(seen.failure);
  }
  void ShowCertificate(const std::string& name) const {
    m_folder.Write("now", m_folder.Read(name));
  }
  // Knows keys by a file that says this at first. Its line for the device begins so.
  std::string PinKeys(const std::string& content) {
    ShowCertificate("stranger.pem");
    m_options.portMap[kIppsPort] = m_nginx.Port(3);
    m_options.pinFile = m_folder.Write("pins", content).string();
    return "127.0.0.1:" + std::to_string(m_nginx.Port(3));
  }

  const Nginx& m_nginx = TheServers().nginx;
  const TempFolder& m_folder = m_nginx.Folder();
  LoopbackServer& m_printer = TheServers().printer;
  Host::NetworkOptions m_options;
};

TEST_F(NetworkAddress, BringsEveryByteInEveryWay) {
  std::string document(8 << 20, '\0');
  std::minstd_rand generator(1);
  for (char& c : document) c = static_cast<char>(generator() >> 8);
  for (const std::string way : kWays) {
    SCOPED_TRACE(way);
    const Owned<Address> address = NetworkDevice(m_options);
    address->SetUserName(L"admin");
    address->SetPassword(L"word");
    const std::size_t before = m_printer.Requests().size();
    const Exchanged refused = ExchangeBy(way, address, kIppsPort, document);
    EXPECT_EQ(refused.status, 401U) << testing::PrintToString(refused.failure);
    EXPECT_EQ(refused.failure.find(L"word"), std::wstring::npos);
    EXPECT_EQ(m_printer.Requests().size(), before);
    address->SetPassword(L"pass.word");
    EXPECT_EQ(Told(ExchangeBy(way, address, kIppsPort, document)), "200 ok");
    EXPECT_TRUE(m_printer.Requests().back().ends_with("\r\n\r\n" + document));
  }
}

TEST_F(NetworkAddress, TrustsOnlyTheCertificatesThatItIsGiven) {
  for (const Case& c : ReadCases("host/certificates.txt")) {
    SCOPED_TRACE(c.Where() + " " + c.Text("name"));
    const std::string file = c.Text("trusted");
    const auto error = static_cast<std::uint32_t>(c.Number("error"));
    m_options.caFile = file == "-" ? "" : (m_folder.Path() / file).string();
    m_options.verifyCertificates = c.Text("verifies") == "yes";
    m_options.portMap[kWsPort] = m_options.portMap[kIppsPort] =
        m_nginx.Port(static_cast<std::size_t>(c.Number("server")));
    const Owned<Address> address = NetworkDevice(m_options);
    const Exchanged seen = Exchange(address, L"/tree.xml", {}, kWsPort);
    EXPECT_EQ(seen.error, error) << testing::PrintToString(seen.failure);
    EXPECT_EQ(seen.body, error == 0 ? "<tree/>" : "");
    EXPECT_HR(PrinterRequest(address, 443).Begin(), error == 0 ? S_OK : ResultFromError(error));
  }
}

TEST_F(NetworkAddress, TrustsTheFirstKeyAndNoOther) {
  for (const std::string way : kWays) {
    SCOPED_TRACE(way);
    const std::string name = PinKeys("# office");  // and no line end
    const std::string pinned = "# office\n" + name + ' ' + kStranger + '\n';
    for (const char* const use : {"first use", "second use"}) {
      EXPECT_EQ(Told(ExchangeBy(way, NetworkDevice(m_options), kIppsPort, "document")), "200 ok")
          << use;
      EXPECT_EQ(m_folder.Read("pins"), pinned) << use;
    }
    ShowCertificate("device.pem");  // which the address would trust without
    const std::string told = Refusal(way, NetworkDevice(m_options));
    EXPECT_TRUE(told.ends_with(
        ": the key of " + name + " has changed from " + kStranger + " to " + kDevice +
        "; where the device is known to have a new one, remove line 2 of " + m_options.pinFile))
        << told;
    EXPECT_EQ(m_folder.Read("pins"), pinned);
  }
}

TEST_F(NetworkAddress, HoldsAnOpenConnectionToTheFileOfKeysToo) {
  const std::string name = PinKeys("");
  const Owned<Address> address = NetworkDevice(m_options);
  EXPECT_EQ(Told(ExchangeBy("plain", address, kIppsPort, "document")), "200 ok");
  m_folder.Write("pins", name + ' ' + kDevice + '\n');
  Refusal("plain", address);
  m_options.pinFile = (m_folder.Path() / "absent/pins").string();
  const std::string told = Refusal("plain", NetworkDevice(m_options));
  EXPECT_TRUE(told.ends_with("cannot be written: No such file or directory")) << told;
}

TEST_F(NetworkAddress, ManyThreadsShareAnAddress) {
  const Owned<Address> address = NetworkDevice(m_options);
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&address, i] {
      for (int round = 0; round < 10; ++round) {
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

TEST_F(NetworkAddress, EnvironmentCannotDivertIt) {
  for (const char* const name : {"http_proxy", "all_proxy", "ALL_PROXY"}) {
    setenv(name, "http://127.0.0.1:1", 1);
    EXPECT_EQ(Exchange(NetworkDevice(m_options), L"/tree.xml").status, 200U) << name;
    unsetenv(name);
  }
}

TEST(NetworkAddressOptions, RefusesWhatNoDeviceHas) {
  const Host::NetworkOptions sound = LoopbackOptions(1);
  const Owned<Address> address = NetworkDevice(sound);
  EXPECT_STREQ(address->GetAddress(), L"127.0.0.1");
  EXPECT_EQ(address->GetMappedPort(kQuarnPort), 1U);
  EXPECT_EQ(address->GetMappedPort(9), 9U);
  EXPECT_HR(address->SetTimeouts(0, 1), E_INVALIDARG);
  EXPECT_HR(address->SetTimeouts(1, 0), E_INVALIDARG);
  Host::NetworkOptions bad[] = {sound, sound, sound};
  bad[0].host = L"user@host";
  bad[1].portMap = {{kHttpPort, 65536}};
  bad[2].totalTimeoutMs = 0;
  for (const Host::NetworkOptions& options : bad) EXPECT_EQ(NetworkDevice(options), nullptr);
}

}  // namespace
}  // namespace Corvane::Test
