// A folder of one test's own, removed with it.
#ifndef CORVANE_TESTS_SUPPORT_TEMP_FOLDER_H_
#define CORVANE_TESTS_SUPPORT_TEMP_FOLDER_H_

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace Corvane::Test {

class TempFolder {
 public:
  TempFolder() {
    std::random_device random;
    do {
      m_path = std::filesystem::temp_directory_path() /
               ("corvane-test-" + std::to_string(random()) + std::to_string(random()));
    } while (!std::filesystem::create_directory(m_path));
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }

  const std::filesystem::path& Path() const { return m_path; }

  // Writes a file below the folder, making the folders on its way.
  std::filesystem::path Write(const std::string& name, const std::string& content) const {
    const std::filesystem::path file = m_path / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << content;
    return file;
  }
  // What a file below the folder holds now, with plain line ends; "" without one.
  std::string Read(const std::string& name) const {
    std::ifstream file(m_path / name);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  std::filesystem::path m_path;
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_TEMP_FOLDER_H_
