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

constexpr Result kInvalid(0, ERROR_INVALID_PARAMETER);

TEST(TextTest, WidenChecksItsArguments) {
  wchar_t out[8];
  const auto widen = [](const char* text, int bytes, wchar_t* output, int size, UINT page = CP_UTF8,
                        DWORD flags = 0) {
    return ResultOf([&] { return MultiByteToWideChar(page, flags, text, bytes, output, size); });
  };
  EXPECT_EQ(Result(3, kSentinel), widen("ab", -1, out, 8, CP_ACP));
  EXPECT_EQ(Result(3, kSentinel), widen("ab", -2, out, 8));
  EXPECT_EQ(Result(1, kSentinel), widen("", -1, out, 8));
  EXPECT_EQ(Result(2, kSentinel), widen("ab", 2, out, 0));
  EXPECT_EQ(Result(0, ERROR_INSUFFICIENT_BUFFER), widen("abc", 3, out, 2));
  EXPECT_EQ(Result(0, ERROR_INSUFFICIENT_BUFFER), widen("ab", -1, out, 2));
  EXPECT_EQ(Result(0, ERROR_NO_UNICODE_TRANSLATION),
            widen("a\x80", 2, out, 8, CP_UTF8, MB_ERR_INVALID_CHARS));
  EXPECT_EQ(Result(2, kSentinel), widen("a\x80", 2, out, 8));
  EXPECT_EQ(kInvalid, widen("ab", 0, out, 8));
  EXPECT_EQ(kInvalid, widen(nullptr, 2, out, 8));
  EXPECT_EQ(kInvalid, widen("ab", 2, nullptr, 8));
  EXPECT_EQ(kInvalid, widen("ab", 2, out, -1));
  EXPECT_EQ(kInvalid, widen("ab", 2, out, 8, 12345));
  if (UnderWine()) GTEST_SKIP() << "Wine 8 takes MB_PRECOMPOSED, which UTF-8 does not have";
  constexpr DWORD kPrecomposed = 1;
  EXPECT_EQ(Result(0, ERROR_INVALID_FLAGS), widen("ab", 2, out, 8, CP_UTF8, kPrecomposed));
}

TEST(TextTest, NarrowChecksItsArguments) {
  char out[8];
  const auto narrow = [](const wchar_t* text, int chars, char* output, int size, DWORD flags = 0,
                         const char* replacement = nullptr, BOOL* replaced = nullptr) {
    return ResultOf([&] {
      return WideCharToMultiByte(CP_UTF8, flags, text, chars, output, size, replacement, replaced);
    });
  };
  const wchar_t lone[] = {static_cast<wchar_t>(0xD800)};
  EXPECT_EQ(Result(3, kSentinel), narrow(L"ab", -1, out, 8));
  EXPECT_EQ(Result(0, ERROR_INSUFFICIENT_BUFFER), narrow(L"a\u20AC", 2, out, 3));
  EXPECT_EQ(Result(0, ERROR_INVALID_FLAGS), narrow(L"ab", 2, out, 8, 1));
  EXPECT_EQ(Result(0, ERROR_NO_UNICODE_TRANSLATION), narrow(lone, 1, out, 8, WC_ERR_INVALID_CHARS));
  EXPECT_EQ(Result(3, kSentinel), narrow(lone, 1, out, 8));
  EXPECT_EQ(kInvalid, narrow(L"ab", 0, out, 8));
  EXPECT_EQ(kInvalid, narrow(nullptr, 2, out, 8));
  EXPECT_EQ(kInvalid, narrow(L"ab", 2, nullptr, 8));
  if (UnderWine()) GTEST_SKIP() << "Wine 8 takes default characters for UTF-8";
  BOOL replaced = FALSE;
  EXPECT_EQ(kInvalid, narrow(L"ab", 2, out, 8, 0, "?"));
  EXPECT_EQ(kInvalid, narrow(L"ab", 2, out, 8, 0, nullptr, &replaced));
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
