// The connections to one device.
#ifndef CORVANE_HOST_HTTP_CONNECTION_POOL_H_
#define CORVANE_HOST_HTTP_CONNECTION_POOL_H_

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/http/curl_connection.h"
#include "host/http/exchange_clock.h"

namespace Corvane::Host {

// A connection, or an error code with a remark for people.
struct Connected {
  std::unique_ptr<CurlConnection> connection;
  bool kept = false;  // it has served before, and the device may close it at any time
  std::uint32_t error = 0;
  std::wstring remark;
};

// Any thread.
class ConnectionPool {
 public:
  enum class Kind { kAny, kNew };

  explicit ConnectionPool(TlsTrust trust) : m_trust(std::move(trust)) {}

  // To the host and port of `url`: with Kind::kAny one that waits, if the device has said nothing
  // on it since. With a pin file, for TLS, it has shown the key that is recorded now. Where none
  // is, a connection that carries nothing fetches the key, and that is recorded; what it is for is
  // then held to it like all that follows. Throws bad_alloc.
  Connected Connect(const std::string& url, Kind kind, const ExchangeClock& clock,
                    const std::atomic<bool>& cancelled);
  // One on which the last exchange ended cleanly.
  void GiveBack(std::unique_ptr<CurlConnection> connection);

 private:
  struct Idle {
    std::unique_ptr<CurlConnection> connection;
    std::chrono::steady_clock::time_point since;
  };

  static Connected Open(const std::string& url, const TlsTrust& trust, const ExchangeClock& clock,
                        const std::atomic<bool>& cancelled);
  PinLookup FindPin(const std::string& url, const ExchangeClock& clock,
                    const std::atomic<bool>& cancelled) const;
  std::unique_ptr<CurlConnection> TakeIdle(const std::string& url, const TlsTrust& trust);

  const TlsTrust m_trust;  // without a pin
  std::mutex m_mutex;
  std::vector<Idle> m_idle;  // guarded by m_mutex; the longest idle first
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_CONNECTION_POOL_H_
