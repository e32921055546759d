// The extended request, for a body that is there as a whole.
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>

#include "tests/host/streaming.h"
#include "tests/support/hr.h"
#include "tests/support/loopback_server.h"

namespace Corvane::Test {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;
using namespace std::string_literals;

constexpr auto kInTime = 5'000ms;  // with a sanitizer on a busy machine
constexpr std::size_t kMegabyte = std::size_t{1} << 20;
const std::string kOk = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok";

// As the library sends a document in one piece.
TEST(RequestInOnePiece, SendsItsBodyAtOnce) {
  LoopbackServer server(LoopbackServer::AnswerEach(kOk));
  const Owned<Address> address = NetworkDevice(PrinterOptions(server.Port()));
  const std::string body = "document\0"s;
  const auto size = static_cast<std::uint32_t>(body.size());
  const struct {
    const char* name;
    std::uint32_t length;
    const void* data;
    std::uint32_t error;
  } kCases[] = {{"the length that was told", size, body.data(), 0},
                {"another length", size + 1, body.data(), 87},
                {"no bytes", size, nullptr, 87}};
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    const OnePiece piece(address);
    TqHTTPRequestEx* const extended = piece.extended;
    piece.request->SetOption(std::uint32_t{10'000});
    extended->SetOption(reinterpret_cast<std::uintptr_t>(address->GetAddress()));
    extended->SetContentLength(row.length);
    extended->SendBody(row.data, size);
    EXPECT_EQ(piece.request->GetLastError(), row.error);
    EXPECT_EQ(extended->GetSentBytes(), row.error == 0 ? size : 0);
    const Exchanged seen = piece.Respond();
    EXPECT_EQ(seen.error, row.error);
    EXPECT_EQ(seen.body, row.error == 0 ? "ok" : "");
    EXPECT_HR(piece.Respond().result, ResultFromError(12019));
  }
  ASSERT_EQ(server.Requests().size(), 1U);
  EXPECT_TRUE(server.Requests()[0].ends_with("\r\nContent-Length: 9\r\n\r\n" + body));
}

// A body of SetRequestData keeps the limit of an exchange in all.
TEST(RequestInOnePiece, HasItsOptionForALimitWithoutSendBody) {
  LoopbackServer server([](LoopbackConnection& connection) { connection.WaitForClose(); });
  const Owned<Address> address = NetworkDevice(PrinterOptions(server.Port()));
  const OnePiece piece(address);
  PostText(piece.request.get(), "x");
  piece.request->SetOption(300);
  const Exchanged seen = piece.Respond();
  EXPECT_HR(seen.result, ResultFromError(12002));
  EXPECT_TRUE(seen.failure.ends_with(L": timed out after 300 ms"));
}

// Reads `bytes` behind a head, twenty megabytes a second.
bool ReadSlowly(LoopbackConnection& connection, std::size_t bytes) {
  std::string block(kMegabyte, '\0');
  while (bytes > 0) {
    const ssize_t got =
        recv(connection.m_socket, block.data(), std::min(bytes, block.size()), MSG_WAITALL);
    if (got <= 0) return false;
    bytes -= static_cast<std::size_t>(got);
    if (!connection.Pause(50)) return false;
  }
  return true;
}

// The bytes behind a head that came with it.
std::size_t ReadHead(LoopbackConnection& connection) {
  connection.ReadThrough("\r\n\r\n");
  const std::size_t more = connection.m_buffered.size();
  connection.m_buffered.clear();
  return more;
}

// The socket buffers hold some megabytes of it when the body has gone out.
TEST(RequestInOnePiece, MayTakeLongerThanTheTotalTimeout) {
  const std::string document(32 * kMegabyte, 'x');
  for (const char* const challenge : {"", "Digest realm=\"r\", nonce=\"n\""}) {
    SCOPED_TRACE(challenge);
    LoopbackServer server([&](LoopbackConnection& connection) {
      if (*challenge) {
        if (!ReadSlowly(connection, document.size() - ReadHead(connection))) return;
        connection.Send("HTTP/1.1 401 No\r\nContent-Length: 2\r\nWWW-Authenticate: "s + challenge +
                        "\r\n\r\nno");
      }
      if (!ReadSlowly(connection, document.size() - ReadHead(connection))) return;
      connection.Send(kOk);
      connection.WaitForClose();
    });
    Host::NetworkOptions options = PrinterOptions(server.Port());
    options.totalTimeoutMs = 800;
    options.userName = L"admin";
    options.password = L"secret";
    options.secretsOverTlsOnly = false;
    const Owned<Address> address = NetworkDevice(options);
    const OnePiece piece(address);
    const Clock::time_point start = Clock::now();
    piece.Send(document);
    EXPECT_GT(Clock::now() - start, 900ms);
    EXPECT_EQ(piece.extended->GetSentBytes(), document.size());
    const Exchanged seen = piece.Respond();
    EXPECT_EQ(seen.body, "ok") << testing::PrintToString(seen.failure);
  }
}

TEST(RequestInOnePiece, EndsInTimeAndTellsOfALostAnswer) {
  using Connection = LoopbackConnection;
  const auto answer = [](std::string start, std::string piece = {}) {
    return [=](Connection& c) {
      c.ReadRequest();
      c.Send(start);
      while (c.Pause(50) && c.Send(piece)) {
      }
    };
  };
  const std::string kHead = "HTTP/1.1 200 OK\r\n";
  const struct {
    const char* name;
    LoopbackServer::Script script;
    bool large;  // no socket buffers take the document
    std::uint32_t optionMs, totalMs;
    std::uint32_t error;
    std::wstring failure;
    bool lost = true;
  } kCases[] = {
      {"takes nothing", [](Connection& c) { c.Pause(5'000); }, true, 300, 60'000, 12002,
       L"the device took nothing for 300 ms", false},
      {"takes nothing, and drips interim responses",
       [](Connection& c) {
         while (c.Send("HTTP/1.1 100 \r\n\r\n") && c.Pause(50)) {
         }
       },
       true, 300, 60'000, 12002, L"the device took nothing for 300 ms", false},
      {"silent", answer(""), false, 300, 60'000, 12002, L"the device was silent for 300 ms"},
      {"half a body", answer(kHead + "Content-Length: 9\r\n\r\nhalf"), false, 300, 60'000, 12002,
       L"the device was silent for 300 ms"},
      {"drips its body", answer(kHead + "Content-Length: 9999\r\n\r\n", "x"), false, 300, 900,
       12002, L"no whole response within 900 ms"},
      {"drips interim responses", answer("", "HTTP/1.1 100 \r\n\r\n"), false, 900, 300, 12002,
       L"no whole response within 900 ms"},
      {"closes in the document", [](Connection& c) { c.ReadThrough("\r\n\r\n"); }, true, 0, 60'000,
       12030, L"", false},
      {"closes behind it", [](Connection& c) { c.ReadRequest(); }, false, 0, 60'000, 12030, L""},
      {"closes in the answer",
       [=](Connection& c) {
         c.ReadRequest();
         c.Send(kHead + "Content-Length: 9\r\n\r\nhalf");
       },
       false, 0, 60'000, 12030, L""},
      {"answers with something else",
       [](Connection& c) {
         c.ReadRequest();
         c.Send("SSH-2.0-device\r\n");
       },
       false, 0, 60'000, 12152, L""},
      {"wants the document for ever",
       [](Connection& c) {
         while (!c.ReadRequest().empty()) {
           c.Send(
               "HTTP/1.1 401 No\r\nContent-Length: 0\r\n"
               "WWW-Authenticate: Digest realm=\"r\", nonce=\"n\", stale=true\r\n\r\n");
         }
       },
       false, 0, 60'000, 12152, L"the device asks for credentials again and again", false}};
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    LoopbackServer server(row.script);
    Host::NetworkOptions options = PrinterOptions(server.Port());
    options.totalTimeoutMs = row.totalMs;
    options.userName = L"admin";
    options.password = L"secret";
    options.secretsOverTlsOnly = false;
    const Owned<Address> address = NetworkDevice(options);
    const OnePiece piece(address);
    piece.extended->SetOption(std::uintptr_t{row.optionMs});
    const Clock::time_point start = Clock::now();
    piece.Send(std::string(row.large ? 20 * kMegabyte : 100, 'x'));
    EXPECT_LT(Clock::now() - start, kInTime);
    EXPECT_FALSE(piece.extended->IsSending());
    EXPECT_EQ(piece.request->GetLastError(), row.error);
    const Exchanged seen = piece.Respond();
    EXPECT_HR(seen.result, row.lost ? kAnswerLost : ResultFromError(row.error));
    EXPECT_TRUE(seen.failure.ends_with(row.failure)) << testing::PrintToString(seen.failure);
    EXPECT_LE(server.Requests().size(), 3U);
  }
}

TEST(RequestInOnePiece, AnEarlyAnswerEndsTheSending) {
  const struct {
    const char *name, *answer;
    std::uint32_t status;
  } kCases[] = {
      {"401", "HTTP/1.1 401 No\r\nContent-Length: 2\r\n\r\nno", 401},
      {"401, with a challenge that is not met",
       "HTTP/1.1 401 No\r\nContent-Length: 2\r\nWWW-Authenticate: Digest realm=\"r\", "
       "nonce=\"n\"\r\n\r\nno",
       401},
      {"413", "HTTP/1.1 413 Large\r\nContent-Length: 2\r\n\r\nno", 413},
  };
  const std::string document(20 * kMegabyte, 'x');
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    LoopbackServer server([&row](LoopbackConnection& connection) {
      connection.ReadThrough("\r\n\r\n");
      connection.Send(row.answer);
      connection.Pause(10'000);
    });
    Host::NetworkOptions options = PrinterOptions(server.Port());
    options.userName = L"admin";
    options.password = L"wrong";
    options.secretsOverTlsOnly = false;
    const Owned<Address> address = NetworkDevice(options);
    const OnePiece piece(address);
    const Clock::time_point start = Clock::now();
    piece.Send(document);
    EXPECT_LT(Clock::now() - start, kInTime);
    EXPECT_LT(piece.extended->GetSentBytes(), document.size());
    const Exchanged seen = piece.Respond();
    EXPECT_EQ(seen.status, row.status) << testing::PrintToString(seen.failure);
    EXPECT_EQ(seen.body, "no");
  }
}

TEST(RequestInOnePiece, CancelEndsIt) {
  LoopbackServer server([](LoopbackConnection& connection) { connection.Pause(10'000); });
  const Owned<Address> address = NetworkDevice(PrinterOptions(server.Port()));
  const OnePiece piece(address);
  const Clock::time_point start = Clock::now();
  std::thread canceller([&] {
    while (!piece.extended->IsSending()) std::this_thread::yield();
    std::this_thread::sleep_for(100ms);
    piece.extended->Cancel();
  });
  piece.Send(std::string(20 * kMegabyte, 'x'));
  canceller.join();
  EXPECT_LT(Clock::now() - start, kInTime);
  EXPECT_HR(piece.Respond().result, ResultFromError(12017));
}

}  // namespace
}  // namespace Corvane::Test
