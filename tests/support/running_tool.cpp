#include "tests/support/running_tool.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <iterator>
#include <utility>

namespace Corvane::Test {

RunningTool::RunningTool(const std::vector<std::string>& arguments) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return;
  std::vector<char*> argv = {const_cast<char*>(CORVANE_TOOL_PATH)};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], 0);
  int stream = 1;
  for (const char* const file : {"output", "error"}) {
    const std::filesystem::path path = m_folder.Path() / file;
    posix_spawn_file_actions_addopen(&actions, stream++, path.c_str(), O_WRONLY | O_CREAT, 0600);
  }
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t signals;
  sigemptyset(&signals);
  posix_spawnattr_setsigmask(&attributes, &signals);
  for (const int signal : {SIGINT, SIGTERM}) sigaddset(&signals, signal);
  posix_spawnattr_setsigdefault(&attributes, &signals);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  if (posix_spawn(&m_process, argv[0], &actions, &attributes, argv.data(), environ) != 0) {
    m_process = -1;
  }
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  m_input = ends[0];
}

RunningTool::~RunningTool() {
  EndInput();
  if (m_process <= 0) return;
  kill(m_process, SIGKILL);
  waitpid(m_process, nullptr, 0);
}

bool RunningTool::Write(const std::string& bytes) const {
  std::size_t written = 0;
  while (written < bytes.size()) {
    const ssize_t part =
        send(m_input, bytes.data() + written, bytes.size() - written, MSG_NOSIGNAL);
    if (part <= 0) return false;
    written += static_cast<std::size_t>(part);
  }
  return true;
}

void RunningTool::EndInput() {
  if (m_input >= 0) close(std::exchange(m_input, -1));
}

void RunningTool::Signal(int signal) const {
  if (m_process > 0) kill(m_process, signal);
}

int RunningTool::Wait() {
  constexpr int kPauseMs = 10;
  for (int waitedMs = 0; m_process > 0 && waitedMs < 60'000; waitedMs += kPauseMs) {
    int status = 0;
    if (waitpid(m_process, &status, WNOHANG) == m_process) {
      m_process = -1;
      return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    poll(nullptr, 0, kPauseMs);
  }
  return -1;
}

std::string RunningTool::Content(const char* file) const {
  std::ifstream stream(m_folder.Path() / file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace Corvane::Test
