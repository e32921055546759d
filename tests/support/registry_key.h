// A registry key of one test's own, below HKEY_LOCAL_MACHINE; it goes with the test.
#ifndef CORVANE_TESTS_SUPPORT_REGISTRY_KEY_H_
#define CORVANE_TESTS_SUPPORT_REGISTRY_KEY_H_

#include <map>
#include <random>
#include <string>
#include <vector>

#include "corvane/handles.h"

namespace Corvane::Test {

class RegistryKey {
 public:
  RegistryKey() : m_path(L"Software\\CorvaneTest" + std::to_wstring(std::random_device()())) {}
  RegistryKey(const RegistryKey&) = delete;
  RegistryKey& operator=(const RegistryKey&) = delete;
  ~RegistryKey() { DeleteTree(m_path); }

  const std::wstring& Path() const { return m_path; }
  std::wstring Path(const std::wstring& below) const { return m_path + L'\\' + below; }

  struct Value {
    DWORD type = REG_NONE;
    std::vector<BYTE> data;

    friend bool operator==(const Value&, const Value&) = default;
  };
  static Value Text(const std::wstring& text) {
    const auto* const bytes = reinterpret_cast<const BYTE*>(text.c_str());
    return {REG_SZ, {bytes, bytes + (text.size() + 1) * sizeof(wchar_t)}};
  }
  static Value Number(DWORD number) {
    const auto* const bytes = reinterpret_cast<const BYTE*>(&number);
    return {REG_DWORD, {bytes, bytes + sizeof(number)}};
  }

  LSTATUS Set(const std::wstring& below, const std::wstring& name, const Value& value) const {
    UniqueHkey key;
    const LSTATUS error = RegCreateKeyExW(HKEY_LOCAL_MACHINE, Path(below).c_str(), 0, nullptr, 0,
                                          KEY_ALL_ACCESS, nullptr, key.Receive(), nullptr);
    if (error != ERROR_SUCCESS) return error;
    return RegSetValueExW(key.Get(), name.c_str(), 0, value.type, value.data.data(),
                          static_cast<DWORD>(value.data.size()));
  }

  // All values of a key; empty as well when there is no such key.
  std::map<std::wstring, Value> Values(const std::wstring& below) const {
    std::map<std::wstring, Value> values;
    const UniqueHkey key = Open(Path(below));
    for (DWORD index = 0;; ++index) {
      wchar_t name[256];
      DWORD chars = 256;
      DWORD bytes = 4096;
      Value value{REG_NONE, std::vector<BYTE>(bytes)};
      if (RegEnumValueW(key.Get(), index, name, &chars, nullptr, &value.type, value.data.data(),
                        &bytes) != ERROR_SUCCESS) {
        return values;
      }
      value.data.resize(bytes);
      values[name] = value;
    }
  }

 private:
  static UniqueHkey Open(const std::wstring& path) {
    UniqueHkey key;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, key.Receive());
    return key;
  }
  static void DeleteTree(const std::wstring& path) {
    wchar_t name[256];
    DWORD chars = 256;
    while (RegEnumKeyExW(Open(path).Get(), 0, name, &chars, nullptr, nullptr, nullptr, nullptr) ==
           ERROR_SUCCESS) {
      DeleteTree(path + L'\\' + name);
      chars = 256;
    }
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, path.c_str());
  }

  std::wstring m_path;
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_REGISTRY_KEY_H_
