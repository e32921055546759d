// A key in a store of the test's own, and children that use it, too (Linux).
#ifndef CORVANE_TESTS_PLATFORM_STORE_FIXTURE_H_
#define CORVANE_TESTS_PLATFORM_STORE_FIXTURE_H_

#include <gtest/gtest.h>
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
inline LSTATUS Set(HKEY key, const std::wstring& name, const std::string& data) {
  return RegSetValueExW(key, name.c_str(), 0, REG_BINARY,
                        reinterpret_cast<const BYTE*>(data.data()),
                        static_cast<DWORD>(data.size()));
}
// "<code>" for a failure.
inline std::string Get(HKEY key, const std::wstring& name) {
  std::string data(kMebibyte, '\0');
  DWORD size = kMebibyte;
  const LSTATUS result = RegQueryValueExW(key, name.c_str(), nullptr, nullptr,
                                          reinterpret_cast<BYTE*>(data.data()), &size);
  if (result != ERROR_SUCCESS) return "<" + std::to_string(result) + ">";
  return data.substr(0, size);
}
// Through a handle of its own.
inline std::string Value(const std::wstring& name, const wchar_t* path = L"k") {
  UniqueHkey key;
  const LSTATUS result = Open(KEY_READ, key.Receive(), path);
  return result == ERROR_SUCCESS ? Get(key.Get(), name) : "<" + std::to_string(result) + ">";
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

class StoreTest : public testing::Test {
 protected:
  std::string File() const { return m_store.File().string(); }
  std::string Folder() const { return m_store.File().parent_path().string(); }

 private:
  const TestStore m_store;
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_PLATFORM_STORE_FIXTURE_H_
