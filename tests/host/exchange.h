// Exchanges with an address, in each way that a body goes out, and everything that a client sees of
// them.
#ifndef CORVANE_TESTS_HOST_EXCHANGE_H_
#define CORVANE_TESTS_HOST_EXCHANGE_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "base/utf8.h"
#include "corvane/error_codes.h"
#include "corvane/transport.h"
#include "host/network_address.h"
#include "tests/support/hr.h"

namespace Corvane::Test {

struct Disposer {
  void operator()(auto* object) const { object->Dispose(); }
};

template <typename T>
using Owned = std::unique_ptr<T, Disposer>;

struct Exchanged {
  HRESULT result = E_UNEXPECTED;
  std::uint32_t error = 0;
  std::uint32_t status = 0;     // 0: no response
  std::uint32_t stepError = 0;  // of the step of a streaming that failed
  std::string body;
  std::wstring contentType;
  std::wstring failure;
};

// "200 body type", or the code of a failure, then "lost" where it leaves open what became of the
// body, and "early" where a step of the streaming has told it.
inline std::string Told(const Exchanged& seen) {
  std::string told = std::to_string(seen.error);
  if (seen.status != 0) told = std::to_string(seen.status) + ' ' + seen.body;
  if (!seen.contentType.empty()) told += ' ' + ToUtf8(seen.contentType);
  if (seen.result == kAnswerLost) told += " lost";
  return told + (seen.stepError != 0 ? " early" : "");
}

// What GetResponse of a configured request gives.
inline Exchanged GetExchanged(const Owned<Address>& address, HTTPRequest* request) {
  Exchanged seen;
  HTTPResponse* response = reinterpret_cast<HTTPResponse*>(&seen);  // must be overwritten
  seen.result = request->GetResponse(&response);
  seen.error = request->GetLastError();
  seen.failure = address->GetLastFailure();
  EXPECT_EQ(seen.failure.find(L"secret"), std::wstring::npos);
  const HRESULT told = seen.error == 0 ? S_OK : ResultFromError(seen.error);
  EXPECT_TRUE(seen.result == kAnswerLost || seen.result == told) << HrText(seen.result);
  if (!response) return seen;
  seen.status = response->GetStatusCode();
  seen.contentType = response->GetContentType();
  const char* const content = response->GetContent();
  seen.body.assign(content, response->GetContentLength());
  EXPECT_EQ(content[seen.body.size()], '\0');
  return seen;
}

using Configure = std::function<void(HTTPRequest*)>;

inline Exchanged Exchange(const Owned<Address>& address, const std::wstring& path,
                          const Configure& configure = {}, std::uint32_t port = kQuarnPort) {
  HTTPRequest* made = nullptr;
  EXPECT_EQ(address->CreateHTTPRequest(&made, port), S_OK);
  if (!made) return {};
  const Owned<HTTPRequest> request(made);
  request->SetURI(path.c_str());
  if (configure) configure(request.get());
  return GetExchanged(address, request.get());
}

inline void PostText(HTTPRequest* request, const std::string& body) {
  request->SetMethod(L"POST");
  request->SetRequestData(body.data(), static_cast<std::uint32_t>(body.size()));
}

// A device on a loopback port, asked for as 8080 and 631.
inline Host::NetworkOptions LoopbackOptions(std::uint16_t port) {
  Host::NetworkOptions options;
  options.host = L"127.0.0.1";
  options.portMap = {{kQuarnPort, port}, {kIppPort, port}};
  options.totalTimeoutMs = 20'000;
  return options;
}

inline Owned<Address> NetworkDevice(const Host::NetworkOptions& options) {
  return Owned<Address>(Host::CreateNetworkAddress(options));
}

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

constexpr const char* kWays[] = {"plain", "one piece", "streamed"};

// Brings a body to port 443 or 631 of an address.
inline Exchanged ExchangeBy(const std::string& way, const Owned<Address>& address,
                            std::uint32_t port, const std::string& body,
                            const Configure& configure = {}) {
  if (way == "plain") {
    const auto post = [&](HTTPRequest* request) {
      PostText(request, body);
      if (configure) configure(request);
    };
    return Exchange(address, L"/ipp", post, port);
  }
  const PrinterRequest printer(address, port);
  if (configure) configure(printer.request.get());
  if (way == "one piece") {
    printer.Send(body);
    EXPECT_FALSE(printer.extended->IsSending());
    return printer.Respond();
  }
  const HRESULT sent = printer.Stream(body);
  EXPECT_FALSE(printer.extended->IsSending());
  const std::uint32_t stepError = printer.request->GetLastError();
  EXPECT_HR(sent, stepError == 0 ? S_OK : ResultFromError(stepError));
  const std::uint64_t bytes = printer.extended->GetSentBytes();
  if (sent != S_OK) {
    EXPECT_HR(printer.Write("x"), sent);
    EXPECT_HR(printer.extended->FinishChunkedSend(), sent);
  }
  EXPECT_EQ(printer.extended->GetSentBytes(), bytes);
  Exchanged seen = printer.Respond();
  seen.stepError = stepError;
  return seen;
}

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_HOST_EXCHANGE_H_
