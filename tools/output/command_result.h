// What a command that prints a report in one piece gives back.
#ifndef CORVANE_TOOLS_OUTPUT_COMMAND_RESULT_H_
#define CORVANE_TOOLS_OUTPUT_COMMAND_RESULT_H_

#include <string>

#include "tools/output/failure.h"

namespace Corvane::Tool {

struct CommandResult {
  ExitStatus status = kAllAnswered;
  std::string output;
  std::string problems;  // escaped lines, for the error stream
};

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_OUTPUT_COMMAND_RESULT_H_
