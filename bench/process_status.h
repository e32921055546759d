// What the kernel tells of this process (Linux).
#ifndef CORVANE_BENCH_PROCESS_STATUS_H_
#define CORVANE_BENCH_PROCESS_STATUS_H_

#include <cstdlib>
#include <fstream>
#include <string>

namespace Corvane::Bench {

// A number of kilobytes, as of "VmHWM:"; -1 when it is not told.
inline long StatusKilobytes(const std::string& field) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(field)) return std::atol(line.c_str() + field.size());
  }
  return -1;
}

}  // namespace Corvane::Bench

#endif  // CORVANE_BENCH_PROCESS_STATUS_H_
