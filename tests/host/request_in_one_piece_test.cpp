// The extended request, for a body that is there as a whole.
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string>

#include "corvane/error_codes.h"
#include "tests/host/streaming.h"
#include "tests/support/hr.h"
#include "tests/support/peers/loopback_server.h"

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
                {"another length", size + 1, body.data(), kErrorInvalidParameter},
                {"no bytes", size, nullptr, kErrorInvalidParameter}};
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
    EXPECT_HR(piece.Respond().result, ResultFromError(kErrorOutOfOrder));
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
  EXPECT_HR(seen.result, ResultFromError(kErrorTimeout));
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

TEST(RequestInOnePiece, GoesOutThreeTimesAtMost) {
  LoopbackServer server([](LoopbackConnection& connection) {
    while (!connection.ReadRequest().empty()) {
      connection.Send(
          "HTTP/1.1 401 No\r\nContent-Length: 0\r\n"
          "WWW-Authenticate: Digest realm=\"r\", nonce=\"n\", stale=true\r\n\r\n");
    }
  });
  Host::NetworkOptions options = PrinterOptions(server.Port());
  options.userName = L"admin";
  options.secretsOverTlsOnly = false;
  const Owned<Address> address = NetworkDevice(options);
  const OnePiece piece(address);
  piece.Send("document");
  const Exchanged seen = piece.Respond();
  EXPECT_HR(seen.result, ResultFromError(kErrorInvalidResponse));
  EXPECT_TRUE(seen.failure.ends_with(L"the device asks for credentials again and again"));
  EXPECT_EQ(server.Requests().size(), 3U);
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

}  // namespace
}  // namespace Corvane::Test
