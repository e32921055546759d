// The clock of all lifespans: ticks of 100 ns since 1601-01-01 UTC.
#ifndef CORVANE_CORE_FILE_TIME_H_
#define CORVANE_CORE_FILE_TIME_H_

#include <cstdint>

namespace Corvane {

// Lifespans count tenths of a second.
constexpr std::uint64_t kTicksPerLifespanUnit = 1'000'000;

// 1 and the current time, with the resolution of the system time (a millisecond); 0 when it cannot
// be had.
int GetCurrentFileTime(std::uint64_t* time);

// Nonzero when a value taken at `timestamp` is stale: older than `lifespan`, or from the future (a
// clock set back makes nothing immortal), or of an age that cannot be told. Exactly `lifespan` old
// is fresh; lifespan 0 is always fresh.
int IsExpired(std::uint64_t timestamp, std::uint32_t lifespan);

}  // namespace Corvane

#endif  // CORVANE_CORE_FILE_TIME_H_
