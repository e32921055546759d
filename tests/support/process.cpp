#include "tests/support/process.h"

#include <fstream>
#include <iterator>

#include "tests/support/temp_folder.h"

namespace Corvane::Test {
namespace {

namespace fs = std::filesystem;

// Not as binary: Windows then gives plain line ends.
std::string ReadAll(const fs::path& file) {
  std::ifstream stream(file);
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

}  // namespace

ProcessResult RunProcess(const fs::path& program, const std::vector<std::string>& arguments) {
  const TempFolder folder;
  const fs::path output = folder.Path() / "output";
  const fs::path error = folder.Path() / "error";
  const int exitStatus = RunInto(program, arguments, output, error);
  return {exitStatus, ReadAll(output), ReadAll(error)};
}

}  // namespace Corvane::Test
