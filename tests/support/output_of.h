// What a command of the shell writes (Linux).
#ifndef CORVANE_TESTS_SUPPORT_OUTPUT_OF_H_
#define CORVANE_TESTS_SUPPORT_OUTPUT_OF_H_

#include <cstdio>
#include <memory>
#include <string>

namespace Corvane::Test {

inline std::string OutputOf(const std::string& command) {
  struct Close {
    void operator()(FILE* pipe) const { pclose(pipe); }
  };
  std::string output;
  const std::unique_ptr<FILE, Close> pipe(popen(command.c_str(), "r"));
  char block[4096];
  for (std::size_t size; pipe && (size = fread(block, 1, sizeof(block), pipe.get())) > 0;) {
    output.append(block, size);
  }
  return output;
}

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_OUTPUT_OF_H_
