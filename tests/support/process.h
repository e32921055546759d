// A child process, run to its end.
#ifndef CORVANE_TESTS_SUPPORT_PROCESS_H_
#define CORVANE_TESTS_SUPPORT_PROCESS_H_

#include <filesystem>
#include <string>
#include <vector>

namespace Corvane::Test {

struct ProcessResult {
  int exitStatus = -1;  // -1 when the child did not start or did not exit by itself
  std::string output;
  std::string error;
};

// `arguments` are UTF-8 and reach the child as they are, without a shell. Line ends come back as LF
// on both targets.
ProcessResult RunProcess(const std::filesystem::path& program,
                         const std::vector<std::string>& arguments);

// The same with its two streams in files: the exit status. By system, in a source of its own.
int RunInto(const std::filesystem::path& program, const std::vector<std::string>& arguments,
            const std::filesystem::path& output, const std::filesystem::path& error);

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_PROCESS_H_
