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

#include "corvane/error_codes.h"
#include "tests/host/streaming.h"
#include "tests/support/hr.h"
#include "tests/support/peers/loopback_server.h"

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

// The body of every request here, and the end of a chunked one.
const std::string kBody = kLastChunk;

void TakeRequest(LoopbackConnection& connection) {
  connection.ReadThrough("\r\n\r\n");
  connection.ReadThrough(kBody);
}

LoopbackServer::Script Endless(std::string start, std::string piece, int pauseMs = 0) {
  return [=](LoopbackConnection& connection) {
    TakeRequest(connection);
    connection.Send(start);
    while (connection.Send(piece) && (pauseMs == 0 || connection.Pause(pauseMs))) {
    }
  };
}

LoopbackServer::Script Answer(std::string response) {
  return [=](LoopbackConnection& connection) {
    TakeRequest(connection);
    connection.Send(response);
    connection.WaitForClose();
  };
}

LoopbackServer::Script AnswerAndClose(std::string response, bool half = false) {
  return [=](LoopbackConnection& connection) {
    TakeRequest(connection);
    connection.Send(response);
    if (!half) return;
    connection.HalfClose();
    connection.WaitForClose();
  };
}

Exchanged ExchangeInTime(const Way& way, const Host::NetworkOptions& options,
                         const std::string& body = kBody, std::uint32_t silenceMs = 0) {
  const Clock::time_point start = Clock::now();
  Exchanged seen = way.exchange(NetworkDevice(options), 631, body, silenceMs);
  EXPECT_LT(Clock::now() - start, kInTime);
  EXPECT_EQ(seen.failure.find(L"secret"), std::wstring::npos);
  return seen;
}

TEST(MisbehavingDevice, EndsAtTheTotalTimeout) {
  const std::pair<const char*, LoopbackServer::Script> kCases[] = {
      {"silent", [](LoopbackConnection& connection) { connection.WaitForClose(); }},
      {"silent after half a header", Answer(kOk + "Conte")},
      {"silent after half a body", Answer(WithLength("9", "half"))},
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
    Host::NetworkOptions options = PrinterOptions(server.Port());
    options.totalTimeoutMs = 400;
    options.userName = L"admin";
    options.basicInClear = true;
    const Exchanged seen = ExchangeInTime(kWays[0], options);
    EXPECT_HR(seen.result, ResultFromError(kErrorTimeout));
    EXPECT_EQ(seen.error, kErrorTimeout);
    EXPECT_EQ(seen.status, 0U);
    EXPECT_EQ(seen.failure, L"POST http://127.0.0.1:" + std::to_wstring(server.Port()) +
                                L"/x: timed out after 400 ms");
  }
}

// A document may take any time in all.
TEST(MisbehavingDevice, EndsAtTheLimitOfADocument) {
  const LoopbackServer::Script kTakesNothing = [](LoopbackConnection& connection) {
    connection.Pause(10'000);
  };
  const LoopbackServer::Script kTakesNothingAndDrips = [](LoopbackConnection& connection) {
    while (connection.Send(kInterim) && connection.Pause(50)) {
    }
  };
  const struct {
    const char* name;
    LoopbackServer::Script script;
    std::uint32_t silenceMs, totalMs;
    std::wstring failure;
    bool taken = true;
  } kCases[] = {
      {"takes nothing", kTakesNothing, 300, 60'000, L"the device took nothing for 300 ms", false},
      {"takes nothing, and drips interim responses", kTakesNothingAndDrips, 300, 60'000,
       L"the device took nothing for 300 ms", false},
      {"silent", Answer(""), 300, 60'000, L"the device was silent for 300 ms"},
      {"silent by the device's limit", Answer(""), 0, 300, L"no whole response within 300 ms"},
      {"half a body", Answer(WithLength("9", "half")), 300, 60'000,
       L"the device was silent for 300 ms"},
      {"drips its body", Endless(kOk + "\r\n", "x", 50), 600, 300,
       L"no whole response within 600 ms"},
      {"drips chunks", Endless(kChunked, "1\r\nx\r\n", 50), 0, 600,
       L"no whole response within 600 ms"},
      {"drips interim responses", Endless("", kInterim, 50), 600, 1'500,
       L"no whole response within 1500 ms"}};
  const std::string large(20 << 20, 'x');  // no socket buffers take it
  for (const auto& row : kCases) {
    for (const Way& way : {kWays[1], kWays[2]}) {
      SCOPED_TRACE(std::string(row.name) + ", " + way.name);
      LoopbackServer server(row.script);
      Host::NetworkOptions options = PrinterOptions(server.Port());
      options.totalTimeoutMs = row.totalMs;
      const Clock::time_point start = Clock::now();
      const Exchanged seen = ExchangeInTime(way, options, row.taken ? kBody : large, row.silenceMs);
      EXPECT_GT(Clock::now() - start, std::chrono::milliseconds(250));
      EXPECT_EQ(seen.error, kErrorTimeout);
      EXPECT_HR(seen.result, row.taken ? kAnswerLost : ResultFromError(kErrorTimeout));
      EXPECT_EQ(seen.failure, L"POST http://127.0.0.1:" + std::to_wstring(server.Port()) +
                                  L"/ipp: " + row.failure);
    }
  }
}

TEST(MisbehavingDevice, FailsWithTheCodeOfItsFault) {
  const std::string megabyte(1 << 20, 'x');
  std::vector<std::tuple<std::string, LoopbackServer::Script, std::uint32_t>> cases = {
      {"closes at once", [](LoopbackConnection&) {}, kErrorConnection},
      {"closes without an answer", AnswerAndClose(""), kErrorConnection},
      {"closes in the header", AnswerAndClose(kOk + "Content-Le"), kErrorConnection},
      {"closes behind a header line", AnswerAndClose(kOk + "Content-Length: 0\r\n"),
       kErrorConnection},
      {"closes in the body", AnswerAndClose(WithLength("10", "half")), kErrorConnection},
      {"half-closes in the body", AnswerAndClose(WithLength("10", "half"), true), kErrorConnection},
      {"closes between chunks", AnswerAndClose(kChunked + "1\r\nx\r\n"), kErrorConnection},
      {"HTTP/0.9", AnswerAndClose("<html>plain</html>\n"), kErrorInvalidResponse},
      {"header lines without end", Endless(kOk, "Name: value\r\n"), kErrorHeaderTooLarge},
      {"a header line without end", Endless(kOk + "Name: ", "value"), kErrorHeaderTooLarge},
      {"a status line without end", Endless("HTTP/1.1 200 ", "value"), kErrorHeaderTooLarge},
      {"interim responses without end", Endless("", kInterim), kErrorHeaderTooLarge},
      {"trailers without end", Endless(kChunked + "0\r\n", "Name: value\r\n"),
       kErrorHeaderTooLarge},
      {"body without end", Endless(kOk + "\r\n", megabyte), kErrorResponseTooLarge},
      {"chunks without end", Endless(kChunked, "100000\r\n" + megabyte + "\r\n"),
       kErrorResponseTooLarge}};
  const std::pair<std::string, std::uint32_t> kAnswers[] = {
      {kChunked + "zz\r\nx\r\n", kErrorInvalidResponse},
      {kChunked + "FFFFFFFFFFFFFFFFFF\r\nx\r\n", kErrorInvalidResponse},
      {kChunked + "1\r\nxyz\r\n0\r\n\r\n", kErrorInvalidResponse},
      {WithLength("many", "x"), kErrorInvalidResponse},
      {WithLength("-1", "x"), kErrorInvalidResponse},
      {WithLength("1\r\nContent-Length: 2", "xy"), kErrorInvalidResponse},
      {WithLength("1\r\nTransfer-Encoding: chunked", "1\r\nx\r\n0\r\n\r\n"), kErrorInvalidResponse},
      {kOk + "Transfer-Encoding: odd\r\n\r\nx", kErrorInvalidResponse},
      {WithLength("1\r\nContent-Encoding: gzip", "x"), kErrorInvalidResponse},
      {kOk + "A: b\r\n c\r\n\r\n", kErrorInvalidResponse},
      {kOk + "Content-Length : 1\r\n\r\nx", kErrorInvalidResponse},
      {kOk + "A: b\0c\r\n\r\n"s, kErrorInvalidResponse},
      {"SSH-2.0-device\r\n", kErrorInvalidResponse},
      {WithLength("209715200", "x"), kErrorResponseTooLarge},
      {WithLength("99999999999999999999", "x"), kErrorResponseTooLarge}};
  for (const auto& [text, error] : kAnswers) {
    cases.emplace_back(text, Answer(text), error);
  }
  for (const auto& [name, script, error] : cases) {
    for (const Way& way : kWays) {
      SCOPED_TRACE(name + ", " + way.name);
      LoopbackServer server(script);
      const Exchanged seen = ExchangeInTime(way, PrinterOptions(server.Port()));
      EXPECT_TRUE(seen.result == ResultFromError(error) || seen.result == kAnswerLost)
          << HrText(seen.result);
      EXPECT_EQ(seen.error, error) << testing::PrintToString(seen.failure);
      EXPECT_EQ(seen.status, 0U);
      EXPECT_NE(seen.failure, L"");
    }
  }
}

TEST(MisbehavingDevice, ToleratesWhatLeavesNoDoubt) {
  const std::tuple<const char*, LoopbackServer::Script, std::string> kCases[] = {
      {"NUL bytes", Answer(WithLength("3", "a\0b"s)), "a\0b"s},
      {"body ends with the connection", AnswerAndClose("HTTP/1.0 200 OK\r\n\r\nbody", true),
       "body"},
      {"bare line feeds", Answer("HTTP/1.1 200 OK\nContent-Length: 1\n\nx"), "x"},
      {"one length twice", Answer(WithLength("1\r\nContent-Length: 1", "x")), "x"},
      {"interim responses",
       [](LoopbackConnection& connection) {
         connection.Send(kInterim);
         Answer(kInterim + WithLength("1", "x"))(connection);
       },
       "x"},
      {"trailers change nothing", Answer(kChunked + "1\r\nx\r\n0\r\nContent-Type: a/b\r\n\r\n"),
       "x"}};
  for (const auto& [name, script, body] : kCases) {
    for (const Way& way : kWays) {
      SCOPED_TRACE(std::string(name) + ", " + way.name);
      LoopbackServer server(script);
      const Exchanged seen = ExchangeInTime(way, PrinterOptions(server.Port()));
      EXPECT_HR(seen.result, S_OK) << testing::PrintToString(seen.failure);
      EXPECT_EQ(seen.body, body);
      EXPECT_EQ(seen.contentType, L"");
    }
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
  Host::NetworkOptions options = PrinterOptions(port);
  options.connectTimeoutMs = 300;
  for (const Way& way : kWays) {
    const Exchanged seen = ExchangeInTime(way, options);
    EXPECT_EQ(seen.error, kErrorTimeout) << way.name;
    EXPECT_TRUE(seen.failure.ends_with(L": no connection within 300 ms"))
        << testing::PrintToString(seen.failure);
  }
  for (const int socket : waiting) close(socket);
  close(listener);
}

TEST(MisbehavingDevice, TellsWhatCannotBeReached) {
  std::uint16_t port = 0;
  close(ListenOnLoopback(0, &port));
  for (const Way& way : kWays) {
    Host::NetworkOptions options = PrinterOptions(port);
    EXPECT_EQ(ExchangeInTime(way, options).error, kErrorCannotConnect) << way.name;
    options.host = L"device.invalid";  // RFC 2606, 2: resolves nowhere
    options.connectTimeoutMs = 3'000;
    const std::uint32_t error = ExchangeInTime(way, options).error;
    // A network without a resolver is late.
    EXPECT_TRUE(error == kErrorNameNotResolved || error == kErrorTimeout) << error;
  }
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
  const Exchanged seen = Exchange(NetworkDevice(options), L"/x", [&](HTTPRequest* request) {
    request->AddRef();
    canceller = std::thread([&arrived, request] {
      arrived.get_future().wait();
      request->Cancel();
      request->Dispose();
    });
  });
  canceller.join();
  EXPECT_EQ(seen.error, kErrorCancelled);
  EXPECT_EQ(Exchange(NetworkDevice(options), L"/x", [](HTTPRequest* r) { r->Cancel(); }).error,
            kErrorCancelled);
}

}  // namespace
}  // namespace Corvane::Test
