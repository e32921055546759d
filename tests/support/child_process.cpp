#include "tests/support/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "tests/support/process.h"

namespace Corvane::Test {
namespace {

constexpr int kEndTimeoutMs = 120'000;
constexpr int kSignalTimeoutMs = 2'000;
constexpr auto kReadyTimeout = std::chrono::seconds(20);

// env(1) goes to the folder, sets the environment and finds the program.
std::vector<std::string> Line(const std::vector<std::string>& command,
                              const ProcessOptions& options) {
  const char* const path = std::getenv("PATH");
  std::vector<std::string> line = {"env"};
  if (!options.folder.empty()) line.push_back("--chdir=" + options.folder.string());
  line.push_back("PATH=" + std::string(path ? path : "/usr/bin:/bin") + ":/usr/sbin:/sbin");
  for (const auto* const more : {&options.environment, &command}) {
    line.insert(line.end(), more->begin(), more->end());
  }
  return line;
}

int OpenForWriting(const std::filesystem::path& file) {
  return open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
}

// What a process does with itself between fork and exec: only what a signal handler may call.
[[noreturn]] void Become(char** line, const int* streams, const ProcessOptions& options,
                         pid_t parent) {
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, options.endSignal);
  if (getppid() != parent) _exit(1);
  for (int stream = 0; stream < 3; ++stream) dup2(streams[stream], stream);
  for (const int descriptor : options.descriptors) fcntl(descriptor, F_SETFD, 0);
  for (const int each : {SIGINT, SIGTERM}) signal(each, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  execv("/usr/bin/env", line);
  _exit(127);
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command, ProcessOptions options)
    : m_endSignal(options.endSignal) {
  std::vector<std::string> line = Line(command, options);
  std::vector<char*> argv;
  for (std::string& argument : line) argv.push_back(argument.data());
  argv.push_back(nullptr);
  int input[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, input) != 0) {
    throw std::system_error(errno, std::generic_category(), "socketpair");
  }
  m_input = input[0];
  const int streams[] = {input[1], OpenForWriting(m_streams.Path() / "output"),
                         OpenForWriting(m_streams.Path() / "error")};
  const pid_t parent = getpid();
  m_process = fork();
  if (m_process == 0) Become(argv.data(), streams, options, parent);
  for (const int stream : streams) close(stream);
  if (m_process < 0) throw std::system_error(errno, std::generic_category(), "fork");
  setpgid(m_process, m_process);  // whichever of the two processes comes first
  m_end = static_cast<int>(syscall(SYS_pidfd_open, m_process, 0));
}

ChildProcess::~ChildProcess() {
  EndInput();
  if (m_process > 0) {
    kill(-m_process, m_endSignal);
    if (!Ended(kSignalTimeoutMs)) kill(-m_process, SIGKILL);
    Reap();
  }
  close(m_end);
}

bool ChildProcess::Ended(int timeoutMs) const {
  pollfd polled{m_end, POLLIN, 0};
  return m_process <= 0 || poll(&polled, 1, timeoutMs) > 0;
}

// Its number, and its group's, is nobody else's until then.
int ChildProcess::Reap() {
  const bool ended = Ended(-1);
  kill(-m_process, SIGKILL);  // what it left behind
  int status = 0;
  if (ended) waitpid(std::exchange(m_process, -1), &status, 0);
  return m_status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

bool ChildProcess::Await(const std::function<bool()>& question) const {
  constexpr int kPauseMs = 10;
  const auto end = std::chrono::steady_clock::now() + kReadyTimeout;
  do {
    if (question()) return true;
  } while (std::chrono::steady_clock::now() < end && !Ended(kPauseMs));
  return false;
}

bool ChildProcess::Write(const std::string& bytes) const {
  std::size_t written = 0;
  while (written < bytes.size()) {
    const ssize_t part =
        send(m_input, bytes.data() + written, bytes.size() - written, MSG_NOSIGNAL);
    if (part <= 0) return false;
    written += static_cast<std::size_t>(part);
  }
  return true;
}

void ChildProcess::EndInput() {
  if (m_input >= 0) close(std::exchange(m_input, -1));
}

void ChildProcess::Signal(int signal) const {
  if (m_process > 0) kill(m_process, signal);
}

int ChildProcess::Wait() {
  if (m_process > 0 && Ended(kEndTimeoutMs)) Reap();
  return m_status;
}

ProcessResult RunProcess(const std::vector<std::string>& command) {
  ChildProcess process(command);
  process.EndInput();
  const int exitStatus = process.Wait();
  return {exitStatus, process.Output(), process.Error()};
}

}  // namespace Corvane::Test
