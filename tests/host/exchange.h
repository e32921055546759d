// One exchange with an address, and everything that a client sees of it.
#ifndef CORVANE_TESTS_HOST_EXCHANGE_H_
#define CORVANE_TESTS_HOST_EXCHANGE_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "corvane/transport.h"

namespace Corvane::Test {

struct Disposer {
  template <typename T>
  void operator()(T* object) const {
    object->Dispose();
  }
};

template <typename T>
using Owned = std::unique_ptr<T, Disposer>;

struct Exchanged {
  HRESULT result = E_UNEXPECTED;
  std::uint32_t error = 0;
  std::uint32_t status = 0;  // 0: no response
  std::string body;
  std::wstring contentType;
  std::wstring failure;
};

inline Exchanged Exchange(Address* address, std::uint32_t port, const wchar_t* path,
                          const std::function<void(HTTPRequest*)>& configure = {}) {
  Exchanged seen;
  HTTPRequest* made = nullptr;
  EXPECT_EQ(address->CreateHTTPRequest(&made, port), S_OK);
  if (!made) return seen;
  const Owned<HTTPRequest> request(made);
  request->SetURI(path);
  if (configure) configure(request.get());
  HTTPResponse* response = reinterpret_cast<HTTPResponse*>(&seen);  // must be overwritten
  seen.result = request->GetResponse(&response);
  seen.error = request->GetLastError();
  seen.failure = address->GetLastFailure();
  if (!response) return seen;
  seen.status = response->GetStatusCode();
  seen.contentType = response->GetContentType();
  const char* const content = response->GetContent();
  seen.body.assign(content, response->GetContentLength());
  EXPECT_EQ(content[seen.body.size()], '\0');
  return seen;
}

inline void PostText(HTTPRequest* request, const std::string& body) {
  request->SetMethod(L"POST");
  request->SetRequestData(body.data(), static_cast<std::uint32_t>(body.size()));
}

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_HOST_EXCHANGE_H_
