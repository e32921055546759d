// A key in a store of the test's own, and children that use it, too (Linux).
#ifndef CORVANE_TESTS_PLATFORM_STORE_FIXTURE_H_
#define CORVANE_TESTS_PLATFORM_STORE_FIXTURE_H_

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <string>

#include "corvane/handles.h"
#include "tests/support/test_store.h"

namespace Corvane::Test {

constexpr DWORD kMebibyte = 1 << 20;

inline LSTATUS Create(REGSAM access, HKEY* key, const wchar_t* path = L"k") {
  return RegCreateKeyExW(HKEY_LOCAL_MACHINE, path, 0, nullptr, 0, access, nullptr, key, nullptr);
}
inline LSTATUS Open(REGSAM access, HKEY* key, const wchar_t* path = L"k") {
  return RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, access, key);
}
// With all rights.
inline UniqueHkey Opened() {
  UniqueHkey key;
  EXPECT_EQ(ERROR_SUCCESS, Open(KEY_ALL_ACCESS, key.Receive()));
  return key;
}
inline LSTATUS Set(const UniqueHkey& key, const std::wstring& name, const std::string& data) {
  return RegSetValueExW(key.Get(), name.c_str(), 0, REG_BINARY,
                        reinterpret_cast<const BYTE*>(data.data()),
                        static_cast<DWORD>(data.size()));
}
// A store with the value "v" = "old", nothing open.
inline void MakeStore() {
  UniqueHkey key;
  ASSERT_EQ(ERROR_SUCCESS, Create(KEY_ALL_ACCESS, key.Receive()));
  ASSERT_EQ(ERROR_SUCCESS, Set(key, L"v", "old"));
}
// "<code>" for a failure.
inline std::string Get(HKEY key, const std::wstring& name) {
  std::string data(kMebibyte, '\0');
  DWORD size = kMebibyte;
  const LSTATUS result = RegQueryValueExW(key, name.c_str(), nullptr, nullptr,
                                          reinterpret_cast<BYTE*>(data.data()), &size);
  return result == ERROR_SUCCESS ? data.substr(0, size) : "<" + std::to_string(result) + ">";
}
inline std::string Get(const UniqueHkey& key, const std::wstring& name) {
  return Get(key.Get(), name);
}
// Through a handle of its own.
inline std::string Value(const std::wstring& name, const wchar_t* path = L"k") {
  UniqueHkey key;
  const LSTATUS result = Open(KEY_READ, key.Receive(), path);
  return result == ERROR_SUCCESS ? Get(key, name) : "<" + std::to_string(result) + ">";
}

// A child that ends with what `work` gives, as a user without privileges if so wanted.
enum class User { kSame, kNobody };
inline pid_t Start(const std::function<int()>& work, User user = User::kSame) {
  const pid_t child = fork();
  if (child != 0) return child;
  constexpr unsigned kNobody = 65534;
  if (user == User::kNobody && geteuid() == 0 && (setgid(kNobody) != 0 || setuid(kNobody) != 0)) {
    _exit(99);
  }
  _exit(work());
}
inline int Wait(pid_t child) {
  int status = -1;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
inline int InChild(const std::function<int()>& work, User user = User::kSame) {
  return Wait(Start(work, user));
}

class StoreTest : public testing::Test {
 protected:
  std::string File() const { return m_store.File().string(); }
  std::filesystem::path Folder() const { return m_store.File().parent_path(); }
  // Also for a user without privileges, or for this one again.
  void MakeReadOnly(bool readOnly) const {
    for (const auto& file : std::filesystem::directory_iterator(Folder())) {
      chmod(file.path().c_str(), readOnly ? 0444 : 0600);
    }
    chmod(Folder().c_str(), readOnly ? 0555 : 0700);
  }

 private:
  const TestStore m_store;
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_PLATFORM_STORE_FIXTURE_H_
