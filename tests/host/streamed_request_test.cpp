// The extended request: its steps, and that a slow device makes its writer wait.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <future>
#include <string>

#include "corvane/error_codes.h"
#include "tests/host/ways.h"
#include "tests/support/hr.h"
#include "tests/support/peers/loopback_server.h"

namespace Corvane::Test {
namespace {

constexpr HRESULT kOutOfOrder = ResultFromError(kErrorOutOfOrder);
constexpr std::size_t kMegabyte = std::size_t{1} << 20;
const std::string kOk = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok";

std::size_t ResidentBytes() {
  std::size_t total = 0;
  std::size_t resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

TEST(RequestInOnePiece, SendsItsBodyAtOnce) {
  LoopbackServer server(LoopbackServer::AnswerEach(kOk));
  const Owned<Address> address = NetworkDevice(LoopbackOptions(server.Port()));
  const struct {
    const char* name;
    std::uint32_t length;
    const void* data;
    std::uint32_t error;
  } kCases[] = {{"the length that was told", 8, "document", 0},
                {"another length", 9, "document", kErrorInvalidParameter},
                {"no bytes", 8, nullptr, kErrorInvalidParameter}};
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    const PrinterRequest printer(address);
    printer.extended->SetOption(reinterpret_cast<std::uintptr_t>(address->GetAddress()));
    printer.extended->SetContentLength(row.length);
    printer.extended->SendBody(row.data, 8);
    EXPECT_EQ(printer.request->GetLastError(), row.error);
    EXPECT_EQ(printer.extended->GetSentBytes(), row.error == 0 ? 8U : 0U);
    EXPECT_EQ(printer.Respond().body, row.error == 0 ? "ok" : "");
    EXPECT_HR(printer.Respond().result, kOutOfOrder);
  }
  ASSERT_EQ(server.Requests().size(), 1U);
  EXPECT_TRUE(server.Requests()[0].ends_with("\r\nContent-Length: 8\r\n\r\ndocument"));
}

// A body of SetRequestData keeps the limit of an exchange in all.
TEST(RequestInOnePiece, HasItsOptionForALimitWithoutSendBody) {
  LoopbackServer server([](LoopbackConnection& connection) { connection.WaitForClose(); });
  const Owned<Address> address = NetworkDevice(LoopbackOptions(server.Port()));
  const PrinterRequest printer(address);
  PostText(printer.request.get(), "x");
  printer.request->SetOption(300);
  const Exchanged seen = printer.Respond();
  EXPECT_HR(seen.result, ResultFromError(kErrorTimeout));
  EXPECT_TRUE(seen.failure.ends_with(L": timed out after 300 ms"));
}

TEST(RequestInOnePiece, GoesOutThreeTimesAtMost) {
  LoopbackServer server(LoopbackServer::AnswerEach(
      "HTTP/1.1 401 No\r\nContent-Length: 0\r\n"
      "WWW-Authenticate: Digest realm=\"r\", nonce=\"n\", stale=true\r\n\r\n"));
  Host::NetworkOptions options = LoopbackOptions(server.Port());
  options.userName = L"admin";
  options.secretsOverTlsOnly = false;
  const Owned<Address> address = NetworkDevice(options);
  const PrinterRequest printer(address);
  printer.Send("document");
  const Exchanged seen = printer.Respond();
  EXPECT_HR(seen.result, ResultFromError(kErrorInvalidResponse));
  EXPECT_TRUE(seen.failure.ends_with(L"the device asks for credentials again and again"));
  EXPECT_EQ(server.Requests().size(), 3U);
}

TEST(StreamedRequest, SendsTheHeadFirstAndChunksAsWritten) {
  std::signal(SIGPIPE, SIG_DFL);  // one would end the test
  std::promise<std::string> head;
  LoopbackServer server([&head](LoopbackConnection& connection) {
    head.set_value(connection.ReadThrough("\r\n\r\n"));
    connection.ReadThrough("\r\n0\r\n\r\n");
    connection.Send(kOk);
    connection.WaitForClose();
  });
  const Owned<Address> address = NetworkDevice(LoopbackOptions(server.Port()));
  const PrinterRequest printer(address);
  printer.extended->SetHeader(L"Pragma", L"cache");
  printer.extended->SetHeader(L"PRAGMA", L"no-cache");
  ASSERT_HR(printer.Begin(), S_OK);
  // Before the first chunk.
  EXPECT_EQ(head.get_future().get(),
            "POST /ipp HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(server.Port()) +
                "\r\nPRAGMA: no-cache\r\nTransfer-Encoding: chunked\r\n"
                "Connection: close\r\n\r\n");
  EXPECT_TRUE(printer.extended->IsSending());
  std::string body;
  for (const std::string& chunk : {Framed("document"), std::string(), std::string("no fr"),
                                   std::string("ame\r\n"), std::string(kLastChunk)}) {
    EXPECT_HR(printer.Write(chunk), S_OK);
    body += chunk;
  }
  EXPECT_HR(printer.extended->FinishChunkedSend(), S_OK);
  EXPECT_FALSE(printer.extended->IsSending());
  EXPECT_EQ(printer.Respond().body, "ok");
  EXPECT_EQ(server.Requests().at(1), body);
  EXPECT_EQ(printer.extended->GetSentBytes(), body.size());
  EXPECT_HR(printer.Respond().result, kOutOfOrder);
}

TEST(StreamedRequest, AStepThatIsNotItsTurnChangesNothing) {
  LoopbackServer server(LoopbackServer::AnswerEach(kOk));
  const Owned<Address> address = NetworkDevice(LoopbackOptions(server.Port()));
  const PrinterRequest printer(address);
  EXPECT_HR(printer.Write("x"), kOutOfOrder);
  EXPECT_HR(printer.extended->FinishChunkedSend(), kOutOfOrder);
  EXPECT_HR(printer.Begin(), S_OK);
  EXPECT_HR(printer.Begin(), kOutOfOrder);
  printer.Send("x");
  EXPECT_EQ(printer.request->GetLastError(), kErrorOutOfOrder);
  EXPECT_HR(printer.Write(Framed("document") + kLastChunk), S_OK);
  EXPECT_HR(printer.extended->FinishChunkedSend(), S_OK);
  EXPECT_HR(printer.extended->FinishChunkedSend(), kOutOfOrder);
  EXPECT_HR(printer.Write("x"), kOutOfOrder);
  EXPECT_EQ(printer.Respond().body, "ok");
  EXPECT_HR(printer.Begin(), kOutOfOrder);
  EXPECT_EQ(server.Requests().size(), 1U);

  const PrinterRequest unfinished(address);
  EXPECT_HR(unfinished.Begin(), S_OK);
  EXPECT_HR(unfinished.Respond().result, kOutOfOrder);
  const PrinterRequest without(address);
  EXPECT_HR(without.Begin(), S_OK);
  EXPECT_HR(without.extended->WriteChunk(nullptr, 1, 1), E_INVALIDARG);
  const PrinterRequest unframed(address);
  unframed.extended->SetMethod(L"GET");
  EXPECT_HR(unframed.Begin(), E_INVALIDARG);
  EXPECT_HR(unframed.Write("x"), E_INVALIDARG);
  EXPECT_HR(unframed.Respond().result, E_INVALIDARG);
}

// The writer is ahead of the device by what the system's socket buffers hold, and not a byte more.
TEST(StreamedRequest, ASlowDeviceMakesTheWriterWait) {
  const std::string chunk = Framed(std::string(64 * kMegabyte, 'x'));
  std::promise<void> release;
  std::size_t taken = 0;
  LoopbackServer server([&](LoopbackConnection& connection) {
    connection.ReadThrough("\r\n\r\n");
    release.get_future().wait();
    do {  // and keeps nothing: this process's memory is measured
      taken += connection.m_buffered.size();
      connection.m_buffered.clear();
    } while (taken < chunk.size() + 5 && connection.ReceiveMore());
    connection.Send(kOk);
    connection.WaitForClose();
  });
  const Owned<Address> address = NetworkDevice(LoopbackOptions(server.Port()));
  const PrinterRequest printer(address);
  ASSERT_HR(printer.Begin(), S_OK);
  const std::size_t residentBefore = ResidentBytes();
  auto written = std::async(std::launch::async, [&] { return printer.Write(chunk); });
  EXPECT_EQ(written.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
  EXPECT_LT(printer.extended->GetSentBytes(), 16 * kMegabyte);
  EXPECT_TRUE(printer.extended->IsSending());
  release.set_value();
  EXPECT_HR(written.get(), S_OK);
  EXPECT_LT(ResidentBytes(), residentBefore + 16 * kMegabyte);
  EXPECT_HR(printer.Write(kLastChunk), S_OK);
  EXPECT_HR(printer.extended->FinishChunkedSend(), S_OK);
  EXPECT_EQ(printer.Respond().body, "ok");
  EXPECT_EQ(taken, chunk.size() + 5);
}

}  // namespace
}  // namespace Corvane::Test
