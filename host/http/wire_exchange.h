// One HTTP message there and the answer to it, over one connection.
#ifndef CORVANE_HOST_HTTP_WIRE_EXCHANGE_H_
#define CORVANE_HOST_HTTP_WIRE_EXCHANGE_H_

#include <atomic>
#include <cstdint>
#include <memory>
#include <string_view>

#include "host/http/curl_connection.h"
#include "host/http/exchange_clock.h"
#include "host/http/response_reader.h"

namespace Corvane::Host {

// Which final response, seen before all is sent, ends the sending. A device may begin to answer a
// good document before it has read all of it.
enum class StopSending { kAtAnyAnswer, kAtRefusal };

// Nothing is buffered here: a sender waits until the connection has taken its bytes. The response
// is looked for all the while; once it ends the sending, the rest of it is read within the limits.
// One thread; a cancel takes effect within kSliceMs. Throws bad_alloc.
class WireExchange {
 public:
  // `clock` and `cancelled` must outlive it.
  WireExchange(std::unique_ptr<CurlConnection> connection, ResponseReader reader, StopSending stop,
               ExchangeClock* clock, const std::atomic<bool>& cancelled);

  // Returns when all bytes have been taken, adding their number to `sent` as they go, or, with
  // false, when the exchange has ended before: Receive tells how.
  bool Send(std::string_view bytes, std::atomic<std::uint64_t>* sent);
  // The response, or why there is none. Once.
  WireResult Receive();

  // The device has said something.
  bool Heard() const { return m_heard; }
  std::unique_ptr<CurlConnection> TakeConnection() { return std::move(m_connection); }

 private:
  using Step = CurlConnection::Step;

  bool GoesOn();
  bool AnswerEndsSending() const;
  Step ReceiveBlock();
  void ReceiveWaiting();
  void ReceiveResponse();
  void ConnectionLost();
  bool IsOver();
  void Pause(short events);

  std::unique_ptr<CurlConnection> m_connection;
  ResponseReader m_reader;  // has every failure of the exchange, too
  const StopSending m_stop;
  ExchangeClock* const m_clock;
  const std::atomic<bool>& m_cancelled;
  bool m_heard = false;
  bool m_writable = false;  // the last pause ended because the connection would take bytes
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_WIRE_EXCHANGE_H_
