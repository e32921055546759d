// What the store takes.
#ifndef CORVANE_PLATFORM_LINUX_STORE_LIMITS_H_
#define CORVANE_PLATFORM_LINUX_STORE_LIMITS_H_

#include <cstddef>

namespace Corvane::Store {

// Windows' own limits, in characters: no name that Windows would refuse gets in.
constexpr std::size_t kMaxKeyNameChars = 255;
constexpr std::size_t kMaxValueNameChars = 16383;
constexpr std::size_t kMaxPathChars = 32767;

// Of one value: what a runaway writer can put into the file, and a reader must hold, at a time.
constexpr std::size_t kMaxDataBytes = std::size_t{1} << 20;

// Of a row read from the file, longest names and data included: the memory that a damaged length
// can ask for.
constexpr int kMaxRowBytes = 2 << 20;

// For another process's transaction: nobody waits for ever for one that was stopped.
constexpr int kBusyTimeoutMs = 5000;

// Of the log, after which a commit copies it into the database. Small, because whoever opens the
// file first reads it through; large enough that few commits wait for the disk.
constexpr int kCheckpointPages = 256;

}  // namespace Corvane::Store

#endif  // CORVANE_PLATFORM_LINUX_STORE_LIMITS_H_
