// Owned handles of libcurl.
#ifndef CORVANE_HOST_HTTP_CURL_HANDLES_H_
#define CORVANE_HOST_HTTP_CURL_HANDLES_H_

#include <curl/curl.h>

#include <memory>

namespace Corvane::Host {

template <auto Free>
struct CurlDeleter {
  template <typename T>
  void operator()(T* object) const {
    Free(object);
  }
};

using CurlEasy = std::unique_ptr<CURL, CurlDeleter<curl_easy_cleanup>>;
using CurlUrl = std::unique_ptr<CURLU, CurlDeleter<curl_url_cleanup>>;
using CurlText = std::unique_ptr<char, CurlDeleter<curl_free>>;

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_CURL_HANDLES_H_
