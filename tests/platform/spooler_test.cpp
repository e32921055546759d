// Printer data.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "platform/system.h"
#include "platform/write_group.h"
#include "tests/support/test_printer.h"
#include "tests/support/test_store.h"
#include "tests/support/wine.h"

namespace {

using namespace std::string_literals;
using Corvane::Test::TestPrinter;
using Corvane::Test::UnderWine;

constexpr DWORD kSuccess = ERROR_SUCCESS;
using Bytes = std::vector<BYTE>;

class SpoolerTest : public testing::Test {
 protected:
  void SetUp() override {
    if (m_printer.Handle() == nullptr) GTEST_SKIP() << m_printer.Problem();
  }

  HANDLE Printer() const { return m_printer.Handle(); }
  const TestPrinter& Queue() const { return m_printer; }

  DWORD Set(const wchar_t* key, const wchar_t* name, DWORD type, Bytes data) const {
    return SetPrinterDataExW(Printer(), key, name, type, data.data(),
                             static_cast<DWORD>(data.size()));
  }
  Bytes Get(const wchar_t* key, const wchar_t* name) const {
    Bytes data(64);
    DWORD needed = 0;
    const DWORD result = GetPrinterDataExW(Printer(), key, name, nullptr, data.data(), 64, &needed);
    data.resize(result == kSuccess ? needed : 0);
    return data;
  }

 private:
  Corvane::Test::TestStore m_store;
  TestPrinter m_printer;
};

TEST_F(SpoolerTest, EnumeratesWhatWasSet) {
  const std::map<std::wstring, std::pair<DWORD, Bytes>> values = {
      {L"Number", {REG_DWORD, {1, 2, 3, 4}}},
      {L"Odd\u20AC", {REG_BINARY, {1, 2, 3}}},
      // Terminated: of another text the system may look one character further.
      {L"Text", {REG_SZ, {'o', 0, 'f', 0, 'f', 0, 0, 0}}}};
  for (const auto& [name, value] : values) {
    ASSERT_EQ(kSuccess, Set(L"UBidiData", name.c_str(), value.first, value.second));
  }
  DWORD needed = 0;
  DWORD count = 7;
  ASSERT_EQ(DWORD{ERROR_MORE_DATA},
            EnumPrinterDataExW(Printer(), L"UBidiData", nullptr, 0, &needed, &count));
  const DWORD size = needed;
  Bytes buffer(size);
  EXPECT_EQ(DWORD{ERROR_MORE_DATA},
            EnumPrinterDataExW(Printer(), L"UBidiData", buffer.data(), size - 1, &needed, &count));
  EXPECT_EQ(size, needed);
  ASSERT_EQ(kSuccess,
            EnumPrinterDataExW(Printer(), L"ubididata", buffer.data(), size, &needed, &count));
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
  EnumPrinterDataExW(Printer(), L"UBidiData", nullptr, 0, &needed, &count);
  EXPECT_EQ(0u, count);
}

TEST_F(SpoolerTest, ChecksArguments) {
  DWORD needed = 0;
  DWORD count = 0;
  const auto enumerate = [&](HANDLE printer, const wchar_t* key) {
    return EnumPrinterDataExW(printer, key, nullptr, 0, &needed, &count);
  };
  EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, enumerate(Printer(), L"UBidiData"));
  EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, enumerate(Printer(), nullptr));
  EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, enumerate(Printer(), L""));
  EXPECT_EQ(DWORD{ERROR_INVALID_HANDLE}, enumerate(nullptr, L"UBidiData"));
  EXPECT_EQ(DWORD{ERROR_INVALID_HANDLE}, SetPrinterDataExW(reinterpret_cast<HANDLE>(0x12345678),
                                                           L"k", L"v", REG_SZ, nullptr, 0));
  EXPECT_FALSE(ClosePrinter(reinterpret_cast<HANDLE>(0x12345678)));
  EXPECT_EQ(DWORD{ERROR_INVALID_HANDLE}, GetLastError());
  if (UnderWine()) GTEST_SKIP() << "Wine 8 takes null names in SetPrinterDataExW";
  EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, Set(nullptr, L"v", REG_BINARY, {1}));
  EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, Set(L"", L"v", REG_BINARY, {1}));
  EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, Set(L"k", nullptr, REG_BINARY, {1}));
}

TEST_F(SpoolerTest, ReplacesGetsAndDeletes) {
  EXPECT_EQ(kSuccess, Set(L"k", L"v", REG_BINARY, {1}));
  EXPECT_EQ(kSuccess, Set(L"K", L"V", REG_BINARY, {2, 3}));
  EXPECT_EQ((Bytes{2, 3}), Get(L"k", L"v"));
  DWORD needed = 0;
  EXPECT_EQ(DWORD{ERROR_MORE_DATA},
            GetPrinterDataExW(Printer(), L"k", L"v", nullptr, nullptr, 0, &needed));
  EXPECT_EQ(2u, needed);
  EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND},
            GetPrinterDataExW(Printer(), L"k", L"w", nullptr, nullptr, 0, &needed));
  if (UnderWine()) GTEST_SKIP() << "Wine 8 has no DeletePrinterDataExW";
  EXPECT_EQ(kSuccess, DeletePrinterDataExW(Printer(), L"k", L"v"));
  EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, DeletePrinterDataExW(Printer(), L"k", L"v"));
  DWORD count = 7;
  EXPECT_EQ(kSuccess, EnumPrinterDataExW(Printer(), L"k", nullptr, 0, &needed, &count));
  EXPECT_EQ(0u, needed);
  EXPECT_EQ(0u, count);
}

TEST_F(SpoolerTest, RefusesDataThatCannotBeRead) {
  for (const std::intptr_t address : {42, 100'000, -1}) {
    if (UnderWine() && address != 42) continue;  // Wine 8 reads it, and crashes
    EXPECT_EQ(DWORD{ERROR_NOACCESS},
              SetPrinterDataExW(Printer(), L"k", L"v", REG_SZ, reinterpret_cast<BYTE*>(address), 4))
        << address;
  }
  EXPECT_EQ(Bytes{}, Get(L"k", L"v"));
}

TEST_F(SpoolerTest, WritingNeedsTheRightToAdministrate) {
  if (UnderWine()) GTEST_SKIP() << "Wine 8 lets every handle write";
  const HANDLE user = Queue().Open(PRINTER_ACCESS_USE);
  ASSERT_NE(nullptr, user);
  BYTE data = 1;
  EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, SetPrinterDataExW(user, L"k", L"v", REG_BINARY, &data, 1));
  EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, DeletePrinterDataExW(user, L"k", L"v"));
  EXPECT_EQ(kSuccess, Set(L"k", L"v", REG_BINARY, {1}));
  DWORD needed = 0;
  EXPECT_EQ(kSuccess, GetPrinterDataExW(user, L"k", L"v", nullptr, &data, 1, &needed));
  EXPECT_TRUE(ClosePrinter(user));
}

TEST_F(SpoolerTest, KeepsPrintersKeysAndHandlesApart) {
  const TestPrinter other;
  ASSERT_NE(nullptr, other.Handle());
  EXPECT_EQ(kSuccess, Set(L"k", L"v", REG_BINARY, {1}));
  EXPECT_EQ(Bytes{}, Get(L"other", L"v"));
  BYTE data = 0;
  DWORD needed = 0;
  EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND},
            GetPrinterDataExW(other.Handle(), L"k", L"v", nullptr, &data, 1, &needed));
  EXPECT_EQ(ERROR_INVALID_HANDLE, RegCloseKey(static_cast<HKEY>(other.Handle())));
  HKEY key = nullptr;
  ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"Software", 0, nullptr, 0, KEY_READ,
                                           nullptr, &key, nullptr));
  EXPECT_FALSE(ClosePrinter(key));
  EXPECT_EQ(ERROR_SUCCESS, RegCloseKey(key));
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
