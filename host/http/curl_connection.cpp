#include "host/http/curl_connection.h"

#include <poll.h>

#include <new>

#include "corvane/error_codes.h"
#include "host/http/curl_errors.h"
#include "host/trust/peer_key.h"
#include "host/trust/pinned_trust.h"

namespace Corvane::Host {

std::uint32_t CurlConnection::Open(const std::string& url, const TlsTrust& trust,
                                   std::int64_t connectMs, const std::atomic<bool>& cancelled) {
  m_handle.reset(curl_easy_init());
  if (!m_handle) throw std::bad_alloc();
  CURL* const handle = m_handle.get();
  const auto set = [handle](CURLoption option, auto value) {
    return curl_easy_setopt(handle, option, value) == CURLE_OK;
  };
  const bool configured = ConfigureSafety(handle, trust) && set(CURLOPT_URL, url.c_str()) &&
                          set(CURLOPT_CONNECT_ONLY, 1L) &&
                          set(CURLOPT_CONNECTTIMEOUT_MS, CurlMilliseconds(connectMs)) &&
                          set(CURLOPT_ERRORBUFFER, m_message.data()) &&
                          set(CURLOPT_XFERINFOFUNCTION, &OnProgress) &&
                          set(CURLOPT_XFERINFODATA, &cancelled) && set(CURLOPT_NOPROGRESS, 0L);
  if (!configured) {
    m_why = L"the request cannot be sent";
    return kErrorInvalidParameter;
  }
  CURLcode code = curl_easy_perform(handle);
  if (code == CURLE_OK) code = curl_easy_getinfo(handle, CURLINFO_ACTIVESOCKET, &m_socket);
  if (code == CURLE_OK && m_socket == CURL_SOCKET_BAD) code = CURLE_COULDNT_CONNECT;
  if (code == CURLE_OK) return 0;
  if (code == CURLE_OPERATION_TIMEDOUT) {
    m_why = L"no connection within " + std::to_wstring(connectMs) + L" ms";
  } else if (code == CURLE_ABORTED_BY_CALLBACK) {
    m_why = L"cancelled";
  } else if (code == CURLE_SSL_PINNEDPUBKEYNOTMATCH) {
    m_why = KeyChanged(handle, trust);
  } else {
    m_why = Words(code, m_message);
  }
  return ErrorFromCurl(code);
}

CurlConnection::Step CurlConnection::Result(CURLcode code) {
  if (code == CURLE_OK) return Step::kMoved;
  if (code == CURLE_AGAIN) return Step::kWait;
  m_why = Words(code, m_message);
  return Step::kFailed;
}

CurlConnection::Step CurlConnection::Send(std::string_view bytes, std::size_t* taken) {
  *taken = 0;
  const Step step = Result(curl_easy_send(m_handle.get(), bytes.data(), bytes.size(), taken));
  return step == Step::kMoved && *taken == 0 ? Step::kWait : step;
}

CurlConnection::Step CurlConnection::Receive(char* buffer, std::size_t size,
                                             std::size_t* received) {
  *received = 0;
  const Step step = Result(curl_easy_recv(m_handle.get(), buffer, size, received));
  return step == Step::kMoved && *received == 0 ? Step::kEnded : step;
}

short CurlConnection::Await(short events, int milliseconds) const {
  pollfd polled{m_socket, events, 0};
  return poll(&polled, 1, milliseconds) > 0 ? polled.revents : short{0};
}

std::string CurlConnection::ShownKey() const { return PeerKey(m_handle.get()); }

int CurlConnection::OnProgress(void* cancelled, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  return static_cast<const std::atomic<bool>*>(cancelled)->load() ? 1 : 0;
}

}  // namespace Corvane::Host
