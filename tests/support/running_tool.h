// The built tool while it runs (Linux).
#ifndef CORVANE_TESTS_SUPPORT_RUNNING_TOOL_H_
#define CORVANE_TESTS_SUPPORT_RUNNING_TOOL_H_

#include <sys/types.h>

#include <string>
#include <vector>

#include "tests/support/temp_folder.h"

namespace Corvane::Test {

// Takes signals as at a shell's prompt. Killed with this, if it still runs.
class RunningTool {
 public:
  explicit RunningTool(const std::vector<std::string>& arguments);
  RunningTool(const RunningTool&) = delete;
  RunningTool& operator=(const RunningTool&) = delete;
  ~RunningTool();

  // To its input. False when it takes no more.
  bool Write(const std::string& bytes) const;
  void EndInput();
  void Signal(int signal) const;
  // The exit status, 128 and the signal that ended it, or -1 after a minute.
  int Wait();
  std::string Output() const { return Content("output"); }
  std::string Error() const { return Content("error"); }

 private:
  std::string Content(const char* file) const;

  TempFolder m_folder;
  int m_input = -1;
  pid_t m_process = -1;
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_RUNNING_TOOL_H_
