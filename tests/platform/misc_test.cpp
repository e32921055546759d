// Text conversion, time, UUIDs and the last error.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <ctime>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <utility>

#include "base/utf8.h"
#include "corvane/platform.h"
#include "platform/system.h"
#include "tests/support/cases.h"
#include "tests/support/wine.h"

namespace Corvane::Test {
namespace {

constexpr DWORD kSentinel = 4711;  // a last error that nothing here sets

// A result and the last error.
using Result = std::pair<int, DWORD>;
template <typename Call>
Result ResultOf(Call call) {
  SetLastError(kSentinel);
  const int result = call();
  return {result, GetLastError()};
}

// "-" is a null pointer; of what is no number the bytes count.
TEST(TextTest, ChecksArgumentsAndConverts) {
  wchar_t wide[8];
  char narrow[8];
  BOOL replaced = FALSE;
  for (const Case& c : CasesHere("platform/text_conversions.txt")) {
    const auto number = [&c](const char* field) { return static_cast<int>(c.Number(field)); };
    const std::string text = c.Text("text");
    const std::wstring source = text == "lone" ? L"\xD800" : ToWide(text);
    const auto flags = static_cast<DWORD>(c.Number("flags"));
    const auto page = static_cast<UINT>(c.Number("page"));
    const bool out = c.Text("out") != "-";
    const Result result = ResultOf([&] {
      if (c.Text("call") == "widen") {
        return MultiByteToWideChar(page, flags, text == "-" ? nullptr : text.c_str(),
                                   number("length"), out ? wide : nullptr, number("size"));
      }
      const bool asks = c.Text("out") == "replaced";
      return WideCharToMultiByte(page, flags, text == "-" ? nullptr : source.c_str(),
                                 number("length"), out ? narrow : nullptr, number("size"),
                                 c.Text("out") == "replacement" ? "?" : nullptr,
                                 asks ? &replaced : nullptr);
    });
    EXPECT_EQ(Result(number("result"), static_cast<DWORD>(c.Number("error"))), result) << c.Where();
  }
}

TEST(TimeTest, CountsUnitsSince1601) {
  for (const Case& c : CasesHere("platform/times.txt")) {
    SCOPED_TRACE(c.Where());
    std::array<WORD, 8> fields{};  // of a SYSTEMTIME
    std::istringstream text(c.Text("fields"));
    for (WORD& field : fields) text >> field;
    const auto time = std::bit_cast<SYSTEMTIME>(fields);
    FILETIME converted = {1, 2};
    SetLastError(kSentinel);
    const bool done = SystemTimeToFileTime(&time, &converted) != FALSE;
    EXPECT_EQ(c.Find("units").has_value(), done);
    EXPECT_EQ(done ? kSentinel : DWORD{ERROR_INVALID_PARAMETER}, GetLastError());
    EXPECT_EQ(done ? c.Number("units") : 0x2'0000'0001, std::bit_cast<std::int64_t>(converted));
  }
}

TEST(TimeTest, AgreesWithTheCLibrary) {
  SYSTEMTIME now{};
  GetSystemTime(&now);
  const std::time_t after = std::time(nullptr);
  std::tm today{};
  today.tm_year = now.wYear - 1900;
  today.tm_mon = now.wMonth - 1;
  today.tm_mday = now.wDay;
  FILETIME fileTime{};
  ASSERT_TRUE(SystemTimeToFileTime(&now, &fileTime));
  const auto units = std::bit_cast<std::int64_t>(fileTime) - 116'444'736'000'000'000;
  EXPECT_NEAR(static_cast<double>(after), static_cast<double>(units) / 1e7, 2);
  std::mktime(&today);
  EXPECT_EQ(today.tm_wday, now.wDayOfWeek);
}

TEST(UuidTest, IsWrittenInItsStandardForm) {
  UUID uuid = {0x12345678, 0x9ABC, 0xDEF0, {0x01, 0x02, 0x03, 0x04, 0xAA, 0xBB, 0xCC, 0xDD}};
  RPC_CSTR text = nullptr;
  EXPECT_EQ(RPC_S_OK, RpcStringFreeA(&text));
  ASSERT_EQ(RPC_S_OK, UuidToStringA(&uuid, &text));
  EXPECT_STREQ("12345678-9abc-def0-0102-0304aabbccdd", reinterpret_cast<char*>(text));
  EXPECT_EQ(RPC_S_OK, RpcStringFreeA(&text));
  if (UnderWine()) GTEST_SKIP() << "Wine 8 leaves the freed pointer in place";
  EXPECT_EQ(nullptr, text);
}

TEST(UuidTest, IsRandomOfVersionFour) {
  std::set<std::array<unsigned char, sizeof(UUID)>> seen;
  for (int i = 0; i < 1000; ++i) {
    UUID uuid{};
    ASSERT_EQ(RPC_S_OK, UuidCreate(&uuid));
    EXPECT_EQ(4, uuid.Data3 >> 12);
    EXPECT_EQ(2, uuid.Data4[0] >> 6);
    EXPECT_TRUE(seen.insert(std::bit_cast<std::array<unsigned char, sizeof(UUID)>>(uuid)).second);
  }
}

TEST(LastErrorTest, BelongsToItsThread) {
  SetLastError(kSentinel);
  DWORD ofOther = kSentinel;
  std::thread([&] { ofOther = GetLastError(); }).join();
  EXPECT_EQ(0u, ofOther);
}

}  // namespace
}  // namespace Corvane::Test
