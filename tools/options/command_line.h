// Reads the command line.
#ifndef CORVANE_TOOLS_OPTIONS_COMMAND_LINE_H_
#define CORVANE_TOOLS_OPTIONS_COMMAND_LINE_H_

#include <optional>

#include "tools/options/options.h"

namespace Corvane::Tool {

// Nothing when the arguments asked for help or the version, which has been written to the output.
// Throws Failure with kBadUsage.
std::optional<Options> ParseOptions(int argc, const char* const* argv);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_OPTIONS_COMMAND_LINE_H_
