// Owned handles of libcurl.
#ifndef CORVANE_HOST_HTTP_CURL_HANDLES_H_
#define CORVANE_HOST_HTTP_CURL_HANDLES_H_

#include <curl/curl.h>

#include <memory>

#include "host/common/freed_by.h"

namespace Corvane::Host {

using CurlEasy = std::unique_ptr<CURL, FreedBy<curl_easy_cleanup>>;
using CurlUrl = std::unique_ptr<CURLU, FreedBy<curl_url_cleanup>>;
using CurlText = std::unique_ptr<char, FreedBy<curl_free>>;

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_CURL_HANDLES_H_
