// A sink for print jobs on loopback (Linux).
#ifndef CORVANE_BENCH_LOOPBACK_SINK_H_
#define CORVANE_BENCH_LOOPBACK_SINK_H_

#include <cstdint>

namespace Corvane::Bench {

// Starts a process, to be called before there are threads, that ends with this one. It listens on
// `port`, or on a free one for 0, reads requests to their end and keeps nothing of them; it is
// idle, answers a document with a job, and has no jobs to list. The port; ends the program when it
// cannot listen.
std::uint16_t StartSink(std::uint16_t port);

// What the kernel tells of this process in kilobytes, as of "VmHWM:"; -1 when it does not.
long StatusKilobytes(const char* field);

}  // namespace Corvane::Bench

#endif  // CORVANE_BENCH_LOOPBACK_SINK_H_
