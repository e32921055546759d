// Printer data.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "corvane/handles.h"
#include "platform/system.h"
#include "tests/support/cases.h"
#include "tests/support/test_printer.h"
#include "tests/support/test_store.h"
#include "tests/support/wine.h"

namespace Corvane::Test {
namespace {

using namespace std::string_literals;
using Bytes = std::vector<BYTE>;

constexpr DWORD kSuccess = ERROR_SUCCESS;
constexpr DWORD kMoreData = ERROR_MORE_DATA;

DWORD Set(HANDLE printer, const wchar_t* key, const wchar_t* name, Bytes data = {1},
          DWORD type = REG_BINARY) {
  return SetPrinterDataExW(printer, key, name, type, data.data(), static_cast<DWORD>(data.size()));
}

DWORD Get(HANDLE printer, const wchar_t* key, const wchar_t* name, Bytes* data) {
  DWORD needed = 0;
  data->resize(64);
  const DWORD code = GetPrinterDataExW(printer, key, name, nullptr, data->data(), 64, &needed);
  data->resize(needed);
  return code;
}

// The code of a call named in the data file.
DWORD Call(const std::string& call, HANDLE printer, const wchar_t* key, const wchar_t* value) {
  DWORD needed = 0, count = 0;
  if (call == "set") return Set(printer, key, value);
  if (call == "get") return GetPrinterDataExW(printer, key, value, nullptr, nullptr, 0, &needed);
  if (call == "delete") return DeletePrinterDataExW(printer, key, value);
  if (call == "enumerate") return EnumPrinterDataExW(printer, key, nullptr, 0, &needed, &count);
  EXPECT_EQ("close", call);
  return ClosePrinter(printer) ? kSuccess : GetLastError();
}

class SpoolerTest : public testing::Test {
 protected:
  void SetUp() override {
    if (Printer() == nullptr) GTEST_SKIP() << m_printer.Problem();
  }

  HANDLE Printer() const { return m_printer.Handle(); }
  const TestPrinter& Queue() const { return m_printer; }

 private:
  TestStore m_store;
  TestPrinter m_printer;
};

TEST_F(SpoolerTest, EnumeratesWhatWasSet) {
  const std::map<std::wstring, std::pair<DWORD, Bytes>> values = {
      {L"Number", {REG_DWORD, {1, 2, 3, 4}}},
      {L"Odd\u20AC", {REG_BINARY, {1, 2, 3}}},
      // Terminated: of another text the system may look one character further.
      {L"Text", {REG_SZ, {'o', 0, 'f', 0, 'f', 0, 0, 0}}}};
  for (const auto& [name, value] : values) {
    ASSERT_EQ(kSuccess, Set(Printer(), L"UBidiData", name.c_str(), value.second, value.first));
  }
  DWORD needed = 0, count = 7;
  const auto enumerate = [&](Bytes* buffer, DWORD size) {
    return EnumPrinterDataExW(Printer(), L"ubididata", buffer ? buffer->data() : nullptr, size,
                              &needed, &count);
  };
  ASSERT_EQ(kMoreData, enumerate(nullptr, 0));
  const DWORD size = needed;
  Bytes buffer(size);
  EXPECT_EQ(kMoreData, enumerate(&buffer, size - 1));
  EXPECT_EQ(size, needed);
  ASSERT_EQ(kSuccess, enumerate(&buffer, size));
  ASSERT_EQ(values.size(), count);
  std::map<std::wstring, std::pair<DWORD, Bytes>> found;
  for (DWORD i = 0; i < count; ++i) {
    PRINTER_ENUM_VALUESW entry;
    std::memcpy(&entry, buffer.data() + i * sizeof entry, sizeof entry);
    const std::wstring name = entry.pValueName;
    EXPECT_EQ((name.size() + 1) * sizeof(wchar_t), entry.cbValueName);
    EXPECT_GE(reinterpret_cast<BYTE*>(entry.pValueName), buffer.data());
    EXPECT_LE(reinterpret_cast<BYTE*>(entry.pValueName) + entry.cbValueName, buffer.data() + size);
    found[name] = {entry.dwType, Bytes(entry.pData, entry.pData + entry.cbData)};
  }
  EXPECT_EQ(values, found);
  if (UnderWine()) GTEST_SKIP() << "Wine 8 counts the values that did not fit";
  EXPECT_EQ(kMoreData, enumerate(nullptr, 0));
  EXPECT_EQ(0u, count);
}

// The codes of calls on a printer with the value "v" of the key "k".
TEST_F(SpoolerTest, RefusesWhatItCannotDo) {
  const TestPrinter other;
  const UniquePrinter user(Queue().Open(PRINTER_ACCESS_USE));
  UniqueHkey key;
  ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"Software", 0, nullptr, 0, KEY_READ,
                                           nullptr, key.Receive(), nullptr));
  const std::map<std::string, HANDLE> printers = {
      {"own", Printer()},   {"other", other.Handle()},
      {"user", user.Get()}, {"key", key.Get()},
      {"null", nullptr},    {"none", reinterpret_cast<HANDLE>(0x12345678)}};
  ASSERT_EQ(kSuccess, Set(Printer(), L"k", L"v"));
  for (const Case& c : CasesHere("platform/spooler_codes.txt")) {
    const std::wstring name = c.Wide("key"), value = c.Wide("value");
    EXPECT_EQ(c.Number("code"),
              Call(c.Text("call"), printers.at(c.Text("printer")),
                   name == L"-" ? nullptr : name.c_str(), value == L"-" ? nullptr : value.c_str()))
        << c.Where();
  }
  EXPECT_EQ(ERROR_INVALID_HANDLE, RegCloseKey(static_cast<HKEY>(other.Handle())));
}

TEST_F(SpoolerTest, ReplacesGetsAndDeletes) {
  Bytes data;
  EXPECT_EQ(kSuccess, Set(Printer(), L"k", L"v"));
  EXPECT_EQ(kSuccess, Set(Printer(), L"K", L"V", {2, 3}));
  EXPECT_EQ(kSuccess, Get(Printer(), L"k", L"v", &data));
  EXPECT_EQ((Bytes{2, 3}), data);
  for (const std::intptr_t address : {42, 100'000, -1}) {
    if (UnderWine() && address != 42) continue;  // Wine 8 reads it, and crashes
    EXPECT_EQ(DWORD{ERROR_NOACCESS},
              SetPrinterDataExW(Printer(), L"k", L"w", REG_SZ, reinterpret_cast<BYTE*>(address), 4))
        << address;
  }
  EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, Get(Printer(), L"k", L"w", &data));
  if (UnderWine()) GTEST_SKIP() << "Wine 8 has no DeletePrinterDataExW";
  EXPECT_EQ(kSuccess, DeletePrinterDataExW(Printer(), L"k", L"v"));
  EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, DeletePrinterDataExW(Printer(), L"k", L"v"));
  DWORD needed = 7, count = 7;
  EXPECT_EQ(kSuccess, EnumPrinterDataExW(Printer(), L"k", nullptr, 0, &needed, &count));
  EXPECT_EQ(0u, needed + count);
}

TEST_F(SpoolerTest, RefusesIllFormedPrinterNames) {
  for (std::wstring name : {L""s, L"a,b"s, L"a!b"s, L"\\\\a"s, std::wstring(221, L'x')}) {
    if (UnderWine() && name.empty()) continue;  // Wine 8 opens the print server
    HANDLE printer = Printer();
    EXPECT_FALSE(OpenPrinterW(name.data(), &printer, nullptr));
    EXPECT_EQ(DWORD{ERROR_INVALID_PRINTER_NAME}, GetLastError()) << testing::PrintToString(name);
    EXPECT_EQ(nullptr, printer);
  }
}

}  // namespace
}  // namespace Corvane::Test
