#include "tools/output/duration.h"

namespace Corvane::Tool {
namespace {

constexpr std::uint64_t kTicksPerTenth = 1'000'000;

std::string DurationInTwoUnits(std::uint64_t larger, const char* largerUnit, std::uint64_t smaller,
                               const char* smallerUnit) {
  std::string text = std::to_string(larger) + largerUnit;
  if (smaller > 0) text += ' ' + std::to_string(smaller) + smallerUnit;
  return text;
}

}  // namespace

std::string FormatDuration(std::uint64_t ticks) {
  const std::uint64_t tenths = ticks / kTicksPerTenth;
  if (tenths < 10) return "0." + std::to_string(tenths) + " s";
  const std::uint64_t seconds = tenths / 10;
  const std::uint64_t minutes = seconds / 60;
  const std::uint64_t hours = minutes / 60;
  if (minutes == 0) return std::to_string(seconds) + " s";
  if (hours == 0) return DurationInTwoUnits(minutes, " min", seconds % 60, " s");
  if (hours < 24) return DurationInTwoUnits(hours, " h", minutes % 60, " min");
  return DurationInTwoUnits(hours / 24, " d", hours % 24, " h");
}

}  // namespace Corvane::Tool
