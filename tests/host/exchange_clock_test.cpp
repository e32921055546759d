// The limits of an exchange, by a clock that stands until it is moved.
#include "host/http/exchange_clock.h"

#include <gtest/gtest.h>

namespace Corvane::Test {
namespace {

using namespace std::chrono_literals;
using Host::ExchangeClock;

struct ExchangeLimit : testing::Test {
  ExchangeClock::Time m_now{100h};
  ExchangeClock Clock(const Host::ExchangeLimits& limits) {
    return ExchangeClock(limits, [this] { return m_now; });
  }
  // What is told after so long, and not a millisecond before.
  std::wstring OverAfter(const ExchangeClock& clock, std::chrono::milliseconds time) {
    EXPECT_EQ(clock.LeftMs(), time.count());
    m_now += time - 1ms;
    EXPECT_FALSE(clock.Over());
    m_now += 1ms;
    EXPECT_EQ(clock.LeftMs(), 0);
    return clock.Over().value_or(L"not over");
  }
};

TEST_F(ExchangeLimit, InAllCountsFromTheBeginning) {
  ExchangeClock clock = Clock({1'000, 1'500, 0, 0});
  EXPECT_EQ(clock.ConnectMs(), 1'000);
  m_now += 700ms;
  EXPECT_EQ(clock.ConnectMs(), 800);
  clock.Sending();
  clock.Awaiting();
  clock.Received();
  EXPECT_EQ(OverAfter(clock, 800ms), L"timed out after 1500 ms");
  EXPECT_EQ(clock.ConnectMs(), 1);
}

TEST_F(ExchangeLimit, OfSilenceCountsFromTheLastByteThatWasDue) {
  ExchangeClock clock = Clock({9'000, 0, 300, 1'000});
  m_now += 1h;
  EXPECT_FALSE(clock.Over());  // connecting
  EXPECT_EQ(clock.ConnectMs(), 9'000);
  clock.Sending();
  m_now += 200ms;
  clock.Received();  // while the body goes out
  EXPECT_EQ(OverAfter(clock, 100ms), L"the device took nothing for 300 ms");
  clock.Sending();
  m_now += 200ms;
  clock.Awaiting();
  m_now += 200ms;
  clock.Awaiting();  // it is already
  clock.Received();
  EXPECT_EQ(OverAfter(clock, 300ms), L"the device was silent for 300 ms");
}

TEST_F(ExchangeLimit, OfTheResponseCountsFromTheEndOfTheBody) {
  ExchangeClock clock = Clock({9'000, 0, 300, 1'000});
  clock.Sending();
  clock.Awaiting();
  for (int i = 0; i < 4; ++i) {
    m_now += 200ms;
    clock.Received();
  }
  EXPECT_EQ(OverAfter(clock, 200ms), L"no whole response within 1000 ms");
  clock.Sending();  // again, after a challenge
  EXPECT_FALSE(clock.Over());
}

}  // namespace
}  // namespace Corvane::Test
