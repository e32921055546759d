#include "host/http/curl_connection.h"

#include <poll.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "base/letter_case.h"
#include "base/utf8.h"
#include "corvane/error_codes.h"
#include "host/http/request_url.h"
#include "host/trust/peer_key.h"

namespace Corvane::Host {
namespace {

// Of a code other than CURLE_OK, while connecting.
std::uint32_t ErrorFromCurl(CURLcode code) {
  switch (code) {
    case CURLE_OPERATION_TIMEDOUT:
      return kErrorTimeout;
    case CURLE_COULDNT_RESOLVE_HOST:
      return kErrorNameNotResolved;
    case CURLE_COULDNT_CONNECT:
    case CURLE_INTERFACE_FAILED:
      return kErrorCannotConnect;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CRL_BADFILE:
    case CURLE_SSL_ENGINE_INITFAILED:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
      return kErrorSecureFailure;
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
      return kErrorConnection;
    case CURLE_ABORTED_BY_CALLBACK:
      return kErrorCancelled;
    case CURLE_URL_MALFORMAT:
    case CURLE_BAD_FUNCTION_ARGUMENT:
      return kErrorInvalidParameter;
    case CURLE_OUT_OF_MEMORY:
      return kErrorOutOfMemory;
    default:
      return kErrorInternal;
  }
}

}  // namespace

// Every setting that guards something is checked: nothing is opened without it.
bool CurlConnection::Configure(const std::string& url, const TlsTrust& trust,
                               std::int64_t connectMs, const std::atomic<bool>& cancelled) {
  const auto set = [this](CURLoption option, auto value) {
    return curl_easy_setopt(m_handle.get(), option, value) == CURLE_OK;
  };
  // As curl takes a limit: never its 0 for none.
  const auto limit = static_cast<long>(
      std::clamp<std::int64_t>(connectMs, 1, std::numeric_limits<std::int32_t>::max()));
  const long verify = trust.verify && !trust.pin ? 1 : 0;
  // Curl looks at the key when the handshake ends.
  if (trust.pin && !set(CURLOPT_PINNEDPUBLICKEY, trust.pin->key.c_str())) return false;
  if (!trust.pinFile.empty() && !set(CURLOPT_CERTINFO, 1L)) return false;
  if (!trust.caFile.empty() &&
      // Without the folder, the system's certificates would count beside the file's.
      !(set(CURLOPT_CAINFO, trust.caFile.c_str()) &&
        set(CURLOPT_CAPATH, static_cast<const char*>(nullptr)))) {
    return false;
  }
  return set(CURLOPT_URL, url.c_str()) && set(CURLOPT_CONNECT_ONLY, 1L) &&
         set(CURLOPT_PROTOCOLS_STR, "http,https") && set(CURLOPT_PROXY, "") &&
         set(CURLOPT_NETRC, static_cast<long>(CURL_NETRC_IGNORED)) && set(CURLOPT_NOSIGNAL, 1L) &&
         // A resolver that hangs must not outlast the time-out.
         set(CURLOPT_QUICK_EXIT, 1L) && set(CURLOPT_CONNECTTIMEOUT_MS, limit) &&
         // Offers no other version to TLS.
         set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1)) &&
         set(CURLOPT_SSL_VERIFYPEER, verify) && set(CURLOPT_SSL_VERIFYHOST, 2 * verify) &&
         set(CURLOPT_ERRORBUFFER, m_message.data()) && set(CURLOPT_XFERINFOFUNCTION, &OnProgress) &&
         set(CURLOPT_XFERINFODATA, &cancelled) && set(CURLOPT_NOPROGRESS, 0L);
}

std::uint32_t CurlConnection::Open(const std::string& url, const TlsTrust& trust,
                                   std::int64_t connectMs, const std::atomic<bool>& cancelled) {
  m_handle.reset(curl_easy_init());
  if (!m_handle) throw std::bad_alloc();
  if (!Configure(url, trust, connectMs, cancelled)) {
    m_why = L"the request cannot be sent";
    return kErrorInvalidParameter;
  }
  CURL* const handle = m_handle.get();
  CURLcode code = curl_easy_perform(handle);
  if (code == CURLE_OK) code = curl_easy_getinfo(handle, CURLINFO_ACTIVESOCKET, &m_socket);
  if (code == CURLE_OK && m_socket == CURL_SOCKET_BAD) code = CURLE_COULDNT_CONNECT;
  if (code == CURLE_OK) {
    curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 1L);  // the connection may outlive `cancelled`
    m_origin = OriginOf(url);
    m_pinned = trust.pin ? trust.pin->key : std::string();
    return 0;
  }
  if (code == CURLE_OPERATION_TIMEDOUT) {
    m_why = L"no connection within " + std::to_wstring(connectMs) + L" ms";
  } else if (code == CURLE_ABORTED_BY_CALLBACK) {
    m_why = L"cancelled";
  } else if (code == CURLE_SSL_PINNEDPUBKEYNOTMATCH && trust.pin) {
    m_why = PinFile(trust.pinFile).TellOfChange(*trust.pin, PeerKey(handle));
  } else {
    m_why = Words(code);
  }
  return ErrorFromCurl(code);
}

// Why an operation failed, in curl's words, which can quote the device: printable ASCII.
std::wstring CurlConnection::Words(CURLcode code) const {
  const char* const text = m_message[0] ? m_message.data() : curl_easy_strerror(code);
  std::wstring words = WideFromLatin1(std::string_view(text, strnlen(text, m_message.size())));
  std::replace_if(
      words.begin(), words.end(), [](wchar_t c) { return c < L' ' || c > L'~'; }, L'?');
  return words;
}

CurlConnection::Step CurlConnection::Result(CURLcode code) {
  if (code == CURLE_OK) return Step::kMoved;
  if (code == CURLE_AGAIN) return Step::kWait;
  m_why = Words(code);
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

bool CurlConnection::LeadsTo(const std::string& url, const TlsTrust& trust) const {
  return m_origin == OriginOf(url) && m_pinned == (trust.pin ? trust.pin->key : std::string());
}

int CurlConnection::OnProgress(void* cancelled, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  return static_cast<const std::atomic<bool>*>(cancelled)->load() ? 1 : 0;
}

}  // namespace Corvane::Host
