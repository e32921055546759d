// The extended request: its steps, and that a slow device makes its writer wait.
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <chrono>
#include <csignal>
#include <future>
#include <string>

#include "tests/host/exchange.h"
#include "tests/support/peers/loopback_server.h"

namespace Corvane::Test {
namespace {

constexpr HRESULT kOutOfOrder = ResultFromError(kErrorOutOfOrder);
constexpr std::size_t kMegabyte = std::size_t{1} << 20;
const std::string kOk = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok";

TEST(RequestInOnePiece, SendsItsBodyAtOnce) {
  LoopbackServer server(LoopbackServer::AnswerEach(kOk));
  const Owned<Address> address = NetworkDevice(LoopbackOptions(server.Port()));
  for (const auto& [length, data] : {std::pair(8U, "document"), {9U, "document"}, {8U, nullptr}}) {
    const bool isSound = length == 8 && data;
    const PrinterRequest printer(address);
    printer.extended->SetOption(reinterpret_cast<std::uintptr_t>(address->GetAddress()));
    printer.extended->SetContentLength(length);
    printer.extended->SendBody(data, 8);
    EXPECT_EQ(printer.request->GetLastError(), isSound ? 0 : kErrorInvalidParameter);
    EXPECT_EQ(printer.extended->GetSentBytes(), isSound ? 8U : 0U);
    EXPECT_EQ(printer.Respond().body, isSound ? "ok" : "");
    EXPECT_HR(printer.Respond().result, kOutOfOrder);
  }
  ASSERT_EQ(server.Requests().size(), 1U);
  EXPECT_TRUE(server.Requests()[0].ends_with("\r\nContent-Length: 8\r\n\r\ndocument"));
}

TEST(StreamedRequest, SendsTheHeadFirstAndChunksAsWrittenEachInItsTurn) {
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
  EXPECT_HR(printer.Write("x"), kOutOfOrder);
  EXPECT_HR(printer.extended->FinishChunkedSend(), kOutOfOrder);
  ASSERT_HR(printer.Begin(), S_OK);
  // Before the first chunk.
  EXPECT_EQ(head.get_future().get(),
            "POST /ipp HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(server.Port()) +
                "\r\nPRAGMA: no-cache\r\nTransfer-Encoding: chunked\r\n"
                "Connection: close\r\n\r\n");
  EXPECT_HR(printer.Begin(), kOutOfOrder);
  printer.Send("x");
  EXPECT_EQ(printer.request->GetLastError(), kErrorOutOfOrder);
  EXPECT_TRUE(printer.extended->IsSending());
  std::string body;
  for (const std::string& chunk : {Framed("document"), std::string(), std::string("no fr"),
                                   std::string("ame\r\n"), std::string(kLastChunk)}) {
    EXPECT_HR(printer.Write(chunk), S_OK);
    body += chunk;
  }
  EXPECT_HR(printer.extended->FinishChunkedSend(), S_OK);
  EXPECT_FALSE(printer.extended->IsSending());
  EXPECT_HR(printer.extended->FinishChunkedSend(), kOutOfOrder);
  EXPECT_HR(printer.Write("x"), kOutOfOrder);
  EXPECT_EQ(printer.Respond().body, "ok");
  EXPECT_EQ(server.Requests().at(1), body);
  EXPECT_EQ(printer.extended->GetSentBytes(), body.size());
  EXPECT_HR(printer.Respond().result, kOutOfOrder);
  EXPECT_HR(printer.Begin(), kOutOfOrder);
  EXPECT_EQ(server.Requests().size(), 2U);
}

TEST(StreamedRequest, RefusesWhatIsNoStream) {
  const LoopbackServer server([](LoopbackConnection& connection) { connection.WaitForClose(); });
  const Owned<Address> address = NetworkDevice(LoopbackOptions(server.Port()));
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
  LoopbackServer server([&](LoopbackConnection& connection) {
    connection.ReadThrough("\r\n\r\n");
    release.get_future().wait();
    connection.ReadThrough(kLastChunk);
    connection.Send(kOk);
    connection.WaitForClose();
  });
  const Owned<Address> address = NetworkDevice(LoopbackOptions(server.Port()));
  const PrinterRequest printer(address);
  ASSERT_HR(printer.Begin(), S_OK);
  auto written = std::async(std::launch::async, [&] { return printer.Write(chunk); });
  EXPECT_EQ(written.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
  EXPECT_LT(printer.extended->GetSentBytes(), 16 * kMegabyte);
  EXPECT_TRUE(printer.extended->IsSending());
  release.set_value();
  EXPECT_HR(written.get(), S_OK);
  EXPECT_HR(printer.Write(kLastChunk), S_OK);
  EXPECT_HR(printer.extended->FinishChunkedSend(), S_OK);
  EXPECT_EQ(printer.Respond().body, "ok");
  EXPECT_EQ(server.Requests().at(1).size(), chunk.size() + 5);
}

}  // namespace
}  // namespace Corvane::Test
