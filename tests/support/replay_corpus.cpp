// Runs a fuzz target over corpora: folders of files, and data files of cases with a "body" or
// "bytes".
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "tests/support/cases.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
  int inputs = 0;
  const auto run = [&](const std::string& bytes) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    ++inputs;
  };
  for (int i = 1; i < argc; ++i) {
    if (!std::filesystem::is_directory(argv[i])) {
      for (const auto& each : Corvane::Test::ReadCases(argv[i]))
        run(each.Text("body") + each.Text("bytes"));
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      std::ifstream file(entry.path(), std::ios::binary);
      run(std::string(std::istreambuf_iterator<char>(file), {}));
    }
  }
  std::cout << inputs << " inputs replayed\n";
  return inputs > 0 ? 0 : 1;
}
