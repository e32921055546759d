// Devices that keep to no rule: every exchange ends in time, with its code.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <future>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/host/exchange.h"
#include "tests/support/hr.h"
#include "tests/support/loopback_server.h"

namespace Corvane::Test {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::string_literals;

constexpr auto kInTime = std::chrono::milliseconds(5'000);  // with a sanitizer on a busy machine
const std::string kOk = "HTTP/1.1 200 OK\r\n";
const std::string kChunked = kOk + "Transfer-Encoding: chunked\r\n\r\n";
const std::string kInterim = "HTTP/1.1 100 Continue\r\n\r\n";

std::string WithLength(const std::string& length, const std::string& body) {
  return kOk + "Content-Length: " + length + "\r\n\r\n" + body;
}

LoopbackServer::Script Endless(std::string start, std::string piece, int pauseMs = 0) {
  return [=](LoopbackConnection& connection) {
    connection.ReadRequest();
    connection.Send(start);
    while (connection.Send(piece) && (pauseMs == 0 || connection.Pause(pauseMs))) {
    }
  };
}

LoopbackServer::Script AnswerAndClose(std::string response, bool half = false) {
  return [=](LoopbackConnection& connection) {
    connection.ReadRequest();
    connection.Send(response);
    if (!half) return;
    connection.HalfClose();
    connection.WaitForClose();
  };
}

Exchanged ExchangeInTime(Host::NetworkOptions options,
                         const std::function<void(HTTPRequest*)>& configure = {}) {
  const Clock::time_point start = Clock::now();
  Exchanged seen = Exchange(NetworkDevice(options), L"/x", configure);
  EXPECT_LT(Clock::now() - start, kInTime);
  return seen;
}

TEST(MisbehavingDevice, EndsAtTheTotalTimeout) {
  const std::pair<const char*, LoopbackServer::Script> kCases[] = {
      {"silent", [](LoopbackConnection& connection) { connection.WaitForClose(); }},
      {"silent after half a header", LoopbackServer::Answer(kOk + "Conte")},
      {"silent after half a body", LoopbackServer::Answer(WithLength("9", "half"))},
      {"drips its header", Endless(kOk + "A: ", "x", 50)},
      {"drips its body", Endless(WithLength("999", ""), "x", 50)},
      {"drips chunks", Endless(kChunked, "1\r\nx\r\n", 50)},
      {"drips interim responses", Endless("", kInterim, 50)},
      {"challenges for ever", Endless("HTTP/1.1 401 No\r\nWWW-Authenticate: Basic\r\n"
                                      "Transfer-Encoding: chunked\r\n\r\n",
                                      "1\r\nx\r\n", 50)}};
  for (const auto& [name, script] : kCases) {
    SCOPED_TRACE(name);
    LoopbackServer server(script);
    Host::NetworkOptions options = LoopbackOptions(server.Port());
    options.totalTimeoutMs = 400;
    options.userName = L"admin";
    options.basicInClear = true;
    const Exchanged seen = ExchangeInTime(options);
    EXPECT_HR(seen.result, static_cast<HRESULT>(0x80072EE2));
    EXPECT_EQ(seen.error, 12002U);
    EXPECT_EQ(seen.status, 0U);
    EXPECT_EQ(seen.failure, L"GET http://127.0.0.1:" + std::to_wstring(server.Port()) +
                                L"/x: timed out after 400 ms");
  }
}

TEST(MisbehavingDevice, FailsWithTheCodeOfItsFault) {
  const std::string megabyte(1 << 20, 'x');
  std::vector<std::tuple<std::string, LoopbackServer::Script, std::uint32_t>> cases = {
      {"closes at once", [](LoopbackConnection&) {}, 12030},
      {"closes without an answer", AnswerAndClose(""), 12030},
      {"closes in the header", AnswerAndClose(kOk + "Content-Le"), 12030},
      {"closes behind a header line", AnswerAndClose(kOk + "Content-Length: 0\r\n"), 12030},
      {"closes in the body", AnswerAndClose(WithLength("10", "half")), 12030},
      {"half-closes in the body", AnswerAndClose(WithLength("10", "half"), true), 12030},
      {"closes between chunks", AnswerAndClose(kChunked + "1\r\nx\r\n"), 12030},
      {"HTTP/0.9", AnswerAndClose("<html>plain</html>\n"), 12152},
      {"header lines without end", Endless(kOk, "Name: value\r\n"), 12183},
      {"a header line without end", Endless(kOk + "Name: ", "value"), 12183},
      {"a status line without end", Endless("HTTP/1.1 200 ", "value"), 12183},
      {"interim responses without end", Endless("", kInterim), 12183},
      {"trailers without end", Endless(kChunked + "0\r\n", "Name: value\r\n"), 12183},
      {"body without end", Endless(kOk + "\r\n", megabyte), 12184},
      {"chunks without end", Endless(kChunked, "100000\r\n" + megabyte + "\r\n"), 12184}};
  const std::pair<std::string, std::uint32_t> kAnswers[] = {
      {kChunked + "zz\r\nx\r\n", 12030},
      {kChunked + "FFFFFFFFFFFFFFFFFF\r\nx\r\n", 12030},
      {kChunked + "1\r\nxyz\r\n0\r\n\r\n", 12030},
      {WithLength("many", "x"), 12152},
      {WithLength("-1", "x"), 12152},
      {WithLength("1\r\nContent-Length: 2", "xy"), 12152},
      {kOk + "Transfer-Encoding: odd\r\n\r\nx", 12152},
      {WithLength("1\r\nContent-Encoding: gzip", "x"), 12152},
      {kOk + "A: b\r\n c\r\n\r\n", 12152},
      {kOk + "Content-Length : 1\r\n\r\nx", 12152},
      {kOk + "A: b\0c\r\n\r\n"s, 12152},
      {"SSH-2.0-device\r\n", 12152},
      {WithLength("209715200", "x"), 12184},
      {WithLength("99999999999999999999", "x"), 12184}};
  for (const auto& [text, error] : kAnswers) {
    cases.emplace_back(text, LoopbackServer::Answer(text), error);
  }
  for (const auto& [name, script, error] : cases) {
    SCOPED_TRACE(name);
    LoopbackServer server(script);
    const Exchanged seen = ExchangeInTime(LoopbackOptions(server.Port()));
    EXPECT_HR(seen.result, static_cast<HRESULT>(0x80070000U | error));
    EXPECT_EQ(seen.error, error) << testing::PrintToString(seen.failure);
    EXPECT_EQ(seen.status, 0U);
    EXPECT_NE(seen.failure, L"");
  }
}

TEST(MisbehavingDevice, ToleratesWhatLeavesNoDoubt) {
  const std::tuple<const char*, LoopbackServer::Script, std::string> kCases[] = {
      {"NUL bytes", LoopbackServer::Answer(WithLength("3", "a\0b"s)), "a\0b"s},
      {"body ends with the connection", AnswerAndClose("HTTP/1.0 200 OK\r\n\r\nbody", true),
       "body"},
      {"bare line feeds", LoopbackServer::Answer("HTTP/1.1 200 OK\nContent-Length: 1\n\nx"), "x"},
      {"one length twice", LoopbackServer::Answer(WithLength("1\r\nContent-Length: 1", "x")), "x"},
      {"interim response", LoopbackServer::Answer(kInterim + WithLength("1", "x")), "x"},
      {"trailers change nothing",
       LoopbackServer::Answer(kChunked + "1\r\nx\r\n0\r\nContent-Type: a/b\r\n\r\n"), "x"}};
  for (const auto& [name, script, body] : kCases) {
    SCOPED_TRACE(name);
    LoopbackServer server(script);
    const Exchanged seen = ExchangeInTime(LoopbackOptions(server.Port()));
    EXPECT_HR(seen.result, S_OK) << testing::PrintToString(seen.failure);
    EXPECT_EQ(seen.body, body);
    EXPECT_EQ(seen.contentType, L"");
  }
}

// The next request must not read what a device sent too much as its own response.
TEST(MisbehavingDevice, DropsConnectionsOfDoubtfulFraming) {
  const std::string smuggled = WithLength("7", "foreign");
  const std::string kResponses[] = {
      WithLength("1", "x") + smuggled,
      kOk + "Content-Length: 1\r\nTransfer-Encoding: chunked\r\n\r\n1\r\nx\r\n0\r\n\r\n",
      kChunked + "1\r\nx\r\n0\r\n\r\n" + smuggled, "HTTP/1.1 204 None\r\n\r\n" + smuggled};
  for (const std::string& response : kResponses) {
    LoopbackServer server([&response](LoopbackConnection& connection) {
      connection.ReadRequest();
      connection.Send(connection.m_number == 1 ? response : WithLength("3", "new"));
      connection.WaitForClose();
    });
    Host::NetworkOptions options = LoopbackOptions(server.Port());
    options.totalTimeoutMs = 3'000;
    const Owned<Address> address = NetworkDevice(options);
    Exchange(address, L"/");
    EXPECT_EQ(Exchange(address, L"/").body, "new") << response;
  }
}

// As a device does that closes an idle connection with 408.
TEST(MisbehavingDevice, TakesNoAnswerThatCameBeforeItsRequest) {
  std::promise<void> sent;
  LoopbackServer server([&sent](LoopbackConnection& connection) {
    connection.ReadRequest();
    connection.Send(WithLength("3", "new"));
    if (connection.m_number == 1) {
      connection.Pause(20);  // behind the answer, in a packet of its own
      connection.Send("HTTP/1.1 408 Late\r\nContent-Length: 7\r\n\r\nforeign");
      sent.set_value();
    }
    connection.WaitForClose();
  });
  const Owned<Address> address = NetworkDevice(LoopbackOptions(server.Port()));
  Exchange(address, L"/");
  sent.get_future().wait();
  const Exchanged seen = Exchange(address, L"/");
  EXPECT_EQ(seen.body, "new");
  EXPECT_EQ(seen.status, 200U);
}

TEST(MisbehavingDevice, EndsConnectingAtItsOwnTimeout) {
  // Nobody accepts: once the queue is full, the system answers no further connection.
  std::uint16_t port = 0;
  const int listener = ListenOnLoopback(0, &port);
  sockaddr_storage address{};
  socklen_t size = sizeof(address);
  getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
  std::vector<int> waiting;
  for (int i = 0; i < 8; ++i) {
    waiting.push_back(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    connect(waiting.back(), reinterpret_cast<sockaddr*>(&address), size);
  }
  Host::NetworkOptions options = LoopbackOptions(port);
  options.connectTimeoutMs = 300;
  const Exchanged seen = ExchangeInTime(options);
  EXPECT_EQ(seen.error, 12002U);
  EXPECT_TRUE(seen.failure.ends_with(L": no connection within 300 ms"))
      << testing::PrintToString(seen.failure);
  for (const int socket : waiting) close(socket);
  close(listener);
}

TEST(MisbehavingDevice, TellsWhatCannotBeReached) {
  std::uint16_t port = 0;
  close(ListenOnLoopback(0, &port));
  Host::NetworkOptions options = LoopbackOptions(port);
  EXPECT_EQ(ExchangeInTime(options).error, 12029U);
  options.host = L"device.invalid";  // RFC 2606, 2: resolves nowhere
  options.totalTimeoutMs = 3'000;
  const std::uint32_t error = ExchangeInTime(options).error;
  EXPECT_TRUE(error == 12007U || error == 12002U) << error;  // a network without a resolver: late
}

TEST(MisbehavingDevice, CancelEndsAnExchange) {
  std::promise<void> arrived;
  LoopbackServer server([&arrived](LoopbackConnection& connection) {
    connection.ReadRequest();
    arrived.set_value();
    connection.WaitForClose();
  });
  const Host::NetworkOptions options = LoopbackOptions(server.Port());
  std::thread canceller;
  const Exchanged seen = ExchangeInTime(options, [&](HTTPRequest* request) {
    request->AddRef();
    canceller = std::thread([&arrived, request] {
      arrived.get_future().wait();
      request->Cancel();
      request->Dispose();
    });
  });
  canceller.join();
  EXPECT_EQ(seen.error, 12017U);
  EXPECT_EQ(ExchangeInTime(options, [](HTTPRequest* r) { r->Cancel(); }).error, 12017U);
}

}  // namespace
}  // namespace Corvane::Test
