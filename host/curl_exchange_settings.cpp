// What curl is told before an exchange. Every setting that guards something is checked: an exchange
// does not run without it.
#include <algorithm>
#include <limits>
#include <new>

#include "host/curl_exchange.h"

namespace Corvane::Host {
namespace {

long Milliseconds(std::int64_t milliseconds) {
  constexpr std::int64_t kMax = std::numeric_limits<std::int32_t>::max();  // curl's
  return static_cast<long>(std::clamp<std::int64_t>(milliseconds, 1, kMax));
}

}  // namespace

template <typename Value>
bool CurlExchange::Set(CURLoption option, Value value) {
  return curl_easy_setopt(m_handle, option, value) == CURLE_OK;
}

bool CurlExchange::Configure() {
  return ConfigureSafety() && ConfigureTransfer() && ConfigureMessage() && ConfigureCredentials();
}

bool CurlExchange::ConfigureSafety() {
  const long verify = m_trust.verify ? 1 : 0;
  if (!m_trust.caFile.empty() &&
      // Without the folder, the system's certificates would count beside the file's.
      !(Set(CURLOPT_CAINFO, m_trust.caFile.c_str()) &&
        Set(CURLOPT_CAPATH, static_cast<const char*>(nullptr)))) {
    return false;
  }
  return Set(CURLOPT_PROTOCOLS_STR, "http,https") && Set(CURLOPT_FOLLOWLOCATION, 0L) &&
         Set(CURLOPT_PROXY, "") && Set(CURLOPT_NETRC, static_cast<long>(CURL_NETRC_IGNORED)) &&
         Set(CURLOPT_NOSIGNAL, 1L) && Set(CURLOPT_HTTP09_ALLOWED, 0L) &&
         Set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1)) &&
         Set(CURLOPT_SSL_VERIFYPEER, verify) && Set(CURLOPT_SSL_VERIFYHOST, 2 * verify);
}

bool CurlExchange::ConfigureTransfer() {
  return Set(CURLOPT_CONNECTTIMEOUT_MS, Milliseconds(m_limits.connectMs)) &&
         Set(CURLOPT_TIMEOUT_MS, Milliseconds(m_limits.totalMs)) &&
         // A resolver that hangs must not outlast the time-out.
         Set(CURLOPT_QUICK_EXIT, 1L) &&
         Set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(m_limits.maxBodyBytes)) &&
         Set(CURLOPT_ERRORBUFFER, m_message.data()) && Set(CURLOPT_HEADERFUNCTION, &OnHeader) &&
         Set(CURLOPT_HEADERDATA, this) && Set(CURLOPT_WRITEFUNCTION, &OnWrite) &&
         Set(CURLOPT_WRITEDATA, this) && Set(CURLOPT_READFUNCTION, &OnRead) &&
         Set(CURLOPT_READDATA, this) && Set(CURLOPT_SEEKFUNCTION, &OnSeek) &&
         Set(CURLOPT_SEEKDATA, this) && Set(CURLOPT_DEBUGFUNCTION, &OnDebug) &&
         Set(CURLOPT_DEBUGDATA, this) && Set(CURLOPT_VERBOSE, 1L) &&
         Set(CURLOPT_XFERINFOFUNCTION, &OnProgress) && Set(CURLOPT_XFERINFODATA, this) &&
         Set(CURLOPT_NOPROGRESS, 0L);
}

bool CurlExchange::ConfigureMessage() {
  for (const std::string& line : m_request.headerLines) {
    curl_slist* const list = curl_slist_append(m_headerLines.get(), line.c_str());
    if (!list) throw std::bad_alloc();
    static_cast<void>(m_headerLines.release());
    m_headerLines.reset(list);
  }
  bool set = Set(CURLOPT_URL, m_request.url.c_str()) && Set(CURLOPT_PATH_AS_IS, 1L) &&
             Set(CURLOPT_HTTPHEADER, m_headerLines.get());
  if (m_request.hasBody) {
    set = set && Set(CURLOPT_POST, 1L) &&
          Set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(m_request.body.size()));
  } else if (m_request.verb == "HEAD") {
    return set && Set(CURLOPT_NOBODY, 1L);
  } else {
    set = set && Set(CURLOPT_HTTPGET, 1L);
  }
  // Curl resends a request whose reused connection broke before any answer, unless it would have to
  // rewind a body. What has none and is not safe to repeat goes over a new connection.
  if (m_request.verb != "GET" && m_request.body.empty())
    set = set && Set(CURLOPT_FRESH_CONNECT, 1L);
  return set && Set(CURLOPT_CUSTOMREQUEST, m_request.verb.c_str());
}

bool CurlExchange::ConfigureCredentials() {
  if (m_request.userName.empty() && m_request.password.empty()) return true;
  return Set(CURLOPT_HTTPAUTH, CURLAUTH_BASIC | CURLAUTH_DIGEST) &&
         Set(CURLOPT_USERNAME, m_request.userName.c_str()) &&
         Set(CURLOPT_PASSWORD, m_request.password.c_str());
}

}  // namespace Corvane::Host
