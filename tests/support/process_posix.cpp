// RunInto for POSIX systems.
#include "tests/support/process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Corvane::Test {

int RunInto(const std::filesystem::path& program, const std::vector<std::string>& arguments,
            const std::filesystem::path& output, const std::filesystem::path& error) {
  std::vector<char*> argv = {const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT, 0600);
  posix_spawn_file_actions_addopen(&actions, 2, error.c_str(), O_WRONLY | O_CREAT, 0600);
  pid_t child = 0;
  int status = -1;
  const int failure = posix_spawn(&child, program.c_str(), &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  const bool exited = failure == 0 && waitpid(child, &status, 0) == child && WIFEXITED(status);
  return exited ? WEXITSTATUS(status) : -1;
}

}  // namespace Corvane::Test
