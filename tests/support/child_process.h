// A program while it runs: the tool, and the real peers of a test (Linux).
#ifndef CORVANE_TESTS_SUPPORT_CHILD_PROCESS_H_
#define CORVANE_TESTS_SUPPORT_CHILD_PROCESS_H_

#include <signal.h>
#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/temp_folder.h"

namespace Corvane::Test {

struct ProcessOptions {
  std::filesystem::path folder = {};          // where it runs; where this process does when empty
  std::vector<std::string> environment = {};  // "NAME=value", besides this process's own
  std::vector<int> descriptors = {};          // stay open in it, under their numbers
  int endSignal = SIGTERM;                    // what ends it; SIGKILL follows two seconds later
};

// Takes signals as at a shell's prompt. Ended with this object, and with the test's own process,
// and so is all that it started.
class ChildProcess {
 public:
  // A program without a folder is looked for where servers are, too. One that is not there exits
  // with 127 and says so to its error stream.
  explicit ChildProcess(const std::vector<std::string>& command, ProcessOptions options = {});
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess();

  // Asks until it is so; false when the process ended, or 20 seconds did.
  bool Await(const std::function<bool()>& question) const;
  // To its input. False when it takes no more.
  bool Write(const std::string& bytes) const;
  void EndInput();
  void Signal(int signal) const;
  // The exit status, 128 and the signal that ended it, or -1 after two minutes.
  int Wait();
  // What it has said so far.
  std::string Output() const { return m_streams.Read("output"); }
  std::string Error() const { return m_streams.Read("error"); }

 private:
  bool Ended(int timeoutMs) const;
  int Reap();

  const TempFolder m_streams;
  const int m_endSignal;
  int m_input = -1;
  pid_t m_process = -1;  // and its group
  int m_end = -1;        // readable when it has ended
  int m_status = -1;
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_CHILD_PROCESS_H_
