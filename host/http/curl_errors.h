// What a failed curl transfer means.
#ifndef CORVANE_HOST_HTTP_CURL_ERRORS_H_
#define CORVANE_HOST_HTTP_CURL_ERRORS_H_

#include <curl/curl.h>

#include <cstdint>

namespace Corvane::Host {

// The system error code of a code other than CURLE_OK.
std::uint32_t ErrorFromCurl(CURLcode code);

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_CURL_ERRORS_H_
