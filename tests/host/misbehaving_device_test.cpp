// Devices that keep to no rule: every exchange ends in time, with its code.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "host/network_address.h"
#include "tests/host/exchange.h"
#include "tests/support/hr.h"
#include "tests/support/loopback_server.h"

namespace Corvane::Test {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::string_literals;

constexpr std::uint32_t kTotalMs = 400;
constexpr auto kInTime = std::chrono::milliseconds(5'000);  // with a sanitizer on a busy machine

Host::NetworkOptions OptionsFor(std::uint16_t port) {
  Host::NetworkOptions options;
  options.host = L"127.0.0.1";
  options.portMap = {{8080, port}};
  options.totalTimeoutMs = 20'000;
  return options;
}

LoopbackServer::Script Endless(std::string start, std::string piece, int pauseMs = 0) {
  return [=](LoopbackConnection& connection) {
    connection.ReadRequest();
    connection.Send(start);
    while (connection.Send(piece) && (pauseMs == 0 || connection.Pause(pauseMs))) {
    }
  };
}

LoopbackServer::Script AnswerAndClose(std::string response) {
  return [=](LoopbackConnection& connection) {
    connection.ReadRequest();
    connection.Send(response);
  };
}

LoopbackServer::Script AnswerAndHalfClose(std::string response) {
  return [=](LoopbackConnection& connection) {
    connection.ReadRequest();
    connection.Send(response);
    connection.HalfClose();
    connection.WaitForClose();
  };
}

constexpr char kChunked[] = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";

TEST(MisbehavingDevice, EndsAtTheTotalTimeout) {
  const struct {
    const char* name;
    LoopbackServer::Script script;
  } kCases[] = {
      {"silent", [](LoopbackConnection& connection) { connection.WaitForClose(); }},
      {"silent after half a header", LoopbackServer::Answer("HTTP/1.1 200 OK\r\nConte")},
      {"silent after half a body",
       LoopbackServer::Answer("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhalf")},
      {"drips its header", Endless("HTTP/1.1 200 OK\r\nA: ", "x", 50)},
      {"drips its body", Endless("HTTP/1.1 200 OK\r\nContent-Length: 999\r\n\r\n", "x", 50)},
      {"drips chunks", Endless(kChunked, "1\r\nx\r\n", 50)},
      {"drips interim responses", Endless("", "HTTP/1.1 100 Continue\r\n\r\n", 50)},
      {"challenges for ever", Endless("HTTP/1.1 401 No\r\nWWW-Authenticate: Basic\r\n"
                                      "Transfer-Encoding: chunked\r\n\r\n",
                                      "1\r\nx\r\n", 50)},
  };
  for (const auto& row : kCases) {
    LoopbackServer server(row.script);
    Host::NetworkOptions options = OptionsFor(server.Port());
    options.totalTimeoutMs = kTotalMs;
    options.userName = L"admin";
    const Owned<Address> address(Host::CreateNetworkAddress(options));
    const Clock::time_point start = Clock::now();
    const Exchanged seen = Exchange(address.get(), 8080, L"/x");
    EXPECT_LT(Clock::now() - start, kInTime) << row.name;
    EXPECT_HR(seen.result, static_cast<HRESULT>(0x80072EE2)) << row.name;
    EXPECT_EQ(seen.error, 12002U) << row.name;
    EXPECT_EQ(seen.status, 0U) << row.name;
    EXPECT_EQ(seen.failure, L"GET http://127.0.0.1:" + std::to_wstring(server.Port()) +
                                L"/x: timed out after 400 ms")
        << row.name;
  }
}

TEST(MisbehavingDevice, FailsWithTheCodeOfItsFault) {
  const std::string ok = "HTTP/1.1 200 OK\r\n";
  const std::string megabyte(1 << 20, 'x');
  const struct {
    const char* name;
    LoopbackServer::Script script;
    std::uint32_t error;
  } kCases[] = {
      {"closes at once", [](LoopbackConnection&) {}, 12030},
      {"closes without an answer", AnswerAndClose(""), 12030},
      {"closes in the header", AnswerAndClose("HTTP/1.1 200 OK\r\nContent-Le"), 12030},
      {"closes behind a header line", AnswerAndClose(ok + "Content-Length: 0\r\n"), 12030},
      {"closes in the body", AnswerAndClose(ok + "Content-Length: 10\r\n\r\nhalf"), 12030},
      {"half-closes in the body", AnswerAndHalfClose(ok + "Content-Length: 10\r\n\r\nhalf"), 12030},
      {"closes between chunks", AnswerAndClose(kChunked + "1\r\nx\r\n"s), 12030},
      {"chunk size is no number", LoopbackServer::Answer(kChunked + "zz\r\nx\r\n"s), 12030},
      {"chunk size overflows", LoopbackServer::Answer(kChunked + "FFFFFFFFFFFFFFFFFF\r\nx\r\n"s),
       12030},
      {"chunk longer than its size", LoopbackServer::Answer(kChunked + "1\r\nxyz\r\n0\r\n\r\n"s),
       12030},
      {"length is no number", LoopbackServer::Answer(ok + "Content-Length: many\r\n\r\nx"), 12152},
      {"negative length", LoopbackServer::Answer(ok + "Content-Length: -1\r\n\r\nx"), 12152},
      {"two lengths",
       LoopbackServer::Answer(ok + "Content-Length: 1\r\nContent-Length: 2\r\n\r\nxy"), 12152},
      {"unknown coding", LoopbackServer::Answer(ok + "Transfer-Encoding: odd\r\n\r\nx"), 12152},
      {"compressed unasked",
       LoopbackServer::Answer(ok + "Content-Encoding: gzip\r\nContent-Length: 1\r\n\r\nx"), 12152},
      {"folded header line", LoopbackServer::Answer(ok + "A: b\r\n c\r\n\r\n"), 12152},
      {"space before the colon", LoopbackServer::Answer(ok + "Content-Length : 1\r\n\r\nx"), 12152},
      {"NUL in the header", LoopbackServer::Answer(ok + "A: b\0c\r\n\r\n"s), 12152},
      {"HTTP/0.9", AnswerAndClose("<html>plain</html>\n"), 12152},
      {"another protocol", LoopbackServer::Answer("SSH-2.0-device\r\n"), 12152},
      {"header lines without end", Endless(ok, "Name: value\r\n"), 12183},
      {"a header line without end", Endless(ok + "Name: ", "value"), 12183},
      {"a status line without end", Endless("HTTP/1.1 200 ", "value"), 12183},
      {"interim responses without end", Endless("", "HTTP/1.1 100 Continue\r\n\r\n"), 12183},
      {"trailers without end", Endless(kChunked + "0\r\n"s, "Name: value\r\n"), 12183},
      {"body without end", Endless(ok + "\r\n", megabyte), 12184},
      {"chunks without end", Endless(kChunked, "100000\r\n" + megabyte + "\r\n"), 12184},
      {"200 MB announced", LoopbackServer::Answer(ok + "Content-Length: 209715200\r\n\r\nx"),
       12184},
      {"more than 2^64 announced",
       LoopbackServer::Answer(ok + "Content-Length: 99999999999999999999\r\n\r\nx"), 12184},
  };
  for (const auto& row : kCases) {
    LoopbackServer server(row.script);
    const Owned<Address> address(Host::CreateNetworkAddress(OptionsFor(server.Port())));
    const Clock::time_point start = Clock::now();
    const Exchanged seen = Exchange(address.get(), 8080, L"/");
    EXPECT_LT(Clock::now() - start, kInTime) << row.name;
    EXPECT_HR(seen.result, static_cast<HRESULT>(0x80070000U | row.error)) << row.name;
    EXPECT_EQ(seen.error, row.error) << row.name << testing::PrintToString(seen.failure);
    EXPECT_EQ(seen.status, 0U) << row.name;
    EXPECT_FALSE(seen.failure.empty()) << row.name;
  }
}

TEST(MisbehavingDevice, ToleratesWhatLeavesNoDoubt) {
  const std::string ok = "HTTP/1.1 200 OK\r\n";
  const struct {
    const char* name;
    LoopbackServer::Script script;
    std::string body;
  } kCases[] = {
      {"NUL bytes", LoopbackServer::Answer(ok + "Content-Length: 3\r\n\r\na\0b"s), "a\0b"s},
      {"body ends with the connection", AnswerAndHalfClose("HTTP/1.0 200 OK\r\n\r\nbody"), "body"},
      {"bare line feeds", LoopbackServer::Answer("HTTP/1.1 200 OK\nContent-Length: 1\n\nx"), "x"},
      {"the same length twice",
       LoopbackServer::Answer(ok + "Content-Length: 1\r\nContent-Length: 1\r\n\r\nx"), "x"},
      {"interim response",
       LoopbackServer::Answer("HTTP/1.1 100 Continue\r\nContent-Length: 9\r\n\r\n" + ok +
                              "Content-Length: 1\r\n\r\nx"),
       "x"},
      {"trailers change nothing",
       LoopbackServer::Answer(kChunked + "1\r\nx\r\n0\r\nContent-Type: a/b\r\n\r\n"s), "x"},
  };
  for (const auto& row : kCases) {
    LoopbackServer server(row.script);
    const Owned<Address> address(Host::CreateNetworkAddress(OptionsFor(server.Port())));
    const Exchanged seen = Exchange(address.get(), 8080, L"/");
    EXPECT_HR(seen.result, S_OK) << row.name << testing::PrintToString(seen.failure);
    EXPECT_EQ(seen.body, row.body) << row.name;
    EXPECT_EQ(seen.contentType, L"") << row.name;
  }
}

// The next request must not read what a device sent too much as its own response.
TEST(MisbehavingDevice, DropsConnectionsOfDoubtfulFraming) {
  const std::string smuggled = "HTTP/1.1 200 OK\r\nContent-Length: 7\r\n\r\nforeign";
  const struct {
    const char* name;
    std::string response;
  } kCases[] = {
      {"more than the length", "HTTP/1.1 200 OK\r\nContent-Length: 1\r\n\r\nx" + smuggled},
      {"chunked with a length too",
       "HTTP/1.1 200 OK\r\nContent-Length: 1\r\nTransfer-Encoding: "
       "chunked\r\n\r\n1\r\nx\r\n0\r\n\r\n"},
      {"more than the last chunk", kChunked + "1\r\nx\r\n0\r\n\r\n"s + smuggled},
      {"body with 204", "HTTP/1.1 204 None\r\n\r\n" + smuggled},
  };
  for (const auto& row : kCases) {
    LoopbackServer server([&row](LoopbackConnection& connection) {
      connection.ReadRequest();
      connection.Send(connection.m_number == 1 ? row.response
                                               : "HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nnew");
      connection.WaitForClose();
    });
    Host::NetworkOptions options = OptionsFor(server.Port());
    options.totalTimeoutMs = 3'000;
    const Owned<Address> address(Host::CreateNetworkAddress(options));
    Exchange(address.get(), 8080, L"/");
    EXPECT_EQ(Exchange(address.get(), 8080, L"/").body, "new") << row.name;
  }
}

// As a device does that closes an idle connection with 408.
TEST(MisbehavingDevice, TakesNoAnswerThatCameBeforeItsRequest) {
  std::promise<void> sent;
  LoopbackServer server([&sent](LoopbackConnection& connection) {
    connection.ReadRequest();
    connection.Send("HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nnew");
    if (connection.m_number == 1) {
      connection.Pause(20);  // behind the answer, in a packet of its own
      connection.Send("HTTP/1.1 408 Late\r\nContent-Length: 7\r\n\r\nforeign");
      sent.set_value();
    }
    connection.WaitForClose();
  });
  const Owned<Address> address(Host::CreateNetworkAddress(OptionsFor(server.Port())));
  Exchange(address.get(), 8080, L"/");
  sent.get_future().wait();
  const Exchanged seen = Exchange(address.get(), 8080, L"/");
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
  Host::NetworkOptions options = OptionsFor(port);
  options.connectTimeoutMs = 300;
  const Owned<Address> device(Host::CreateNetworkAddress(options));
  const Clock::time_point start = Clock::now();
  const Exchanged seen = Exchange(device.get(), 8080, L"/");
  EXPECT_LT(Clock::now() - start, kInTime);
  EXPECT_EQ(seen.error, 12002U);
  EXPECT_TRUE(seen.failure.ends_with(L": no connection within 300 ms"))
      << testing::PrintToString(seen.failure);
  for (const int socket : waiting) close(socket);
  close(listener);
}

TEST(MisbehavingDevice, TellsWhatCannotBeReached) {
  std::uint16_t port = 0;
  close(ListenOnLoopback(0, &port));
  Host::NetworkOptions options = OptionsFor(port);
  const Owned<Address> closed(Host::CreateNetworkAddress(options));
  EXPECT_EQ(Exchange(closed.get(), 8080, L"/").error, 12029U);
  options.host = L"device.invalid";  // RFC 2606, 2: resolves nowhere
  options.totalTimeoutMs = 3'000;
  const Owned<Address> nowhere(Host::CreateNetworkAddress(options));
  const std::uint32_t error = Exchange(nowhere.get(), 8080, L"/").error;
  EXPECT_TRUE(error == 12007U || error == 12002U) << error;  // a network without a resolver: late
}

TEST(MisbehavingDevice, CancelEndsAnExchange) {
  std::promise<void> arrived;
  LoopbackServer server([&arrived](LoopbackConnection& connection) {
    connection.ReadRequest();
    arrived.set_value();
    connection.WaitForClose();
  });
  const Owned<Address> address(Host::CreateNetworkAddress(OptionsFor(server.Port())));
  std::thread canceller;
  const Clock::time_point start = Clock::now();
  const Exchanged seen = Exchange(address.get(), 8080, L"/", [&](HTTPRequest* request) {
    request->AddRef();
    canceller = std::thread([&arrived, request] {
      arrived.get_future().wait();
      request->Cancel();
      request->Dispose();
    });
  });
  canceller.join();
  EXPECT_LT(Clock::now() - start, kInTime);
  EXPECT_EQ(seen.error, 12017U);
  EXPECT_EQ(
      Exchange(address.get(), 8080, L"/", [](HTTPRequest* request) { request->Cancel(); }).error,
      12017U);
}

}  // namespace
}  // namespace Corvane::Test
