// A request of an address whose body is streamed.
#ifndef CORVANE_TESTS_HOST_STREAMING_H_
#define CORVANE_TESTS_HOST_STREAMING_H_

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

// A device on a loopback port, asked for as 631.
inline Host::NetworkOptions PrinterOptions(std::uint16_t port) {
  Host::NetworkOptions options = LoopbackOptions(port);
  options.portMap[kIppPort] = port;
  return options;
}

// POST /ipp.
struct PrinterRequest {
  PrinterRequest(const Owned<Address>& owner, std::uint32_t port) : address(owner) {
    HTTPRequest* made = nullptr;
    EXPECT_EQ(address->CreateIPPHTTPRequest(&made, port), S_OK);
    request.reset(made);
    extended = dynamic_cast<TqHTTPRequestEx*>(made);
    EXPECT_NE(extended, nullptr);
    request->SetMethod(L"POST");
    request->SetURI(L"/ipp");
  }

  Exchanged Respond() const { return GetExchanged(address, request.get()); }

  const Owned<Address>& address;
  Owned<HTTPRequest> request;
  TqHTTPRequestEx* extended = nullptr;
};

// One configured for a chunked body.
struct Streaming : PrinterRequest {
  explicit Streaming(const Owned<Address>& owner, std::uint32_t port = 631)
      : PrinterRequest(owner, port) {
    request->AddHeader(L"Transfer-Encoding", L"chunked");
    request->AddHeader(L"Content-Type", L"application/ipp");
  }

  HRESULT Begin() { return extended->BeginChunkedSend(1); }
  HRESULT Write(std::string_view chunk) {
    return extended->WriteChunk(chunk.data(), static_cast<std::uint32_t>(chunk.size()), 1);
  }
  // The rest of an exchange whose chunks are written, but for the last.
  Exchanged Finish() {
    EXPECT_EQ(Write(kLastChunk), S_OK);
    EXPECT_EQ(extended->FinishChunkedSend(), S_OK);
    return Respond();
  }
};

// One for a body of SendBody.
struct OnePiece : PrinterRequest {
  explicit OnePiece(const Owned<Address>& owner, std::uint32_t port = 631)
      : PrinterRequest(owner, port) {}

  void Send(std::string_view body) const {
    extended->SendBody(body.data(), static_cast<std::uint32_t>(body.size()));
  }
};

// The ways that a body goes to port 443 or 631 of an address. Each gives what came of it.
struct Way {
  const char* name;
  Exchanged (*exchange)(const Owned<Address>&, std::uint32_t port, const std::string& body,
                        std::uint32_t silenceMs);
};
inline const Way kWays[] = {
    {"plain",
     [](const Owned<Address>& address, std::uint32_t port, const std::string& body, std::uint32_t) {
       return Exchange(
           address, L"/x", [&](HTTPRequest* request) { PostText(request, body); }, port);
     }},
    {"one piece",
     [](const Owned<Address>& address, std::uint32_t port, const std::string& body,
        std::uint32_t silenceMs) {
       const OnePiece piece(address, port);
       piece.extended->SetOption(std::uintptr_t{silenceMs});
       piece.Send(body);
       EXPECT_FALSE(piece.extended->IsSending());
       return piece.Respond();
     }},
    {"streamed",
     [](const Owned<Address>& address, std::uint32_t port, const std::string& body,
        std::uint32_t silenceMs) {
       Streaming stream(address, port);
       stream.extended->SetOption(std::uintptr_t{silenceMs});
       stream.request->SetPassword(L"secret");  // goes out at once, over TLS
       const bool sent = stream.Begin() == S_OK && stream.Write(Framed(body)) == S_OK &&
                         stream.Write(kLastChunk) == S_OK &&
                         stream.extended->FinishChunkedSend() == S_OK;
       EXPECT_FALSE(stream.extended->IsSending()) << sent;
       return stream.Respond();
     }},
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_HOST_STREAMING_H_
