// The ways that a body goes out: with a plain request, in one piece, streamed.
#ifndef CORVANE_TESTS_HOST_WAYS_H_
#define CORVANE_TESTS_HOST_WAYS_H_

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "corvane/error_codes.h"
#include "tests/host/exchange.h"

namespace Corvane::Test {

// The last chunk of a body, without trailers (RFC 9112, 7.1).
constexpr char kLastChunk[] = "0\r\n\r\n";

inline std::string Framed(std::string_view data) {
  char size[16];
  snprintf(size, sizeof(size), "%zX\r\n", data.size());
  return size + std::string(data) + "\r\n";
}

// POST /ipp.
struct PrinterRequest {
  explicit PrinterRequest(const Owned<Address>& owner, std::uint32_t port = 631) : address(owner) {
    HTTPRequest* made = nullptr;
    EXPECT_EQ(address->CreateIPPHTTPRequest(&made, port), S_OK);
    request.reset(made);
    extended = dynamic_cast<TqHTTPRequestEx*>(made);
    EXPECT_NE(extended, nullptr);
    request->SetMethod(L"POST");
    request->SetURI(L"/ipp");
  }

  void Send(std::string_view body) const {
    extended->SendBody(body.data(), static_cast<std::uint32_t>(body.size()));
  }
  HRESULT Begin() const {
    request->AddHeader(L"Transfer-Encoding", L"chunked");
    return extended->BeginChunkedSend(1);
  }
  HRESULT Write(std::string_view chunk) const {
    return extended->WriteChunk(chunk.data(), static_cast<std::uint32_t>(chunk.size()), 1);
  }
  // The first failure of a whole streaming, or S_OK.
  HRESULT Stream(const std::string& body) const {
    constexpr std::size_t kPiece = 100'000;
    HRESULT result = Begin();
    for (std::size_t at = 0; at < body.size() && result == S_OK; at += kPiece) {
      result = Write(Framed(body.substr(at, kPiece)));
    }
    if (result == S_OK) result = Write(kLastChunk);
    return result == S_OK ? extended->FinishChunkedSend() : result;
  }
  Exchanged Respond() const { return GetExchanged(address, request.get()); }

  const Owned<Address>& address;
  Owned<HTTPRequest> request;
  TqHTTPRequestEx* extended = nullptr;
};

// Each brings a body to port 443 or 631 of an address, and gives what came of it.
struct Way {
  const char* name;
  Exchanged (*exchange)(const Owned<Address>&, std::uint32_t port, const std::string& body,
                        const Configure& configure);
};
inline const Way kWays[] = {
    {"plain",
     [](const Owned<Address>& address, std::uint32_t port, const std::string& body,
        const Configure& configure) {
       const auto post = [&](HTTPRequest* request) {
         PostText(request, body);
         if (configure) configure(request);
       };
       return Exchange(address, L"/ipp", post, port);
     }},
    {"one piece",
     [](const Owned<Address>& address, std::uint32_t port, const std::string& body,
        const Configure& configure) {
       const PrinterRequest printer(address, port);
       if (configure) configure(printer.request.get());
       printer.Send(body);
       EXPECT_FALSE(printer.extended->IsSending());
       return printer.Respond();
     }},
    {"streamed",
     [](const Owned<Address>& address, std::uint32_t port, const std::string& body,
        const Configure& configure) {
       const PrinterRequest printer(address, port);
       if (configure) configure(printer.request.get());
       const HRESULT sent = printer.Stream(body);
       EXPECT_FALSE(printer.extended->IsSending());
       const std::uint32_t stepError = printer.request->GetLastError();
       EXPECT_EQ(sent, stepError == 0 ? S_OK : ResultFromError(stepError));
       const std::uint64_t bytes = printer.extended->GetSentBytes();
       if (sent != S_OK) {
         EXPECT_EQ(printer.Write("x"), sent);
         EXPECT_EQ(printer.extended->FinishChunkedSend(), sent);
       }
       EXPECT_EQ(printer.extended->GetSentBytes(), bytes);
       Exchanged seen = printer.Respond();
       seen.stepError = stepError;
       return seen;
     }},
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_HOST_WAYS_H_
