// The extended request, for a body that is there as a whole.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "tests/host/streaming.h"
#include "tests/support/hr.h"
#include "tests/support/loopback_server.h"

namespace Corvane::Test {
namespace {

using namespace std::string_literals;

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
    HTTPRequest* made = nullptr;
    ASSERT_HR(address->CreateIPPHTTPRequest(&made, 631), S_OK);
    const Owned<HTTPRequest> request(made);
    auto* const extended = dynamic_cast<TqHTTPRequestEx*>(made);
    ASSERT_NE(extended, nullptr);
    request->SetMethod(L"POST");
    request->SetURI(L"/ipp");
    request->SetOption(std::uint32_t{10'000});
    extended->SetOption(reinterpret_cast<std::uintptr_t>(address->GetAddress()));
    extended->SetContentLength(row.length);
    extended->SendBody(row.data, size);
    EXPECT_EQ(request->GetLastError(), row.error);
    EXPECT_EQ(extended->GetSentBytes(), row.error == 0 ? size : 0);
    const Exchanged seen = GetExchanged(address, made);
    EXPECT_EQ(seen.error, row.error);
    EXPECT_EQ(seen.body, row.error == 0 ? "ok" : "");
    EXPECT_HR(GetExchanged(address, made).result, Host::ResultFromError(12019));
  }
  ASSERT_EQ(server.Requests().size(), 1U);
  EXPECT_TRUE(server.Requests()[0].ends_with("\r\nContent-Length: 9\r\n\r\n" + body));
}

TEST(RequestInOnePiece, HasItsOptionForALimit) {
  LoopbackServer server([](LoopbackConnection& connection) { connection.WaitForClose(); });
  for (const bool once : {true, false}) {
    const Owned<Address> address = NetworkDevice(PrinterOptions(server.Port()));
    HTTPRequest* made = nullptr;
    ASSERT_HR(address->CreateIPPHTTPRequest(&made, 631), S_OK);
    const Owned<HTTPRequest> request(made);
    PostText(made, "x");
    made->SetOption(300);
    if (once) dynamic_cast<TqHTTPRequestEx*>(made)->SendBody("y", 1);
    const Exchanged seen = GetExchanged(address, made);
    EXPECT_EQ(seen.error, 12002U);
    EXPECT_TRUE(seen.failure.ends_with(L": timed out after 300 ms"));
  }
}

}  // namespace
}  // namespace Corvane::Test
