// A program, run to its end.
#ifndef CORVANE_TESTS_SUPPORT_PROCESS_H_
#define CORVANE_TESTS_SUPPORT_PROCESS_H_

#include <string>
#include <vector>

namespace Corvane::Test {

struct ProcessResult {
  int exitStatus = -1;  // -1 when it did not start, or had to be ended after two minutes
  std::string output;
  std::string error;
};

// `command` is the program and its arguments, UTF-8, which reach it as they are, without a shell.
// It has no input. Line ends come back as LF on both targets.
ProcessResult RunProcess(const std::vector<std::string>& command);

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_PROCESS_H_
