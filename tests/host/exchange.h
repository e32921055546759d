// One exchange with an address, and everything that a client sees of it.
#ifndef CORVANE_TESTS_HOST_EXCHANGE_H_
#define CORVANE_TESTS_HOST_EXCHANGE_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "base/utf8.h"
#include "corvane/transport.h"
#include "host/network_address.h"

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
  std::wstring connection;  // the field X-Connection
  std::wstring failure;
};

// What GetResponse of a configured request gives.
inline Exchanged GetExchanged(const Owned<Address>& address, HTTPRequest* request) {
  Exchanged seen;
  HTTPResponse* response = reinterpret_cast<HTTPResponse*>(&seen);  // must be overwritten
  seen.result = request->GetResponse(&response);
  seen.error = request->GetLastError();
  seen.failure = address->GetLastFailure();
  if (!response) return seen;
  seen.status = response->GetStatusCode();
  seen.contentType = response->GetContentType();
  seen.connection = OrEmpty(response->GetHeader(L"x-connection"));
  const char* const content = response->GetContent();
  seen.body.assign(content, response->GetContentLength());
  EXPECT_EQ(content[seen.body.size()], '\0');
  return seen;
}

using Configure = std::function<void(HTTPRequest*)>;

inline Exchanged Exchange(const Owned<Address>& address, const std::wstring& path,
                          const Configure& configure = {}, std::uint32_t port = 8080) {
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

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_HOST_EXCHANGE_H_
