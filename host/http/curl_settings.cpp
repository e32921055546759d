#include "host/http/curl_settings.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "base/utf8.h"

namespace Corvane::Host {

bool ConfigureSafety(CURL* handle, const TlsTrust& trust) {
  const auto set = [handle](CURLoption option, auto value) {
    return curl_easy_setopt(handle, option, value) == CURLE_OK;
  };
  const long verify = trust.verify && !trust.pin ? 1 : 0;
  // Curl looks at the key when the handshake ends, before it sends, and reuses no connection that
  // was held to another.
  if (trust.pin && !set(CURLOPT_PINNEDPUBLICKEY, trust.pin->key.c_str())) return false;
  if (!trust.pinFile.empty() && !set(CURLOPT_CERTINFO, 1L)) return false;
  if (!trust.caFile.empty() &&
      // Without the folder, the system's certificates would count beside the file's.
      !(set(CURLOPT_CAINFO, trust.caFile.c_str()) &&
        set(CURLOPT_CAPATH, static_cast<const char*>(nullptr)))) {
    return false;
  }
  return set(CURLOPT_PROTOCOLS_STR, "http,https") && set(CURLOPT_FOLLOWLOCATION, 0L) &&
         set(CURLOPT_PROXY, "") && set(CURLOPT_NETRC, static_cast<long>(CURL_NETRC_IGNORED)) &&
         set(CURLOPT_NOSIGNAL, 1L) && set(CURLOPT_HTTP09_ALLOWED, 0L) &&
         // A resolver that hangs must not outlast the time-out.
         set(CURLOPT_QUICK_EXIT, 1L) &&
         set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1)) &&
         set(CURLOPT_SSL_VERIFYPEER, verify) && set(CURLOPT_SSL_VERIFYHOST, 2 * verify);
}

long CurlMilliseconds(std::int64_t milliseconds) {
  constexpr std::int64_t kMax = std::numeric_limits<std::int32_t>::max();  // curl's
  return static_cast<long>(std::clamp<std::int64_t>(milliseconds, 1, kMax));
}

std::wstring Words(CURLcode code, const CurlMessage& message) {
  const char* const text = message[0] ? message.data() : curl_easy_strerror(code);
  std::string printable(text, strnlen(text, message.size()));
  std::replace_if(
      printable.begin(), printable.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
  return WideFromLatin1(printable);
}

}  // namespace Corvane::Host
