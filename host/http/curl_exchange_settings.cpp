// What curl is told before an exchange. Every setting that guards something is checked: an exchange
// does not run without it.
#include <new>

#include "host/http/curl_exchange.h"

namespace Corvane::Host {
template <typename Value>
bool CurlExchange::Set(CURLoption option, Value value) {
  return curl_easy_setopt(m_handle, option, value) == CURLE_OK;
}

bool CurlExchange::Configure() {
  return ConfigureSafety(m_handle, m_trust) && ConfigureTransfer() && ConfigureMessage() &&
         ConfigureCredentials();
}

bool CurlExchange::ConfigureTransfer() {
  return Set(CURLOPT_CONNECTTIMEOUT_MS, CurlMilliseconds(m_limits.connectMs)) &&
         Set(CURLOPT_TIMEOUT_MS, m_limits.totalMs == 0 ? 0L : CurlMilliseconds(m_limits.totalMs)) &&
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
  for (const auto& [name, value] : m_request.headers) {
    // "Name;" is how curl is told of a header without a value.
    AppendHeaderLine(std::string(name).append(value.empty() ? ";" : ": ").append(value));
  }
  // Without a value: none, where curl has one for POST.
  AppendHeaderLine("Content-Type: " + m_request.contentType);
  AppendHeaderLine("Expect:");  // many devices do not know 100-continue
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

void CurlExchange::AppendHeaderLine(const std::string& line) {
  curl_slist* const list = curl_slist_append(m_headerLines.get(), line.c_str());
  if (!list) throw std::bad_alloc();
  static_cast<void>(m_headerLines.release());
  m_headerLines.reset(list);
}

bool CurlExchange::ConfigureCredentials() {
  if (m_request.userName.empty() && m_request.password.empty()) return true;
  // One scheme alone would be begun before the device asks for it; nobody has a token to bear.
  return Set(CURLOPT_HTTPAUTH, m_request.allowsBasic ? CURLAUTH_BASIC | CURLAUTH_DIGEST
                                                     : CURLAUTH_DIGEST | CURLAUTH_BEARER) &&
         Set(CURLOPT_USERNAME, m_request.userName.c_str()) &&
         Set(CURLOPT_PASSWORD, m_request.password.c_str());
}

}  // namespace Corvane::Host
