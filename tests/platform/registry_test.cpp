// The registry: keys, values, enumeration, rights, handles.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "corvane/handles.h"
#include "platform/write_group.h"
#include "tests/support/cases.h"
#include "tests/support/registry_key.h"
#include "tests/support/test_store.h"
#include "tests/support/wine.h"

namespace Corvane::Test {
namespace {

using namespace std::string_literals;
using Bytes = std::vector<BYTE>;
using Value = RegistryKey::Value;

Bytes TextBytes(const std::wstring& text) { return RegistryKey::Text(text).data; }

// Windows looks for a terminator just behind a string without one: there is none.
LSTATUS Set(HKEY key, const wchar_t* name, DWORD type = REG_BINARY, Bytes data = {1}) {
  const auto size = static_cast<DWORD>(data.size());
  data.resize(data.size() + sizeof(wchar_t), 0xEE);
  return RegSetValueExW(key, name, 0, type, data.data(), size);
}

const Value kNone{static_cast<DWORD>(-1), {}};

Value Get(HKEY key, const wchar_t* name) {
  DWORD size = 0;
  if (RegQueryValueExW(key, name, nullptr, nullptr, nullptr, &size) != ERROR_SUCCESS) return kNone;
  Value value{REG_NONE, Bytes(size + 1)};
  EXPECT_EQ(ERROR_SUCCESS,
            RegQueryValueExW(key, name, nullptr, &value.type, value.data.data(), &size));
  value.data.resize(size);
  return value;
}

// The name of one value; null for none, with a code that is told.
LSTATUS NameAt(HKEY key, DWORD index, std::wstring* name) {
  wchar_t buffer[64];
  DWORD chars = 64;
  const LSTATUS code =
      RegEnumValueW(key, index, buffer, &chars, nullptr, nullptr, nullptr, nullptr);
  if (code == ERROR_SUCCESS) *name = std::wstring(buffer, chars);
  return code;
}

// By number, until there are no more.
std::vector<std::wstring> Names(HKEY key) {
  std::vector<std::wstring> names;
  std::wstring name;
  LSTATUS code = ERROR_SUCCESS;
  for (DWORD i = 0; (code = NameAt(key, i, &name)) == ERROR_SUCCESS; ++i) names.push_back(name);
  EXPECT_EQ(ERROR_NO_MORE_ITEMS, code);
  return names;
}

LSTATUS Create(HKEY key, const wchar_t* path, HKEY* made, DWORD* disposition = nullptr) {
  return RegCreateKeyExW(key, path, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr,
                         made, disposition);
}

// The code of a call named in the data file.
LSTATUS Call(const std::string& call, HKEY key, const wchar_t* name) {
  UniqueHkey out;
  wchar_t buffer[8];
  std::wstring found;
  DWORD size = 8;
  if (call == "create") return Create(key, name, out.Receive());
  if (call == "open") return RegOpenKeyExW(key, name, 0, KEY_READ, out.Receive());
  if (call == "remove") return RegDeleteKeyW(key, name);
  if (call == "close") return RegCloseKey(key);
  if (call == "set") return Set(key, name);
  if (call == "get") return RegQueryValueExW(key, name, nullptr, nullptr, nullptr, &size);
  if (call == "unset") return RegDeleteValueW(key, name);
  if (call == "values") return NameAt(key, 0, &found);
  if (call == "group") return WriteGroup(key).Commit();
  EXPECT_EQ("keys", call);
  return RegEnumKeyExW(key, 0, buffer, &size, nullptr, nullptr, nullptr, nullptr);
}

class RegistryTest : public testing::Test {
 protected:
  RegistryTest() {
    EXPECT_EQ(ERROR_SUCCESS, Create(HKEY_LOCAL_MACHINE, m_own.Path().c_str(), m_key.Receive()));
  }

  UniqueHkey Open(const wchar_t* below, REGSAM access) const {
    UniqueHkey key;
    EXPECT_EQ(ERROR_SUCCESS, RegOpenKeyExW(Key(), below, 0, access, key.Receive()));
    return key;
  }
  HKEY Key() const { return m_key.Get(); }

 private:
  TestStore m_store;
  RegistryKey m_own;
  UniqueHkey m_key;
};

TEST_F(RegistryTest, CreatesParentsAndOpensWhatIsThere) {
  UniqueHkey key;
  EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegOpenKeyExW(Key(), L"a\\b", 0, KEY_READ, key.Receive()));
  DWORD disposition = 0;
  ASSERT_EQ(ERROR_SUCCESS, Create(Key(), L"a\\b\\C", key.Receive(), &disposition));
  EXPECT_EQ(DWORD{REG_CREATED_NEW_KEY}, disposition);
  for (const wchar_t* path : {L"a\\b\\C", L"A\\B\\c", L"a\\\\b\\C\\", L"a"}) {
    EXPECT_TRUE(Open(path, KEY_READ)) << path;
    EXPECT_EQ(ERROR_SUCCESS, Create(Key(), path, key.Receive(), &disposition)) << path;
    EXPECT_EQ(DWORD{REG_OPENED_EXISTING_KEY}, disposition) << path;
  }
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

// The codes of calls: below a key that has the value "v" and the key "a\b".
TEST_F(RegistryTest, RefusesWhatItCannotDo) {
  UniqueHkey made, deleted;
  ASSERT_EQ(ERROR_SUCCESS, Set(Key(), L"v"));
  ASSERT_EQ(ERROR_SUCCESS, Create(Key(), L"a\\b", made.Receive()));
  ASSERT_EQ(ERROR_SUCCESS, Create(Key(), L"gone", deleted.Receive()));
  ASSERT_EQ(ERROR_SUCCESS, RegDeleteKeyW(Key(), L"gone"));
  const UniqueHkey reader = Open(L"", KEY_READ), writer = Open(L"", KEY_WRITE);
  const HKEY closed = made.Get();
  made.Reset();  // the last to be opened or closed here, as Windows gives its value away again
  const std::map<std::string, HKEY> keys = {{"own", Key()},
                                            {"reader", reader.Get()},
                                            {"writer", writer.Get()},
                                            {"deleted", deleted.Get()},
                                            {"closed", closed},
                                            {"null", nullptr},
                                            {"odd", reinterpret_cast<HKEY>(3)},
                                            {"far", reinterpret_cast<HKEY>(0x7FFF'FFF0)}};
  for (const Case& c : CasesHere("platform/registry_codes.txt")) {
    const std::wstring name = c.Wide("name");
    const wchar_t* const given = c.Text("name") == "-" ? nullptr : name.c_str();
    EXPECT_EQ(c.Number("code"), Call(c.Text("call"), keys.at(c.Text("key")), given)) << c.Where();
  }
  EXPECT_EQ((Value{REG_BINARY, {1}}), Get(Key(), L"v"));
  EXPECT_EQ(ERROR_SUCCESS, RegCloseKey(HKEY_LOCAL_MACHINE));
}

TEST_F(RegistryTest, ChecksArguments) {
  UniqueHkey key;
  EXPECT_EQ(ERROR_SUCCESS, Create(Key(), std::wstring(255, L'x').c_str(), key.Receive()));
  EXPECT_EQ(ERROR_INVALID_PARAMETER, Create(Key(), std::wstring(300, L'x').c_str(), key.Receive()));
  EXPECT_EQ(ERROR_INVALID_PARAMETER,
            RegCreateKeyExW(Key(), L"x", 1, nullptr, 0, KEY_READ, nullptr, key.Receive(), nullptr));
  EXPECT_EQ(ERROR_INVALID_PARAMETER, RegOpenKeyExW(Key(), L"x", 0, KEY_READ, nullptr));
  EXPECT_EQ(ERROR_SUCCESS, Set(Key(), std::wstring(16383, L'n').c_str()));
  const std::wstring tooLong(16384, L'n');
  EXPECT_EQ(ERROR_INVALID_PARAMETER, Set(Key(), tooLong.c_str()));
  EXPECT_EQ(kNone, Get(Key(), tooLong.c_str()));
  for (const std::intptr_t address : {0, 42, 65535, 100'000, -1}) {
    if (UnderWine() && (address > 65535 || address < 0)) continue;  // Wine 8 reads it, and crashes
    EXPECT_EQ(ERROR_NOACCESS,
              RegSetValueExW(Key(), L"v", 0, REG_SZ, reinterpret_cast<const BYTE*>(address), 4))
        << address;
  }
  EXPECT_EQ(kNone, Get(Key(), L"v"));
  EXPECT_EQ(ERROR_SUCCESS, RegSetValueExW(Key(), L"empty", 0, REG_SZ, nullptr, 0));
}

TEST_F(RegistryTest, KeepsDataByteForByte) {
  const std::vector<Case> cases = ReadCases("platform/registry_values.txt");
  const auto value = [](const Case& c) {
    const std::string bytes = c.Text("bytes");
    return Value{static_cast<DWORD>(c.Number("type")),
                 c.Find("text") ? TextBytes(c.Wide("text")) : Bytes(bytes.begin(), bytes.end())};
  };
  for (const Case& c : cases) {
    const auto [type, data] = value(c);
    EXPECT_EQ(ERROR_SUCCESS, Set(Key(), c.Wide("name").c_str(), type, data)) << c.Where();
  }
  for (const Case& c : cases) EXPECT_EQ(value(c), Get(Key(), c.Wide("name").c_str())) << c.Where();
  EXPECT_EQ((Value{REG_SZ, TextBytes(L"default")}), Get(Key(), nullptr));
  EXPECT_EQ(ERROR_SUCCESS, Set(Key(), L"long", REG_BINARY, Bytes(70'000, 0xA5)));
  EXPECT_EQ((Value{REG_BINARY, Bytes(70'000, 0xA5)}), Get(Key(), L"long"));
}

TEST_F(RegistryTest, FoldsCaseOfNamesAndKeepsTheFirst) {
  EXPECT_EQ(ERROR_SUCCESS, Set(Key(), L"Name\u00E4\u03C9\u0436"));
  EXPECT_EQ(ERROR_SUCCESS, Set(Key(), L"nAME\u00C4\u03A9\u0416", REG_BINARY, {2}));
  EXPECT_EQ((Value{REG_BINARY, {2}}), Get(Key(), L"Name\u00E4\u03C9\u0436"));
  // Not the letters that only their language, or a change of length, makes the same.
  for (const wchar_t* other : {L"\u0131", L"i", L"\u017F", L"s", L"\u00DF", L"ss"}) {
    EXPECT_EQ(kNone, Get(Key(), other)) << other;
    EXPECT_EQ(ERROR_SUCCESS, Set(Key(), other));
  }
  const std::vector<std::wstring> names = Names(Key());
  EXPECT_EQ(7u, names.size());
  EXPECT_EQ(1, std::count(names.begin(), names.end(), L"Name\u00E4\u03C9\u0436"));
}

TEST_F(RegistryTest, QueriesTellTheSizeNeeded) {
  ASSERT_EQ(ERROR_SUCCESS, Set(Key(), L"v", REG_QWORD, Bytes(8, 7)));
  BYTE data[8] = {};
  // "<code>, size <size>, type <type>", of a buffer of `size` bytes.
  const auto query = [&](const wchar_t* name, BYTE* out, DWORD size) {
    DWORD type = REG_NONE;
    const LSTATUS code = RegQueryValueExW(Key(), name, nullptr, &type, out, &size);
    std::ostringstream all;
    all << code << ", size " << size << ", type " << type;
    return all.str();
  };
  EXPECT_EQ("234, size 8, type 11", query(L"v", data, 7));
  EXPECT_EQ("0, size 8, type 11", query(L"v", data, 8));
  EXPECT_EQ(7, data[7]);
  EXPECT_EQ("2, size 8, type 0", query(L"w", data, 8));
  EXPECT_EQ("2, size 0, type 0", query(L"w", nullptr, 8));
  EXPECT_EQ(ERROR_SUCCESS, RegQueryValueExW(Key(), L"v", nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(ERROR_INVALID_PARAMETER,
            RegQueryValueExW(Key(), L"v", nullptr, nullptr, data, nullptr));
}

TEST_F(RegistryTest, EnumerationTellsNameTypeAndData) {
  ASSERT_EQ(ERROR_SUCCESS, Set(Key(), L"name", REG_BINARY, {9, 8, 7}));
  wchar_t name[8] = L"";
  BYTE data[8] = {};
  DWORD chars = 5, bytes = 3, type = 0;
  const auto read = [&](DWORD nameChars, DWORD dataBytes) {
    chars = nameChars;
    bytes = dataBytes;
    return RegEnumValueW(Key(), 0, name, &chars, nullptr, &type, data, &bytes);
  };
  EXPECT_EQ(ERROR_MORE_DATA, read(4, 3)) << "no room for the terminator";
  EXPECT_EQ(ERROR_MORE_DATA, read(8, 2));
  EXPECT_EQ(3u, bytes);
  EXPECT_EQ(ERROR_SUCCESS, read(5, 3));
  EXPECT_EQ(L"name"s, name);
  EXPECT_EQ((std::vector<DWORD>{4, REG_BINARY, 3, 7}),
            (std::vector<DWORD>{chars, type, bytes, data[2]}));
  const auto refused = [&](wchar_t* out, DWORD* outChars, DWORD* reserved, BYTE* outData) {
    return RegEnumValueW(Key(), 0, out, outChars, reserved, nullptr, outData, nullptr) ==
           ERROR_INVALID_PARAMETER;
  };
  EXPECT_TRUE(refused(name, &chars, nullptr, data));
  EXPECT_TRUE(refused(name, &chars, &bytes, nullptr));
  EXPECT_TRUE(refused(nullptr, &chars, nullptr, nullptr));
  EXPECT_TRUE(refused(name, nullptr, nullptr, nullptr));
}

// More values than are read ahead at a time.
TEST_F(RegistryTest, EnumeratesManyValuesInAnyOrder) {
  constexpr DWORD kValues = 1500;
  std::set<std::wstring> expected;
  WriteGroup group(Key());
  for (DWORD i = 0; i < kValues; ++i) {
    const std::wstring name = L"value " + std::to_wstring(i * 7 % kValues);
    expected.insert(name);
    ASSERT_EQ(ERROR_SUCCESS, Set(Key(), name.c_str()));
  }
  EXPECT_EQ(ERROR_SUCCESS, group.Commit());
  const std::vector<std::wstring> names = Names(Key());
  EXPECT_EQ(kValues, names.size());
  EXPECT_EQ(expected, std::set<std::wstring>(names.begin(), names.end()));
  for (const DWORD i : {DWORD{1499}, DWORD{700}, DWORD{5}, DWORD{0}, DWORD{1}, DWORD{17}}) {
    std::wstring name;
    EXPECT_EQ(ERROR_SUCCESS, NameAt(Key(), i, &name));
    EXPECT_EQ(names.at(i), name);
  }
}

TEST_F(RegistryTest, EnumerationSeesWritesOfItsHandle) {
  for (const wchar_t* name : {L"a", L"b", L"c", L"d"}) Set(Key(), name);
  // Every other one is removed: what follows moves down.
  std::wstring name;
  for (DWORD i = 0; NameAt(Key(), i, &name) == ERROR_SUCCESS; ++i) {
    EXPECT_EQ(ERROR_SUCCESS, RegDeleteValueW(Key(), name.c_str()));
  }
  EXPECT_EQ(2u, Names(Key()).size());
  EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegDeleteValueW(Key(), L"a"));
}

TEST_F(RegistryTest, TellsCountsAndLongest) {
  UniqueHkey below;
  ASSERT_EQ(ERROR_SUCCESS, Create(Key(), L"sub", below.Receive()));
  ASSERT_EQ(ERROR_SUCCESS, Create(Key(), L"longer", below.Receive()));
  Set(Key(), L"\u20AC\u00E9", REG_SZ, TextBytes(L"x"));
  Set(Key(), L"n", REG_BINARY, Bytes(100));
  // Of keys, of their names, of values, of their names and data, of the class.
  DWORD counts[6] = {9, 9, 9, 9, 9, 4};
  wchar_t className[4] = L"?";
  FILETIME written = {};
  EXPECT_EQ(ERROR_SUCCESS,
            RegQueryInfoKeyW(Key(), className, &counts[5], nullptr, &counts[0], &counts[1], nullptr,
                             &counts[2], &counts[3], &counts[4], nullptr, &written));
  EXPECT_EQ((std::vector<DWORD>{2, 6, 2, 2, 100, 0}), std::vector<DWORD>(counts, counts + 6));
  EXPECT_EQ(L""s, className);
  EXPECT_NE(0u, written.dwHighDateTime);
}

TEST_F(RegistryTest, AKeyThatIsMadeAgainIsAnother) {
  UniqueHkey old, fresh;
  ASSERT_EQ(ERROR_SUCCESS, Create(Key(), L"a\\b", old.Receive()));
  ASSERT_EQ(ERROR_SUCCESS, Set(old.Get(), L"v"));
  EXPECT_EQ(ERROR_SUCCESS, RegDeleteKeyW(Key(), L"A\\B"));
  EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegDeleteKeyW(Key(), L"a\\b"));
  ASSERT_EQ(ERROR_SUCCESS, Create(Key(), L"a\\b", fresh.Receive()));
  EXPECT_EQ(kNone, Get(fresh.Get(), L"v"));
  EXPECT_EQ(ERROR_KEY_DELETED, Set(old.Get(), L"v"));
}

}  // namespace
}  // namespace Corvane::Test
