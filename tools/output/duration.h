// Spans of time for people.
#ifndef CORVANE_TOOLS_OUTPUT_DURATION_H_
#define CORVANE_TOOLS_OUTPUT_DURATION_H_

#include <cstdint>
#include <string>

namespace Corvane::Tool {

// Of ticks of 100 ns, cut to two units: "0.4 s", "20 s", "3 min 20 s", "2 h 5 min", "41 d 7 h".
std::string FormatDuration(std::uint64_t ticks);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_OUTPUT_DURATION_H_
