// The registry: keys, values, enumeration, rights, handles.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "corvane/handles.h"
#include "platform/write_group.h"
#include "tests/support/registry_key.h"
#include "tests/support/test_store.h"
#include "tests/support/wine.h"

namespace {

using namespace std::string_literals;
using Corvane::UniqueHkey;
using Corvane::WriteGroup;
using Corvane::Test::UnderWine;

using Bytes = std::vector<BYTE>;

Bytes TextBytes(const std::wstring& text) {
  return Corvane::Test::RegistryKey::Text(text).data;  // with its terminator
}

// Windows looks for a terminator just behind a string without one: there is none.
LSTATUS Set(HKEY key, const wchar_t* name, DWORD type, Bytes data) {
  const auto size = static_cast<DWORD>(data.size());
  data.resize(data.size() + sizeof(wchar_t), 0xEE);
  return RegSetValueExW(key, name, 0, type, data.data(), size);
}

// The value's data, or its absence as a type of -1.
struct Value {
  DWORD type = static_cast<DWORD>(-1);
  Bytes data;
  friend bool operator==(const Value&, const Value&) = default;
};

Value Get(HKEY key, const wchar_t* name) {
  Value value;
  DWORD size = 0;
  if (RegQueryValueExW(key, name, nullptr, nullptr, nullptr, &size) != ERROR_SUCCESS) return value;
  value.data.resize(size);
  Bytes none(1);
  EXPECT_EQ(ERROR_SUCCESS, RegQueryValueExW(key, name, nullptr, &value.type,
                                            size != 0 ? value.data.data() : none.data(), &size));
  return value;
}

// By number, until there are no more; `visit` may write.
template <typename Visit>
std::vector<std::wstring> EnumerateNames(HKEY key, Visit visit) {
  std::vector<std::wstring> names;
  for (DWORD i = 0;; ++i) {
    wchar_t name[64];
    DWORD chars = 64;
    const LSTATUS result = RegEnumValueW(key, i, name, &chars, nullptr, nullptr, nullptr, nullptr);
    if (result != ERROR_SUCCESS) {
      EXPECT_EQ(ERROR_NO_MORE_ITEMS, result);
      return names;
    }
    EXPECT_EQ(chars, std::wcslen(name));
    names.emplace_back(name);
    visit(name);
  }
}

std::vector<std::wstring> SortedNames(HKEY key) {
  std::vector<std::wstring> names = EnumerateNames(key, [](const wchar_t*) {});
  std::sort(names.begin(), names.end());
  return names;
}

class RegistryTest : public testing::Test {
 protected:
  RegistryTest() { EXPECT_EQ(ERROR_SUCCESS, Create(L"", KEY_ALL_ACCESS, m_key.Receive())); }

  LSTATUS Create(const wchar_t* below, REGSAM access, HKEY* key, DWORD* disposition = nullptr) {
    return RegCreateKeyExW(HKEY_LOCAL_MACHINE, m_own.Path(below).c_str(), 0, nullptr,
                           REG_OPTION_NON_VOLATILE, access, nullptr, key, disposition);
  }
  LSTATUS Open(const wchar_t* below, REGSAM access, HKEY* key) {
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, m_own.Path(below).c_str(), 0, access, key);
  }
  HKEY Key() const { return m_key.Get(); }

 private:
  Corvane::Test::TestStore m_store;
  Corvane::Test::RegistryKey m_own;
  UniqueHkey m_key;
};

TEST_F(RegistryTest, CreatesParentsAndOpensWhatIsThere) {
  UniqueHkey key;
  EXPECT_EQ(ERROR_FILE_NOT_FOUND, Open(L"a\\b", KEY_READ, key.Receive()));
  DWORD disposition = 0;
  ASSERT_EQ(ERROR_SUCCESS, Create(L"a\\b\\C", KEY_ALL_ACCESS, key.Receive(), &disposition));
  EXPECT_EQ(DWORD{REG_CREATED_NEW_KEY}, disposition);
  for (const wchar_t* path : {L"a\\b\\C", L"A\\B\\c", L"a\\\\b\\C\\", L"a"}) {
    EXPECT_EQ(ERROR_SUCCESS, Open(path, KEY_READ, key.Receive())) << path;
    EXPECT_EQ(ERROR_SUCCESS, Create(path, KEY_READ, key.Receive(), &disposition)) << path;
    EXPECT_EQ(DWORD{REG_OPENED_EXISTING_KEY}, disposition) << path;
  }
  // Below an open key, and the key itself.
  ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExW(Key(), L"A", 0, KEY_READ, key.Receive()));
  UniqueHkey same;
  ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExW(key.Get(), nullptr, 0, KEY_READ, same.Receive()));
  wchar_t name[8];
  DWORD chars = 8;
  FILETIME written = {};
  EXPECT_EQ(ERROR_SUCCESS,
            RegEnumKeyExW(same.Get(), 0, name, &chars, nullptr, nullptr, nullptr, &written));
  EXPECT_EQ(L"b"s, name);
  EXPECT_NE(0u, written.dwHighDateTime);
}

TEST_F(RegistryTest, ChecksPaths) {
  UniqueHkey key;
  const std::wstring tooLong(300, L'x');
  EXPECT_EQ(ERROR_SUCCESS, Create(std::wstring(255, L'x').c_str(), KEY_READ, key.Receive()));
  EXPECT_EQ(ERROR_INVALID_PARAMETER, Create(tooLong.c_str(), KEY_READ, key.Receive()));
  HKEY none = nullptr;
  EXPECT_EQ(ERROR_INVALID_PARAMETER,
            RegCreateKeyExW(Key(), L"x", 1, nullptr, 0, KEY_READ, nullptr, &none, nullptr));
  EXPECT_EQ(ERROR_INVALID_PARAMETER, RegOpenKeyExW(Key(), L"x", 0, KEY_READ, nullptr));
  EXPECT_EQ(ERROR_BAD_PATHNAME,
            RegCreateKeyExW(Key(), L"\\x", 0, nullptr, 0, KEY_READ, nullptr, &none, nullptr));
  EXPECT_EQ(ERROR_BAD_PATHNAME, RegOpenKeyExW(Key(), L"\\x", 0, KEY_READ, &none));
  EXPECT_EQ(nullptr, none);
  if (UnderWine()) GTEST_SKIP() << "Wine 8 takes a null path for an empty one";
  EXPECT_EQ(ERROR_BADKEY,
            RegCreateKeyExW(Key(), nullptr, 0, nullptr, 0, KEY_READ, nullptr, &none, nullptr));
}

TEST_F(RegistryTest, KeepsDataByteForByte) {
  const struct {
    const wchar_t* name;
    DWORD type;
    Bytes data;
  } cases[] = {{L"text", REG_SZ, TextBytes(L"caf\u00E9 \u20AC")},
               {L"text without terminator", REG_SZ, Bytes(2 * sizeof(wchar_t), 'x')},
               {L"odd number of bytes", REG_SZ, {1, 2, 3}},
               {L"number", REG_DWORD, {1, 2, 3, 4}},
               {L"number of a wrong size", REG_DWORD, {1, 2, 3}},
               {L"many", REG_MULTI_SZ, TextBytes(L"a\0b\0"s)},
               {L"bytes", REG_BINARY, Bytes(70'000, 0xA5)},
               {L"nothing", REG_BINARY, {}},
               {L"no known type", 0x12345, {0, 0}},
               {L"", REG_SZ, TextBytes(L"default")},
               {L"device's \"; $(x) %n ' \r\n ../", REG_SZ, TextBytes(L"\r\n")}};
  for (const auto& c : cases) {
    EXPECT_EQ(ERROR_SUCCESS, Set(Key(), c.name, c.type, c.data)) << c.name;
  }
  for (const auto& c : cases) {
    EXPECT_EQ((Value{c.type, c.data}), Get(Key(), c.name)) << c.name;
  }
  EXPECT_EQ((Value{REG_SZ, TextBytes(L"default")}), Get(Key(), nullptr));
}

TEST_F(RegistryTest, FoldsCaseOfNamesAndKeepsTheFirst) {
  const std::pair<const wchar_t*, const wchar_t*> same[] = {
      {L"Name", L"nAME"}, {L"\u00E4\u03C9\u0436", L"\u00C4\u03A9\u0416"}};
  for (const auto& [first, second] : same) {
    EXPECT_EQ(ERROR_SUCCESS, Set(Key(), first, REG_BINARY, {1}));
    EXPECT_EQ(ERROR_SUCCESS, Set(Key(), second, REG_BINARY, {2}));
    EXPECT_EQ((Value{REG_BINARY, {2}}), Get(Key(), first));
  }
  // Not the letters that only their language, or a change of length, makes the same.
  for (const wchar_t* other : {L"\u0131", L"i", L"\u017F", L"s", L"\u00DF", L"ss"}) {
    EXPECT_EQ(Value{}, Get(Key(), other)) << other;
    EXPECT_EQ(ERROR_SUCCESS, Set(Key(), other, REG_BINARY, {3}));
  }
  const std::vector<std::wstring> names = SortedNames(Key());
  EXPECT_EQ(8u, names.size());
  EXPECT_EQ(1, std::count(names.begin(), names.end(), L"Name"));
}

TEST_F(RegistryTest, QueriesTellTheSizeNeeded) {
  ASSERT_EQ(ERROR_SUCCESS, Set(Key(), L"v", REG_QWORD, Bytes(8, 7)));
  BYTE data[8] = {};
  DWORD type = 0;
  DWORD size = 7;
  EXPECT_EQ(ERROR_MORE_DATA, RegQueryValueExW(Key(), L"v", nullptr, &type, data, &size));
  EXPECT_EQ(8u, size);
  EXPECT_EQ(DWORD{REG_QWORD}, type);
  EXPECT_EQ(ERROR_SUCCESS, RegQueryValueExW(Key(), L"v", nullptr, nullptr, data, &size));
  EXPECT_EQ(7, data[7]);
  EXPECT_EQ(ERROR_SUCCESS, RegQueryValueExW(Key(), L"v", nullptr, &type, nullptr, nullptr));
  EXPECT_EQ(ERROR_INVALID_PARAMETER,
            RegQueryValueExW(Key(), L"v", nullptr, nullptr, data, nullptr));
  EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegQueryValueExW(Key(), L"w", nullptr, &type, data, &size));
  EXPECT_EQ(8u, size);
  EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegQueryValueExW(Key(), L"w", nullptr, &type, nullptr, &size));
  EXPECT_EQ(0u, size);
}

TEST_F(RegistryTest, EnumerationTellsNameTypeAndData) {
  ASSERT_EQ(ERROR_SUCCESS, Set(Key(), L"name", REG_BINARY, {9, 8, 7}));
  wchar_t name[8];
  BYTE data[8];
  const auto read = [&](DWORD* chars, DWORD* bytes, DWORD* type = nullptr) {
    return RegEnumValueW(Key(), 0, name, chars, nullptr, type, data, bytes);
  };
  DWORD chars = 5;
  DWORD bytes = 3;
  DWORD type = 0;
  EXPECT_EQ(ERROR_SUCCESS, read(&chars, &bytes, &type));
  EXPECT_EQ(L"name"s, name);
  EXPECT_EQ(4u, chars);
  EXPECT_EQ(3u, bytes);
  EXPECT_EQ(DWORD{REG_BINARY}, type);
  EXPECT_EQ(7, data[2]);
  EXPECT_EQ(ERROR_MORE_DATA, read(&chars, &bytes)) << "no room for the terminator";
  chars = 8;
  bytes = 2;
  EXPECT_EQ(ERROR_MORE_DATA, read(&chars, &bytes));
  EXPECT_EQ(3u, bytes);
  const auto refused = [&](wchar_t* out, DWORD* outChars, DWORD* reserved, BYTE* outData) {
    return RegEnumValueW(Key(), 0, out, outChars, reserved, nullptr, outData, nullptr);
  };
  EXPECT_EQ(ERROR_INVALID_PARAMETER, refused(name, &chars, nullptr, data));
  EXPECT_EQ(ERROR_INVALID_PARAMETER, refused(name, &chars, &bytes, nullptr));
  EXPECT_EQ(ERROR_INVALID_PARAMETER, refused(nullptr, &chars, nullptr, nullptr));
  EXPECT_EQ(ERROR_INVALID_PARAMETER, refused(name, nullptr, nullptr, nullptr));
}

// More values than are read ahead at a time.
TEST_F(RegistryTest, EnumeratesManyValuesInAnyOrder) {
  constexpr DWORD kValues = 1500;
  std::vector<std::wstring> expected;
  {
    WriteGroup group(Key());
    for (DWORD i = 0; i < kValues; ++i) {
      expected.push_back(L"value " + std::to_wstring(i * 7 % kValues));
      ASSERT_EQ(ERROR_SUCCESS, Set(Key(), expected.back().c_str(), REG_BINARY, {1}));
    }
    EXPECT_EQ(ERROR_SUCCESS, group.Commit());
  }
  const std::vector<std::wstring> upwards = EnumerateNames(Key(), [](const wchar_t*) {});
  for (const DWORD i : {DWORD{1499}, DWORD{700}, DWORD{5}, DWORD{0}, DWORD{1}, DWORD{17}}) {
    wchar_t name[32];
    DWORD chars = 32;
    EXPECT_EQ(ERROR_SUCCESS,
              RegEnumValueW(Key(), i, name, &chars, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(upwards.at(i), name);
  }
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(expected, SortedNames(Key()));
}

TEST_F(RegistryTest, EnumerationSeesWritesOfItsHandle) {
  for (const wchar_t* name : {L"a", L"b", L"c", L"d"}) Set(Key(), name, REG_BINARY, {1});
  // Every other one: what follows moves down.
  EXPECT_EQ(2u, EnumerateNames(Key(), [&](const wchar_t* name) {
                  EXPECT_EQ(ERROR_SUCCESS, RegDeleteValueW(Key(), name));
                }).size());
  EXPECT_EQ(2u, SortedNames(Key()).size());
  EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegDeleteValueW(Key(), L"a"));
}

TEST_F(RegistryTest, TellsCountsAndLongest) {
  UniqueHkey below;
  ASSERT_EQ(ERROR_SUCCESS, Create(L"sub", KEY_READ, below.Receive()));
  ASSERT_EQ(ERROR_SUCCESS, Create(L"longer", KEY_READ, below.Receive()));
  Set(Key(), L"\u20AC\u00E9", REG_SZ, TextBytes(L"x"));
  Set(Key(), L"n", REG_BINARY, Bytes(100));
  DWORD subkeys = 9, subkeyChars = 9, values = 9, nameChars = 9, dataBytes = 9, classChars = 4;
  wchar_t className[4] = L"?";
  FILETIME written = {};
  EXPECT_EQ(ERROR_SUCCESS,
            RegQueryInfoKeyW(Key(), className, &classChars, nullptr, &subkeys, &subkeyChars,
                             nullptr, &values, &nameChars, &dataBytes, nullptr, &written));
  EXPECT_EQ(2u, subkeys);
  EXPECT_EQ(6u, subkeyChars);
  EXPECT_EQ(2u, values);
  EXPECT_EQ(2u, nameChars);
  EXPECT_EQ(100u, dataBytes);
  EXPECT_EQ(L""s, className);
  EXPECT_NE(0u, written.dwHighDateTime);
}

TEST_F(RegistryTest, EnforcesTheRightsOfTheHandle) {
  UniqueHkey reader;
  UniqueHkey writer;
  ASSERT_EQ(ERROR_SUCCESS, Open(L"", KEY_READ, reader.Receive()));
  ASSERT_EQ(ERROR_SUCCESS, Open(L"", KEY_WRITE, writer.Receive()));
  EXPECT_EQ(ERROR_ACCESS_DENIED, Set(reader.Get(), L"v", REG_BINARY, {1}));
  EXPECT_EQ(ERROR_SUCCESS, Set(writer.Get(), L"v", REG_BINARY, {1}));
  EXPECT_EQ(ERROR_ACCESS_DENIED, RegDeleteValueW(reader.Get(), L"v"));
  DWORD size = 0;
  EXPECT_EQ(ERROR_ACCESS_DENIED,
            RegQueryValueExW(writer.Get(), L"v", nullptr, nullptr, nullptr, &size));
  wchar_t name[8];
  DWORD chars = 8;
  EXPECT_EQ(ERROR_ACCESS_DENIED,
            RegEnumValueW(writer.Get(), 0, name, &chars, nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(ERROR_ACCESS_DENIED,
            RegEnumKeyExW(writer.Get(), 0, name, &chars, nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ((Value{REG_BINARY, {1}}), Get(reader.Get(), L"v"));
}

TEST_F(RegistryTest, DeletesOnlyKeysWithoutSubkeys) {
  UniqueHkey below;
  ASSERT_EQ(ERROR_SUCCESS, Create(L"a\\b", KEY_ALL_ACCESS, below.Receive()));
  ASSERT_EQ(ERROR_SUCCESS, Set(below.Get(), L"v", REG_BINARY, {1}));
  EXPECT_EQ(ERROR_ACCESS_DENIED, RegDeleteKeyW(Key(), L"A"));
  EXPECT_EQ(ERROR_SUCCESS, RegDeleteKeyW(Key(), L"A\\B"));
  EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegDeleteKeyW(Key(), L"a\\b"));

  DWORD size = 0;
  wchar_t name[8];
  DWORD chars = 8;
  UniqueHkey none;
  EXPECT_EQ(ERROR_KEY_DELETED, Set(below.Get(), L"v", REG_BINARY, {1}));
  EXPECT_EQ(ERROR_KEY_DELETED,
            RegQueryValueExW(below.Get(), L"v", nullptr, nullptr, nullptr, &size));
  EXPECT_EQ(ERROR_KEY_DELETED,
            RegEnumValueW(below.Get(), 0, name, &chars, nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(ERROR_KEY_DELETED, RegCreateKeyExW(below.Get(), L"c", 0, nullptr, 0, KEY_READ, nullptr,
                                               none.Receive(), nullptr));
  // A new one of the same name is another.
  ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExW(Key(), L"a\\b", 0, nullptr, 0, KEY_READ, nullptr,
                                           none.Receive(), nullptr));
  EXPECT_EQ(Value{}, Get(none.Get(), L"v"));
  EXPECT_EQ(ERROR_KEY_DELETED, Set(below.Get(), L"v", REG_BINARY, {1}));
}

TEST_F(RegistryTest, RefusesDataThatCannotBeRead) {
  ASSERT_EQ(ERROR_SUCCESS, Set(Key(), L"v", REG_BINARY, {1}));
  for (const std::intptr_t address : {0, 42, 65535, 100'000, -1}) {
    if (UnderWine() && (address > 65535 || address < 0)) continue;  // Wine 8 reads it, and crashes
    EXPECT_EQ(ERROR_NOACCESS,
              RegSetValueExW(Key(), L"v", 0, REG_SZ, reinterpret_cast<const BYTE*>(address), 4))
        << address;
  }
  EXPECT_EQ(ERROR_SUCCESS, RegSetValueExW(Key(), L"empty", 0, REG_SZ, nullptr, 0));
  EXPECT_EQ((Value{REG_BINARY, {1}}), Get(Key(), L"v"));
}

TEST_F(RegistryTest, BoundsNamesOfValues) {
  EXPECT_EQ(ERROR_SUCCESS, Set(Key(), std::wstring(16383, L'n').c_str(), REG_BINARY, {1}));
  const std::wstring tooLong(16384, L'n');
  EXPECT_EQ(ERROR_INVALID_PARAMETER, Set(Key(), tooLong.c_str(), REG_BINARY, {1}));
  EXPECT_EQ(Value{}, Get(Key(), tooLong.c_str()));
}

TEST_F(RegistryTest, RefusesHandlesThatAreNotOpen) {
  HKEY closed = nullptr;
  ASSERT_EQ(ERROR_SUCCESS, Create(L"", KEY_ALL_ACCESS, &closed));
  ASSERT_EQ(ERROR_SUCCESS, RegCloseKey(closed));
  const auto made = [](std::uintptr_t value) { return reinterpret_cast<HKEY>(value); };
  for (HKEY key : {closed, HKEY{}, made(3), made(0x7FFF'FFF0)}) {
    HKEY none = nullptr;
    EXPECT_EQ(ERROR_INVALID_HANDLE, Set(key, L"v", REG_BINARY, {1})) << key;
    EXPECT_EQ(ERROR_INVALID_HANDLE, RegOpenKeyExW(key, L"x", 0, KEY_READ, &none)) << key;
    EXPECT_EQ(ERROR_INVALID_HANDLE, RegCloseKey(key)) << key;
    WriteGroup group(key);
    EXPECT_EQ(ERROR_SUCCESS, group.Commit());
  }
  EXPECT_EQ(ERROR_SUCCESS, RegCloseKey(HKEY_LOCAL_MACHINE));
  UniqueHkey root;
  EXPECT_EQ(ERROR_SUCCESS, RegOpenKeyExW(HKEY_LOCAL_MACHINE, nullptr, 0, KEY_READ, root.Receive()));
}

}  // namespace
