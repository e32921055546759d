// A registry of one test's own.
#ifndef CORVANE_TESTS_SUPPORT_TEST_STORE_H_
#define CORVANE_TESTS_SUPPORT_TEST_STORE_H_

#include <filesystem>
#include <optional>
#include <string>

#include "tests/support/temp_folder.h"

namespace Corvane::Test {

// Registry and printer data of this process, and of the children it starts meanwhile, are empty and
// go with the object. Only on Linux: on Windows a test takes keys and printers of its own.
class TestStore {
 public:
  TestStore();
  TestStore(const TestStore&) = delete;
  TestStore& operator=(const TestStore&) = delete;
  ~TestStore();

  // Made, with its folder, by the first write.
  std::filesystem::path File() const { return m_folder.Path() / "state" / "store.db"; }

 private:
  TempFolder m_folder;
  std::optional<std::string> m_previous;
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_TEST_STORE_H_
