#include "tests/support/peers/private_network.h"

#include <fcntl.h>
#include <net/if.h>
#include <sched.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace Corvane::Test {
namespace {

// What the first run tells the second: kReady, or why there is no network.
constexpr char kVariable[] = "CORVANE_TEST_PRIVATE_NETWORK";
constexpr char kReady[] = "ready";

std::string Failure(const std::string& what) {
  return "no network namespace of its own (" + what + ": " + std::strerror(errno) + ")";
}

bool WriteFile(const char* path, std::string_view text) {
  const int file = open(path, O_WRONLY | O_CLOEXEC);
  const bool written = write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  const int error = errno;
  close(file);
  errno = error;
  return written;
}

bool BringUpLoopback() {
  const int any = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  ifreq loopback{};
  std::strcpy(loopback.ifr_name, "lo");
  loopback.ifr_flags = IFF_UP | IFF_RUNNING;
  const bool isUp = ioctl(any, SIOCSIFFLAGS, &loopback) == 0;
  const int error = errno;
  close(any);
  errno = error;
  return isUp;
}

// Root inside is this user outside, who alone can be mapped without privileges.
std::string SetUp(uid_t user, gid_t group) {
  if (!WriteFile("/proc/self/uid_map", "0 " + std::to_string(user) + " 1") ||
      !WriteFile("/proc/self/setgroups", "deny") ||
      !WriteFile("/proc/self/gid_map", "0 " + std::to_string(group) + " 1")) {
    return Failure("mapping the user");
  }
  return BringUpLoopback() ? kReady : Failure("bringing up its loopback");
}

}  // namespace

int RunInPrivateNetwork(char** arguments) {
  if (std::getenv(kVariable)) return -1;
  const uid_t user = geteuid();
  const gid_t group = getegid();
  const pid_t parent = getpid();
  // unshare would want a process of one thread, which one under a thread sanitizer is not.
  const long child = syscall(SYS_clone, CLONE_NEWUSER | CLONE_NEWNET | SIGCHLD, 0, 0, 0, 0);
  if (child == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(1);
    setenv(kVariable, SetUp(user, group).c_str(), 1);
    execv("/proc/self/exe", arguments);
    _exit(127);
  }
  if (child < 0) {
    setenv(kVariable, Failure("clone").c_str(), 1);
    return -1;
  }
  int status = 0;
  while (waitpid(static_cast<pid_t>(child), &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string PrivateNetworkFailure() {
  const char* const told = std::getenv(kVariable);
  if (!told) return "RunInPrivateNetwork was not called";
  return std::string_view(told) == kReady ? std::string() : told;
}

}  // namespace Corvane::Test
