#include "host/http/exchange_clock.h"

#include <algorithm>
#include <utility>

namespace Corvane::Host {
namespace {

using std::chrono::milliseconds;

std::wstring ClockMilliseconds(std::int64_t limit) { return std::to_wstring(limit) + L" ms"; }

}  // namespace

ExchangeClock::ExchangeClock(const ExchangeLimits& limits, std::function<Time()> now)
    : m_limits(limits), m_now(std::move(now)), m_begin(m_now()) {}

std::int64_t ExchangeClock::ConnectMs() const {
  if (m_limits.totalMs == 0) return m_limits.connectMs;
  return std::max<std::int64_t>(std::min(m_limits.connectMs, LeftMs()), 1);
}

void ExchangeClock::Sending() {
  m_moved = m_now();
  m_awaited.reset();
}

void ExchangeClock::Awaiting() {
  if (!m_awaited) m_moved = m_awaited = m_now();
}

void ExchangeClock::Received() {
  if (m_awaited) m_moved = m_now();
}

ExchangeClock::Limit ExchangeClock::Next() const {
  if (m_limits.totalMs != 0) {
    return {m_begin + milliseconds(m_limits.totalMs),
            L"timed out after " + ClockMilliseconds(m_limits.totalMs)};
  }
  if (!m_moved) return {Time::max(), {}};  // connecting has a limit of its own
  const Time silent = *m_moved + milliseconds(m_limits.silenceMs);
  if (!m_awaited)
    return {silent, L"the device took nothing for " + ClockMilliseconds(m_limits.silenceMs)};
  const Time late = *m_awaited + milliseconds(m_limits.responseMs);
  if (late <= silent)
    return {late, L"no whole response within " + ClockMilliseconds(m_limits.responseMs)};
  return {silent, L"the device was silent for " + ClockMilliseconds(m_limits.silenceMs)};
}

std::optional<std::wstring> ExchangeClock::Over() const {
  Limit limit = Next();
  if (m_now() < limit.end) return std::nullopt;
  return std::move(limit.remark);
}

std::int64_t ExchangeClock::LeftMs() const {
  const Time now = m_now();
  const Time end = Next().end;
  return end <= now ? 0 : std::chrono::ceil<milliseconds>(end - now).count();
}

}  // namespace Corvane::Host
