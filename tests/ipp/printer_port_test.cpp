// Providers over the reference host, and printers on the ports that are looked for: 631 and 80
// (Linux).
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <atomic>
#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "corvane/error_codes.h"
#include "corvane/handles.h"
#include "corvane/ipp_provider.h"
#include "host/network_address.h"
#include "platform/system.h"
#include "tests/ipp/decoded.h"
#include "tests/support/hr.h"
#include "tests/support/ipp_bytes.h"
#include "tests/support/peers/loopback_server.h"
#include "tests/support/peers/nginx.h"
#include "tests/support/peers/private_network.h"

namespace Corvane::Test {
namespace {

using namespace std::string_literals;
using Clock = std::chrono::steady_clock;
using Provider = RefPtr<IPPProvider>;

constexpr auto kInTime = std::chrono::seconds(8);  // with a sanitizer on a busy machine
constexpr DWORD kUntouched = 7;

const std::string kGood =
    IppResponse(LibraryAnswer(0, IppGroup(4) + IppValue(0x42, "printer-name", "p")));

class PrinterPort : public ::testing::Test {
 protected:
  void SetUp() override {
    if (const std::string failure = PrivateNetworkFailure(); !failure.empty()) {
      GTEST_SKIP() << failure;
    }
  }

  static RefPtr<Address> Device(const std::wstring& host) {
    Host::NetworkOptions options;
    options.host = host;
    options.maxResponseBytes = 100'000;
    return RefPtr<Address>::Adopt(Host::CreateNetworkAddress(options));
  }
};

TEST_F(PrinterPort, TellsWhyNoPrinterIsThere) {
  const std::string refusal =
      "HTTP/1.1 401 No\r\nWWW-Authenticate: Basic realm=\"p\"\r\nContent-Length: 0\r\n\r\n";
  static constexpr wchar_t kUri[] = L"ipp://printer/ipp/print";
  const struct {
    const char* name;
    const wchar_t* host;
    std::vector<std::uint16_t> open;
    const wchar_t* uri;
    DWORD error;
    std::string answer = kGood;
    int exchanges = 0;
  } cases[] = {
      {"web server alone", L"127.0.0.1", {80}, kUri, kIPPNotOnDevice},
      {"web server alone, IPv6", L"::1", {80}, kUri, kIPPNotOnDevice},
      {"nothing", L"127.0.0.1", {}, kUri, kIPPDeviceSilent},
      {"nothing, IPv6", L"::1", {}, kUri, kIPPDeviceSilent},
      {"host name", L"localhost", {80, 631}, kUri, kIPPDeviceSilent},
      {"other scheme", L"127.0.0.1", {631}, L"http://printer:631/ipp/print", kIPPInvalidArgument},
      {"other port", L"127.0.0.1", {631}, L"ipp://printer:9100/ipp/print", kIPPUnknownPort},
      {"short path", L"127.0.0.1", {631}, L"ipp://printer/ab", kIPPPathTooShort},
      {"no path", L"127.0.0.1", {631}, L"ipp://printer", kIPPNoResourcePath},
      {"refused", L"127.0.0.1", {631}, kUri, kIPPNotAuthorized, refusal, 1},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    const RefPtr<Address> device = Device(test.host);
    const int family = test.host == L"::1"s ? AF_INET6 : AF_INET;
    std::vector<std::unique_ptr<LoopbackServer>> servers;
    for (const std::uint16_t port : test.open) {
      servers.push_back(
          std::make_unique<LoopbackServer>(LoopbackServer::AnswerEach(test.answer), port, family));
    }
    SetLastError(kUntouched);
    EXPECT_FALSE(Provider::Adopt(CreateIPPPrintProvider(device.Get(), test.uri)));
    EXPECT_EQ(test.error, GetLastError());
    std::size_t exchanges = 0;
    for (const auto& server : servers) exchanges += server->Requests().size();
    EXPECT_EQ(static_cast<std::size_t>(test.exchanges), exchanges);
  }
}

TEST_F(PrinterPort, HasAPrinterByEitherFamily) {
  for (const wchar_t* const host : {L"127.0.0.1", L"::1"}) {
    const int family = host == L"::1"s ? AF_INET6 : AF_INET;
    LoopbackServer printer(LoopbackServer::AnswerEach(kGood), 631, family);
    const RefPtr<Address> device = Device(host);
    const auto provider = Provider::Adopt(CreateIPPProvider(device.Get(), "/ipp/print"));
    ASSERT_TRUE(provider) << GetLastError();
    _variant_t value;
    EXPECT_HR(provider->GetValue("printer-name", &value), S_OK);
    EXPECT_EQ("p", Shown(value));
    EXPECT_TRUE(printer.Requests().at(0).starts_with("POST /ipp/print HTTP/1.1\r\n"));
  }
}

// What the printer does with each connection on which a request comes; the probe sends none.
LoopbackServer::Script OnRequest(LoopbackServer::Script then) {
  return [=](LoopbackConnection& connection) {
    if (!connection.ReadRequest().empty()) then(connection);
  };
}

LoopbackServer::Script Endless(std::string start, std::string piece, int pauseMs = 0) {
  return [=](LoopbackConnection& connection) {
    connection.Send(start);
    while (connection.Send(piece) && (pauseMs == 0 || connection.Pause(pauseMs))) {
    }
  };
}

LoopbackServer::Script Saying(std::string answer) {
  return [=](LoopbackConnection& connection) {
    if (!answer.empty()) connection.Send(answer);
    connection.WaitForClose();
  };
}

LoopbackServer::Script ClosingAfter(std::string answer) {
  return [=](LoopbackConnection& connection) {
    if (!answer.empty()) connection.Send(answer);
  };
}

const std::string kOk = "HTTP/1.1 200 OK\r\n";

TEST_F(PrinterPort, IsNotMadeOfAPrinterThatKeepsToNoRule) {
  const std::string kilobyte(1024, 'x');
  const struct {
    const char* name;
    LoopbackServer::Script script;
    DWORD error;
  } cases[] = {
      {"closes at once", [](LoopbackConnection&) {}, kErrorConnection},
      {"closes after the request", OnRequest(ClosingAfter("")), kErrorConnection},
      {"closes in its answer", OnRequest(ClosingAfter(kGood.substr(0, kGood.size() - 3))),
       kErrorConnection},
      {"no HTTP", OnRequest(Saying("garbage\r\n\r\n" + kilobyte)), kErrorInvalidResponse},
      {"no IPP", OnRequest(Saying(IppResponse("<html>" + kilobyte))), kUntouched},
      {"no body", OnRequest(Saying(kOk + "Content-Length: 0\r\n\r\n")), 200},
      {"redirects",
       OnRequest(Saying("HTTP/1.1 302 No\r\nLocation: /x\r\nContent-Length: 0\r\n\r\n")), 302},
      {"header without end", OnRequest(Endless(kOk, "A: " + kilobyte + "\r\n")),
       kErrorHeaderTooLarge},
      {"body without end", OnRequest(Endless(kOk + "\r\n", kilobyte)), kErrorResponseTooLarge},
  };
  const RefPtr<Address> device = Device(L"127.0.0.1");
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    LoopbackServer printer(test.script, 631);
    const Clock::time_point start = Clock::now();
    SetLastError(kUntouched);
    EXPECT_FALSE(Provider::Adopt(CreateIPPPrintProvider(device.Get(), L"ipp://p/ipp/print")));
    EXPECT_EQ(test.error, GetLastError());
    EXPECT_LT(Clock::now() - start, kInTime);
  }
}

// What a printer refuses to tell is an answer, too: nothing is in it but the status.
TEST_F(PrinterPort, IsMadeOfAnIppError) {
  LoopbackServer printer(LoopbackServer::AnswerEach(IppResponse(LibraryAnswer(0x0506, ""))), 631);
  const RefPtr<Address> device = Device(L"127.0.0.1");
  const auto provider = Provider::Adopt(CreateIPPPrintProvider(device.Get(), L"ipp://p/ipp/print"));
  ASSERT_TRUE(provider) << GetLastError();
  _variant_t value(7L, VT_I4);
  EXPECT_HR(provider->GetValue("printer-name", &value), E_FAIL);
  EXPECT_EQ("nothing", Shown(value));
  EXPECT_HR(provider->GetValue("status-code", &value), S_OK);
  EXPECT_EQ("1286", Shown(value));
}

// Cancel-Job goes to port 631 in clear, for every printer.
TEST_F(PrinterPort, HearsNoCredentialsInClear) {
  LoopbackServer behindTls(LoopbackServer::AnswerEach(IppResponse(LibraryAnswer(
      0, IppGroup(2) + IppValue(0x45, "job-uri", "ipps://p/jobs/1") + IppNumber(0x21, "job-id", 1) +
             IppNumber(0x23, "job-state", 5) + IppValue(0x42, "job-originating-user-name", "anna") +
             IppValue(0x44, "job-state-reasons", "none")))));
  Nginx nginx;
  ASSERT_TRUE(nginx.MakeCertificate("device", "IP:127.0.0.1") &&
              nginx.Start("server {\n listen @PORT0@ ssl;\n ssl_certificate device.pem;\n"
                          " ssl_certificate_key device.key;\n location / { proxy_pass "
                          "http://127.0.0.1:" +
                              std::to_string(behindTls.Port()) + "; }\n}\n",
                          1))
      << nginx.Failure();
  for (const char* const scheme : {"Basic realm=\"p\"", "Digest realm=\"p\", nonce=\"n\""}) {
    LoopbackServer plain(LoopbackServer::AnswerEach("HTTP/1.1 401 No\r\nWWW-Authenticate: "s +
                                                    scheme + "\r\nContent-Length: 0\r\n\r\n"),
                         631);
    Host::NetworkOptions options;
    options.host = L"127.0.0.1";
    options.portMap[kIppsPort] = nginx.Port(0);
    options.caFile = (nginx.Folder().Path() / "device.pem").string();
    options.userName = L"admin";
    options.password = L"secret";
    const auto device = RefPtr<Address>::Adopt(Host::CreateNetworkAddress(options));
    const auto provider = Provider::Adopt(
        CreateSecureIPPPrintProvider(device.Get(), L"ipps://127.0.0.1/ipp/print", 0));
    ASSERT_TRUE(provider) << GetLastError() << device->GetLastFailure();
    const auto request = RefPtr<IPPRequestBase>::Adopt(CreateIPPRequest());
    const auto response = RefPtr<IPPResponseBase>::Adopt(CreateIPPResponse());
    request->SetRequestingUserName("anna");
    EXPECT_HR(provider->CancelJob(request.Get(), response.Get()), S_OK);
    const std::vector<std::string> requests = plain.Requests();
    ASSERT_EQ(requests.size(), 1U) << scheme;
    EXPECT_TRUE(requests[0].starts_with("POST /ipp/print ")) << requests[0];
    EXPECT_EQ(requests[0].find("Authorization"), std::string::npos) << requests[0];
  }
}

// The time-out of creation is not the caller's, that of later questions is.
TEST_F(PrinterPort, AsksNoLongerThanItsTimeout) {
  const std::pair<const char*, LoopbackServer::Script> kCases[] = {
      {"silent", Saying("")},
      {"silent in its body", Saying(kGood.substr(0, kGood.size() - 3))},
      {"drips its header", Endless(kOk + "A: ", "x", 50)},
      {"drips its body", Endless(kOk + "Content-Length: 9999\r\n\r\n", "x", 50)},
  };
  for (const auto& [name, script] : kCases) {
    SCOPED_TRACE(name);
    std::atomic<bool> isMade{false};
    LoopbackServer printer(
        [&, then = script](LoopbackConnection& connection) {
          while (!connection.ReadRequest().empty()) {
            if (isMade.load()) return then(connection);
            connection.Send(kGood);
          }
        },
        631);
    const RefPtr<Address> device = Device(L"127.0.0.1");
    const auto provider =
        Provider::Adopt(CreateIPPPrintProvider(device.Get(), L"ipp://p/ipp/print"));
    ASSERT_TRUE(provider) << GetLastError();
    isMade.store(true);
    provider->SetTimeouts(300, 400, 300);
    for (const bool forJob : {false, true}) {
      const Clock::time_point start = Clock::now();
      SetLastError(kUntouched);
      _variant_t value(7L, VT_I4);
      EXPECT_HR(
          provider->GetIPPValue("printer-name", forJob, &value, "ipp://p/ipp/print/1", nullptr, 0),
          E_FAIL);
      EXPECT_EQ(kErrorTimeout, GetLastError());
      EXPECT_EQ("nothing", Shown(value));
      EXPECT_LT(Clock::now() - start, kInTime);
    }
  }
}

}  // namespace
}  // namespace Corvane::Test
