// A request that also is a TqHTTPRequestEx.
#ifndef CORVANE_HOST_COMMON_EXTENDED_REQUEST_H_
#define CORVANE_HOST_COMMON_EXTENDED_REQUEST_H_

#include <cstdint>

#include "corvane/tq_http_request_ex.h"

namespace Corvane::Host {

// `Base` is an HTTPRequest; what both interfaces have is its.
template <typename Base>
class ExtendedRequest : public Base, public TqHTTPRequestEx {
 public:
  using Base::Base;

  const wchar_t* GetURI() override { return Base::GetURI(); }
  void SetURI(const wchar_t* path) override { Base::SetURI(path); }
  void SetUserName(const wchar_t* userName) override { Base::SetUserName(userName); }
  void SetPassword(const wchar_t* password) override { Base::SetPassword(password); }
  void SetMethod(const wchar_t* verb) override { Base::SetMethod(verb); }
  void SetContentType(const wchar_t* type) override { Base::SetContentType(type); }
  void SetRequestData(const void* data, std::uint32_t size) override {
    Base::SetRequestData(data, size);
  }
  std::uint32_t GetLastError() override { return Base::GetLastError(); }
  void Cancel() override { Base::Cancel(); }

  using Base::SetOption;
  using TqHTTPRequestEx::SetOption;
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_COMMON_EXTENDED_REQUEST_H_
