// A connection that curl opens and its owner speaks on.
#ifndef CORVANE_HOST_HTTP_CURL_CONNECTION_H_
#define CORVANE_HOST_HTTP_CURL_CONNECTION_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "host/http/curl_handles.h"
#include "host/http/curl_settings.h"

namespace Corvane::Host {

// Curl resolves the name, connects and speaks TLS; the bytes are those of the caller. One thread.
// The destructor closes. No operation raises SIGPIPE: curl sends with MSG_NOSIGNAL, under TLS too.
class CurlConnection {
 public:
  enum class Step {
    kMoved,   // some bytes
    kWait,    // none now
    kEnded,   // none any more: the device has closed in good order
    kFailed,  // Why() tells
  };

  CurlConnection() = default;
  CurlConnection(const CurlConnection&) = delete;
  CurlConnection& operator=(const CurlConnection&) = delete;

  // Connects to the URL's host and port; 0, or an error code that Why() explains. A cancel takes
  // effect within about a second. Throws bad_alloc.
  std::uint32_t Open(const std::string& url, const TlsTrust& trust, std::int64_t connectMs,
                     const std::atomic<bool>& cancelled);
  // Neither waits. After kWait, the same bytes must be tried first.
  Step Send(std::string_view bytes, std::size_t* taken);
  Step Receive(char* buffer, std::size_t size, std::size_t* received);
  // Waits for poll's `events`, or so long; those that came.
  short Await(short events, int milliseconds) const;

  // As PeerKey, of an open connection.
  std::string ShownKey() const;

  const std::wstring& Why() const { return m_why; }

 private:
  Step Result(CURLcode code);
  static int OnProgress(void* cancelled, curl_off_t, curl_off_t, curl_off_t, curl_off_t);

  CurlMessage m_message{};  // the handle's
  CurlEasy m_handle;
  curl_socket_t m_socket = CURL_SOCKET_BAD;
  std::wstring m_why;
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_CURL_CONNECTION_H_
