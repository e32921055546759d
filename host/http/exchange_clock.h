// How long one exchange may take.
#ifndef CORVANE_HOST_HTTP_EXCHANGE_CLOCK_H_
#define CORVANE_HOST_HTTP_EXCHANGE_CLOCK_H_

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace Corvane::Host {

struct ExchangeLimits {
  std::int64_t connectMs = 0;
  std::int64_t totalMs = 0;     // the exchange in all; 0: no such limit, but the next two
  std::int64_t silenceMs = 0;   // without a byte of the body taken, or one of the response
  std::int64_t responseMs = 0;  // the response in all, from the moment when it is waited for
};

// Starts when it is made. What the device says while the body goes out, as interim responses, does
// not count as taking it. One thread.
class ExchangeClock {
 public:
  using Time = std::chrono::steady_clock::time_point;
  explicit ExchangeClock(const ExchangeLimits& limits,
                         std::function<Time()> now = &std::chrono::steady_clock::now);

  // For one connection, in what is left of the exchange: at least 1.
  std::int64_t ConnectMs() const;
  // Something is to be sent now, or the connection has taken some of it.
  void Sending();
  // The response is waited for from now on, if it was not before.
  void Awaiting();
  // A part of the response has come.
  void Received();
  // Why the exchange has taken too long, for people; none while it has not.
  std::optional<std::wstring> Over() const;
  // Until it may be over: at least 0.
  std::int64_t LeftMs() const;

 private:
  // The limit that is reached first, and when.
  struct Limit {
    Time end;
    std::wstring remark;
  };
  Limit Next() const;

  const ExchangeLimits m_limits;
  const std::function<Time()> m_now;
  const Time m_begin;
  std::optional<Time> m_moved;    // when a byte last went the way that counts
  std::optional<Time> m_awaited;  // the response, since then
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_EXCHANGE_CLOCK_H_
