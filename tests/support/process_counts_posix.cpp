// For Linux.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <iterator>

#include "platform/system.h"
#include "tests/support/process_counts.h"

namespace Corvane::Test {

int CountThreads() {
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  return static_cast<int>(std::distance(begin(tasks), end(tasks)));
}

// The layer uses the values of closed handles again, as late as it can: a table that has taken its
// fill of them grows only by what stays open.
int CountHandles() {
  constexpr int kFill = 4096;
  std::uintptr_t highest = 0;
  for (int i = 0; i < kFill; ++i) {
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    highest = std::max(highest, reinterpret_cast<std::uintptr_t>(event));
    CloseHandle(event);
  }
  return static_cast<int>(highest / 4);
}

}  // namespace Corvane::Test
