// A connection that curl opens and its owner speaks on.
#ifndef CORVANE_HOST_HTTP_CURL_CONNECTION_H_
#define CORVANE_HOST_HTTP_CURL_CONNECTION_H_

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host/http/curl_handles.h"
#include "host/trust/pin_file.h"

namespace Corvane::Host {

struct TlsTrust {
  bool verify = true;
  std::string caFile;            // empty: the system's certificates
  std::string pinFile;           // empty: no keys are recorded
  std::optional<PinnedKey> pin;  // the one key to show, whoever has signed its certificate
};

// Curl resolves the name, connects and speaks TLS, to the URL's own host, whatever the environment
// says; the bytes are those of the caller. One thread. The destructor closes. No operation raises
// SIGPIPE: curl sends with MSG_NOSIGNAL, under TLS too.
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

  // As PeerKey, of an open connection that had a pin file.
  std::string ShownKey() const;
  // The URL was `url`'s scheme, host and port, and the key was held to the same as `trust` does.
  bool LeadsTo(const std::string& url, const TlsTrust& trust) const;

  const std::wstring& Why() const { return m_why; }

 private:
  bool Configure(const std::string& url, const TlsTrust& trust, std::int64_t connectMs,
                 const std::atomic<bool>& cancelled);
  Step Result(CURLcode code);
  std::wstring Words(CURLcode code) const;
  static int OnProgress(void* cancelled, curl_off_t, curl_off_t, curl_off_t, curl_off_t);

  std::array<char, CURL_ERROR_SIZE> m_message{};  // the handle's
  CurlEasy m_handle;
  curl_socket_t m_socket = CURL_SOCKET_BAD;
  std::string m_origin;
  std::string m_pinned;  // the key; empty for none
  std::wstring m_why;
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_CURL_CONNECTION_H_
