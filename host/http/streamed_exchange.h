// One HTTP message whose body is written as it is made, and the answer to it.
#ifndef CORVANE_HOST_HTTP_STREAMED_EXCHANGE_H_
#define CORVANE_HOST_HTTP_STREAMED_EXCHANGE_H_

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "host/http/curl_connection.h"
#include "host/http/response_reader.h"

namespace Corvane::Host {

struct StreamLimits {
  std::int64_t connectMs = 0;
  std::int64_t silenceMs = 0;   // without a byte taken, or without one of the response
  std::int64_t responseMs = 0;  // the response in all, from the moment when it is waited for
  std::size_t maxBodyBytes = 0;
};

// Nothing is buffered here: a sender waits until the connection has taken its bytes. The response
// is looked for all the while; once the head of a final one is there, nothing more is sent, and the
// rest of it is read within the limits. One thread; a cancel takes effect within kSliceMs. Throws
// bad_alloc.
class StreamedExchange {
 public:
  // `cancelled` must outlive it.
  StreamedExchange(const StreamLimits& limits, const std::atomic<bool>& cancelled);

  // Connects and sends the head.
  bool Open(const std::string& url, const TlsTrust& trust, std::string_view head);
  // Returns when all bytes have been taken, adding their number to `sent` as they go, or, with
  // false, when the exchange has ended before: Receive tells how.
  bool Send(std::string_view bytes, std::atomic<std::uint64_t>* sent);
  // The response, or why there is none. Once.
  WireResult Receive();

 private:
  using Clock = std::chrono::steady_clock;
  using Step = CurlConnection::Step;

  Step ReceiveBlock();
  void ReceiveWaiting();
  void ReceiveResponse();
  void ConnectionLost();
  bool CheckCancelled();
  void Pause(short events, Clock::time_point until);

  const StreamLimits m_limits;
  const std::atomic<bool>& m_cancelled;
  CurlConnection m_connection;
  ResponseReader m_reader;  // has every failure of the exchange, too
  bool m_writable = false;  // the last pause ended because the connection would take bytes
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_STREAMED_EXCHANGE_H_
