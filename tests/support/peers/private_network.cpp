#include "tests/support/peers/private_network.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "tests/support/process.h"

namespace Corvane::Test {
namespace {

// What the first run tells the second: "" for success, or why there is no network.
constexpr char kVariable[] = "CORVANE_TEST_PRIVATE_NETWORK";

}  // namespace

void EnterPrivateNetwork(char** arguments) {
  if (std::getenv(kVariable)) return;
  // unshare(1), since the call wants a process of one thread.
  std::vector<std::string> command = {"unshare",
                                      "--user",
                                      "--map-root-user",
                                      "--net",
                                      "sh",
                                      "-c",
                                      "PATH=$PATH:/usr/sbin:/sbin ip link set lo up && exec \"$@\"",
                                      "sh",
                                      "true"};
  const ProcessResult trial = RunProcess(command);
  setenv(kVariable, trial.exitStatus == 0 ? "" : trial.error.c_str(), 1);
  if (trial.exitStatus != 0) return;
  command.back() = std::filesystem::read_symlink("/proc/self/exe").string();
  std::vector<char*> argv;
  for (std::string& argument : command) argv.push_back(argument.data());
  while (*++arguments) argv.push_back(*arguments);
  argv.push_back(nullptr);
  execvp(argv[0], argv.data());
  std::perror("unshare");
}

std::string PrivateNetworkFailure() {
  const char* const told = std::getenv(kVariable);
  return told ? told : "EnterPrivateNetwork was not called";
}

}  // namespace Corvane::Test
