// The extended request, against devices that take and answer to a script.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fstream>
#include <functional>
#include <future>
#include <limits>
#include <string>
#include <thread>
#include <tuple>
#include <utility>

#include "corvane/error_codes.h"
#include "host/http/request_url.h"
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
const std::string kHeadEnd = "\r\n\r\n";

// Takes the head, then what `rest` does.
LoopbackServer::Script AfterHead(std::function<void(LoopbackConnection&)> rest) {
  return [=](LoopbackConnection& connection) {
    connection.ReadThrough(kHeadEnd);
    rest(connection);
  };
}

LoopbackServer::Script AnswerBody(std::string response, bool close = false) {
  return AfterHead([=](LoopbackConnection& connection) {
    connection.ReadThrough(kLastChunk);
    connection.Send(response);
    if (!close) connection.WaitForClose();
  });
}

void Answer(LoopbackConnection& connection, const std::string& response) {
  connection.Send(response);
  while (connection.Pause(1'000)) {  // and read nothing more
  }
}

std::size_t ResidentBytes() {
  std::size_t total = 0;
  std::size_t resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

// A SIGPIPE would end the test.
struct StreamedRequest : testing::Test {
  void SetUp() override { std::signal(SIGPIPE, SIG_DFL); }
};

TEST_F(StreamedRequest, SendsTheHeadFirstAndChunksAsWritten) {
  std::promise<std::string> head;
  LoopbackServer server([&head](LoopbackConnection& connection) {
    head.set_value(connection.ReadThrough(kHeadEnd));
    connection.ReadThrough(kLastChunk);
    connection.Send(kOk);
    connection.WaitForClose();
  });
  const Owned<Address> address = NetworkDevice(PrinterOptions(server.Port()));
  Streaming stream(address);
  stream.extended->SetHeader(L"Pragma", L"cache");
  stream.extended->SetHeader(L"PRAGMA", L"no-cache");
  ASSERT_HR(stream.Begin(), S_OK);
  // Before the first chunk.
  EXPECT_EQ(head.get_future().get(),
            "POST /ipp HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(server.Port()) +
                "\r\nTransfer-Encoding: chunked\r\nPRAGMA: no-cache\r\n"
                "Content-Type: application/ipp\r\n"
                "Connection: close\r\n\r\n");
  EXPECT_TRUE(stream.extended->IsSending());
  const std::string chunks[] = {Framed("document"), "", "003;a=b\r\n\0\r\n\r\n"s, "no fr", "ame"};
  std::string body;
  for (const std::string& chunk : chunks) {
    EXPECT_HR(stream.Write(chunk), S_OK);
    body += chunk;
  }
  const Exchanged seen = stream.Finish();
  EXPECT_FALSE(stream.extended->IsSending());
  EXPECT_HR(seen.result, S_OK);
  EXPECT_EQ(seen.body, "ok");
  EXPECT_EQ(seen.failure, L"");
  EXPECT_EQ(server.Requests().at(1), body + kLastChunk);
  EXPECT_EQ(stream.extended->GetSentBytes(), body.size() + 5);
  EXPECT_HR(stream.Respond().result, ResultFromError(kErrorOutOfOrder));
}

TEST_F(StreamedRequest, NamesTheHostAsItsUrlDoes) {
  const std::tuple<std::string, std::string, std::string> kCases[] = {
      {"http://printer.test:631/ipp?a=/b", "printer.test:631", "/ipp?a=/b"},
      {"http://printer.test:80/", "printer.test", "/"},
      {"https://192.0.2.7:443//x", "192.0.2.7", "//x"},
      {"http://192.0.2.7:443/a/../b", "192.0.2.7:443", "/a/../b"},
      {"https://[fe80::1%25eth0]:631/x", "[fe80::1]:631", "/x"}};
  for (const auto& [url, host, target] : kCases) {
    const Host::UrlInHead split = Host::SplitUrl(url);
    EXPECT_EQ(split.host, host);
    EXPECT_EQ(split.target, target);
  }
}

TEST_F(StreamedRequest, AnEarlyAnswerEndsTheSending) {
  using Connection = LoopbackConnection;
  const std::string kRefusal = "Content-Length: 2\r\n\r\nno";
  const struct {
    const char* name;
    std::function<void(Connection&)> rest;
    std::uint32_t error, status;
    std::string body;
  } kCases[] = {
      {"401", [&](Connection& c) { Answer(c, "HTTP/1.1 401 No\r\n" + kRefusal); }, 401, 401, "no"},
      {"413 in two pieces",
       [&](Connection& c) {
         c.Send("HTTP/1.1 413 Large\r\n" + kRefusal.substr(0, 10));
         c.Pause(50);
         Answer(c, kRefusal.substr(10));
       },
       413, 413, "no"},
      {"413 and reset", [&](Connection& c) { c.Send("HTTP/1.1 413 Large\r\n" + kRefusal); }, 413,
       413, "no"},
      {"an interim response in front",
       [&](Connection& c) { Answer(c, "HTTP/1.1 100 \r\n\r\nHTTP/1.1 401 No\r\n" + kRefusal); },
       401, 401, "no"},
      {"200 that the whole body is not needed for", [&](Connection& c) { Answer(c, kOk); }, 200,
       200, "ok"},
      {"up to the end of the connection",
       [](Connection& c) {
         c.Send("HTTP/1.1 400 Bad\r\n\r\nall of it");
         c.HalfClose();
         c.Pause(5'000);
       },
       400, 400, "all of it"},
      {"half a head",
       [](Connection& c) {
         c.Send("HTTP/1.1 401 N");
         c.HalfClose();
         c.Pause(5'000);
       },
       kErrorConnection, 0, ""},
      {"half a body",
       [](Connection& c) {
         c.Send("HTTP/1.1 401 No\r\nContent-Length: 9\r\n\r\nhalf");
         c.HalfClose();
         c.Pause(5'000);
       },
       kErrorConnection, 0, ""},
      {"no HTTP", [](Connection& c) { Answer(c, "500 no\r\n"); }, kErrorInvalidResponse, 0, ""},
      {"closed", [](Connection&) {}, kErrorConnection, 0, ""},
      {"reset",
       [](Connection& c) {
         const linger hard{1, 0};
         setsockopt(c.m_socket, SOL_SOCKET, SO_LINGER, &hard, sizeof(hard));
       },
       kErrorConnection, 0, ""}};
  const std::string chunk = Framed(std::string(kMegabyte, 'x'));
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    LoopbackServer server(AfterHead(row.rest));
    const Owned<Address> address = NetworkDevice(PrinterOptions(server.Port()));
    Streaming stream(address);
    const Clock::time_point start = Clock::now();
    HRESULT result = stream.Begin();
    for (int i = 0; i < 1'000 && result == S_OK; ++i) result = stream.Write(chunk);
    EXPECT_LT(Clock::now() - start, kInTime);
    EXPECT_HR(result, ResultFromError(row.error));
    EXPECT_EQ(stream.request->GetLastError(), row.error);
    EXPECT_FALSE(stream.extended->IsSending());
    EXPECT_NE(row.status == 200, address->GetLastFailure()[0] != L'\0');

    const std::uint64_t sent = stream.extended->GetSentBytes();
    EXPECT_HR(stream.Write(chunk), ResultFromError(row.error));
    EXPECT_HR(stream.extended->FinishChunkedSend(), ResultFromError(row.error));
    EXPECT_EQ(stream.request->GetLastError(), row.error);
    EXPECT_EQ(stream.extended->GetSentBytes(), sent);

    const Exchanged seen = stream.Respond();
    EXPECT_EQ(seen.status, row.status);
    EXPECT_EQ(seen.body, row.body);
    EXPECT_EQ(seen.error, row.status == 0 ? row.error : 0);
  }
}

TEST_F(StreamedRequest, ASlowDeviceMakesTheWriterWait) {
  constexpr std::size_t kChunks = 64;
  std::promise<void> release;
  std::size_t taken = 0;
  LoopbackServer server(AfterHead([&](LoopbackConnection& connection) {
    release.get_future().wait();
    taken = connection.m_buffered.size();
    std::string last;  // nothing larger: the memory of this process is measured
    static char block[65536];
    for (ssize_t got; !last.ends_with(kLastChunk) &&
                      (got = recv(connection.m_socket, block, sizeof(block), 0)) > 0;) {
      taken += static_cast<std::size_t>(got);
      last.append(block + std::max<ssize_t>(got - 5, 0), block + got);
      if (last.size() > 10) last.erase(0, last.size() - 5);
    }
    connection.Send(kOk);
    connection.WaitForClose();
  }));
  const Owned<Address> address = NetworkDevice(PrinterOptions(server.Port()));
  Streaming stream(address);
  const std::string chunk = Framed(std::string(kMegabyte, 'x'));
  ASSERT_HR(stream.Begin(), S_OK);
  const std::size_t residentBefore = ResidentBytes();
  std::thread writer([&] {
    for (std::size_t i = 0; i < kChunks; ++i) EXPECT_HR(stream.Write(chunk), S_OK);
  });
  // What the system's socket buffers hold, and not a byte more.
  std::uint64_t ahead = 0;
  for (std::uint64_t before = 1; ahead != before;) {
    before = ahead;
    std::this_thread::sleep_for(200ms);
    ahead = stream.extended->GetSentBytes();
  }
  EXPECT_GT(ahead, 0U);
  EXPECT_LT(ahead, 16 * kMegabyte);
  release.set_value();
  writer.join();
  EXPECT_LT(ResidentBytes(), residentBefore + 16 * kMegabyte);
  EXPECT_EQ(stream.Finish().body, "ok");
  EXPECT_EQ(taken, kChunks * chunk.size() + 5);
}

// Twenty megabytes at ten a second, with a limit of 500 ms.
TEST_F(StreamedRequest, ADocumentMayTakeLongerThanTheTotalTimeout) {
  LoopbackServer server(AfterHead([](LoopbackConnection& connection) {
    std::string block(kMegabyte, '\0');
    while (!connection.m_buffered.ends_with(kLastChunk)) {
      const ssize_t got = recv(connection.m_socket, block.data(), block.size(), MSG_WAITALL);
      if (got <= 0) return;
      connection.m_buffered = block.substr(0, static_cast<std::size_t>(got));
      if (!connection.Pause(100)) return;
    }
    connection.Send(kOk);
    connection.WaitForClose();
  }));
  Host::NetworkOptions options = PrinterOptions(server.Port());
  options.totalTimeoutMs = 500;
  const Owned<Address> address = NetworkDevice(options);
  Streaming stream(address);
  ASSERT_HR(stream.Begin(), S_OK);
  const Clock::time_point start = Clock::now();
  std::string document(20 * kMegabyte - 5, 'x');
  EXPECT_HR(stream.Write(document), S_OK);
  EXPECT_GT(Clock::now() - start, 600ms);
}

TEST_F(StreamedRequest, CancelEndsAWait) {
  for (const bool writes : {true, false}) {
    SCOPED_TRACE(writes ? "in a chunk" : "for the response");
    LoopbackServer server(writes ? AfterHead([](LoopbackConnection& c) { Answer(c, ""); })
                                 : AnswerBody(""));
    const Owned<Address> address = NetworkDevice(PrinterOptions(server.Port()));
    Streaming stream(address);
    ASSERT_HR(stream.Begin(), S_OK);
    Clock::time_point cancelled;
    std::thread canceller([&] {
      std::this_thread::sleep_for(300ms);
      cancelled = Clock::now();
      stream.extended->Cancel();
    });
    if (writes) {
      EXPECT_HR(stream.Write(std::string(40 * kMegabyte, 'x')), ResultFromError(kErrorCancelled));
    }
    const Exchanged seen = writes ? stream.Respond() : stream.Finish();
    const Clock::time_point ended = Clock::now();
    canceller.join();
    EXPECT_GT(ended, cancelled);
    EXPECT_LT(ended - cancelled, 1'000ms);
    EXPECT_EQ(seen.error, kErrorCancelled);
    RecordProperty(writes ? "chunkUs" : "responseUs", static_cast<int>((ended - cancelled) / 1us));
  }
}

TEST_F(StreamedRequest, RefusesWhatItCannotFrame) {
  LoopbackServer server(AnswerBody(kOk));
  const Owned<Address> address = NetworkDevice(PrinterOptions(server.Port()));
  using Configure = std::function<void(Streaming&)>;
  const std::pair<const char*, Configure> kCases[] = {
      {"no coding", [](Streaming& s) { s.extended->SetHeader(L"Transfer-Encoding", L""); }},
      {"coding twice",
       [](Streaming& s) { s.request->AddHeader(L"transfer-encoding", L"chunked"); }},
      {"other coding", [](Streaming& s) { s.extended->SetHeader(L"Transfer-Encoding", L"gzip"); }},
      {"length", [](Streaming& s) { s.request->AddHeader(L"Content-Length", L"1"); }},
      {"line end", [](Streaming& s) { s.request->AddHeader(L"A", L"b\r\nC: d"); }},
      {"GET", [](Streaming& s) { s.extended->SetMethod(L"GET"); }},
      {"a body beside it", [](Streaming& s) { s.extended->SetRequestData("x", 1); }}};
  for (const auto& [name, configure] : kCases) {
    SCOPED_TRACE(name);
    Streaming stream(address);
    configure(stream);
    EXPECT_HR(stream.Begin(), E_INVALIDARG);
    EXPECT_EQ(stream.request->GetLastError(), kErrorInvalidParameter);
    EXPECT_NE(address->GetLastFailure()[0], L'\0');
    EXPECT_HR(stream.Write("x"), E_INVALIDARG);
    EXPECT_HR(stream.Respond().result, E_INVALIDARG);
  }
  EXPECT_TRUE(server.Requests().empty());
}

TEST_F(StreamedRequest, AStepThatIsNotItsTurnChangesNothing) {
  constexpr HRESULT kOutOfOrder = ResultFromError(kErrorOutOfOrder);
  LoopbackServer server(AnswerBody(kOk));
  const Owned<Address> address = NetworkDevice(PrinterOptions(server.Port()));
  Streaming stream(address);
  EXPECT_HR(stream.Write("x"), kOutOfOrder);
  EXPECT_HR(stream.extended->FinishChunkedSend(), kOutOfOrder);
  EXPECT_HR(stream.Begin(), S_OK);
  EXPECT_HR(stream.Begin(), kOutOfOrder);
  stream.extended->SendBody("x", 1);
  EXPECT_EQ(stream.request->GetLastError(), kErrorOutOfOrder);
  EXPECT_HR(stream.Write(kLastChunk), S_OK);
  EXPECT_HR(stream.extended->FinishChunkedSend(), S_OK);
  EXPECT_HR(stream.extended->FinishChunkedSend(), kOutOfOrder);
  EXPECT_HR(stream.Write("x"), kOutOfOrder);
  EXPECT_EQ(stream.Respond().body, "ok");
  EXPECT_HR(stream.Begin(), kOutOfOrder);
  EXPECT_EQ(server.Requests().size(), 2U);  // a head and a body

  Streaming unfinished(address);
  EXPECT_HR(unfinished.Begin(), S_OK);
  EXPECT_HR(unfinished.Respond().result, kOutOfOrder);
  Streaming without(address);
  EXPECT_HR(without.Begin(), S_OK);
  EXPECT_HR(without.extended->WriteChunk(nullptr, 1, 1), E_INVALIDARG);
}

TEST_F(StreamedRequest, SendsNoPasswordInTheClear) {
  LoopbackServer server(AnswerBody(kOk));
  const Owned<Address> address = NetworkDevice(PrinterOptions(server.Port()));
  Streaming stream(address);
  stream.extended->SetUserName(L"admin");
  stream.extended->SetPassword(L"secret");
  EXPECT_HR(stream.Begin(), S_OK);
  EXPECT_EQ(stream.Finish().body, "ok");
  EXPECT_EQ(server.Requests().at(0).find("Authorization"), std::string::npos);
}

}  // namespace
}  // namespace Corvane::Test
