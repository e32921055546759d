#include "core/file_time.h"

#include "platform/system.h"

namespace Corvane {

int GetCurrentFileTime(std::uint64_t* time) {
  SYSTEMTIME systemTime;
  FILETIME fileTime;
  GetSystemTime(&systemTime);
  if (!SystemTimeToFileTime(&systemTime, &fileTime)) return 0;
  *time = (std::uint64_t{fileTime.dwHighDateTime} << 32) | fileTime.dwLowDateTime;
  return 1;
}

int IsExpired(std::uint64_t timestamp, std::uint32_t lifespan) {
  if (lifespan == 0) return 0;
  std::uint64_t now = 0;
  if (!GetCurrentFileTime(&now) || now < timestamp) return 1;
  return now - timestamp > lifespan * kTicksPerLifespanUnit;
}

}  // namespace Corvane
