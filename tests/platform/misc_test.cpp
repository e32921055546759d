// Text conversion, time, UUIDs and the last error.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <bit>
#include <ctime>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "corvane/platform.h"
#include "platform/system.h"
#include "tests/support/wine.h"

namespace {

using Corvane::Test::UnderWine;

constexpr DWORD kSentinel = 4711;  // a last error that nothing here sets

// A result and the last error.
using Result = std::pair<int, DWORD>;

TEST(TextTest, WidenChecksItsArguments) {
  wchar_t out[8];
  const auto widen = [](const char* text, int bytes, wchar_t* output, int size,
                        UINT codePage = CP_UTF8, DWORD flags = 0) {
    SetLastError(kSentinel);
    const int result = MultiByteToWideChar(codePage, flags, text, bytes, output, size);
    return Result(result, GetLastError());
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
  const Result invalid(0, ERROR_INVALID_PARAMETER);
  EXPECT_EQ(invalid, widen("ab", 0, out, 8));
  EXPECT_EQ(invalid, widen(nullptr, 2, out, 8));
  EXPECT_EQ(invalid, widen("ab", 2, nullptr, 8));
  EXPECT_EQ(invalid, widen("ab", 2, out, -1));
  EXPECT_EQ(invalid, widen("ab", 2, out, 8, 12345));
}

TEST(TextTest, NarrowChecksItsArguments) {
  char out[8];
  const auto narrow = [](const wchar_t* text, int chars, char* output, int size, DWORD flags = 0) {
    SetLastError(kSentinel);
    const int result =
        WideCharToMultiByte(CP_UTF8, flags, text, chars, output, size, nullptr, nullptr);
    return Result(result, GetLastError());
  };
  EXPECT_EQ(Result(3, kSentinel), narrow(L"ab", -1, out, 8));
  EXPECT_EQ(Result(0, ERROR_INSUFFICIENT_BUFFER), narrow(L"a\u20AC", 2, out, 3));
  EXPECT_EQ(Result(0, ERROR_INVALID_FLAGS), narrow(L"ab", 2, out, 8, 1));
  const wchar_t lone[] = {static_cast<wchar_t>(0xD800)};
  EXPECT_EQ(Result(0, ERROR_NO_UNICODE_TRANSLATION), narrow(lone, 1, out, 8, WC_ERR_INVALID_CHARS));
  EXPECT_EQ(Result(3, kSentinel), narrow(lone, 1, out, 8));
  const Result invalid(0, ERROR_INVALID_PARAMETER);
  EXPECT_EQ(invalid, narrow(L"ab", 0, out, 8));
  EXPECT_EQ(invalid, narrow(nullptr, 2, out, 8));
  EXPECT_EQ(invalid, narrow(L"ab", 2, nullptr, 8));
}

TEST(TextTest, RefusesWhatUtf8DoesNotHave) {
  if (UnderWine()) GTEST_SKIP() << "Wine 8 takes MB_PRECOMPOSED and default characters for UTF-8";
  constexpr DWORD kPrecomposed = 1;
  wchar_t wide[4];
  char narrow[4];
  BOOL used = FALSE;
  EXPECT_EQ(0, MultiByteToWideChar(CP_UTF8, kPrecomposed, "ab", 2, wide, 4));
  EXPECT_EQ(DWORD{ERROR_INVALID_FLAGS}, GetLastError());
  EXPECT_EQ(0, WideCharToMultiByte(CP_UTF8, 0, L"ab", 2, narrow, 4, "?", nullptr));
  EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, GetLastError());
  EXPECT_EQ(0, WideCharToMultiByte(CP_UTF8, 0, L"ab", 2, narrow, 4, nullptr, &used));
}

using Fields = std::array<WORD, 8>;  // of a SYSTEMTIME

TEST(TimeTest, CountsUnitsSince1601) {
  const std::pair<Fields, std::uint64_t> cases[] = {
      {{1601, 1, 1, 1, 0, 0, 0, 0}, 0},
      {{1601, 1, 1, 1, 0, 0, 0, 1}, 10'000},
      {{1900, 2, 3, 28, 23, 59, 59, 999}, 94'405'823'999'990'000},
      {{2000, 2, 2, 29, 23, 59, 59, 999}, 125'963'423'999'990'000},
      {{1970, 1, 4, 1, 0, 0, 0, 0}, 116'444'736'000'000'000},
      {{30827, 12, 5, 31, 23, 59, 59, 999}, 9'223'149'887'999'990'000}};
  for (const auto& [fields, units] : cases) {
    const auto time = std::bit_cast<SYSTEMTIME>(fields);
    FILETIME fileTime{};
    EXPECT_TRUE(SystemTimeToFileTime(&time, &fileTime));
    EXPECT_EQ(units, std::bit_cast<std::uint64_t>(fileTime)) << testing::PrintToString(fields);
  }
}

void ExpectRefused(const Fields& fields) {
  const auto time = std::bit_cast<SYSTEMTIME>(fields);
  FILETIME fileTime = {1, 2};
  SetLastError(kSentinel);
  EXPECT_FALSE(SystemTimeToFileTime(&time, &fileTime)) << testing::PrintToString(fields);
  EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, GetLastError());
  EXPECT_EQ(1u, fileTime.dwLowDateTime);
}

TEST(TimeTest, RefusesFieldsOutOfRange) {
  for (const Fields& fields :
       {Fields{1600, 12, 0, 31}, Fields{2001, 0, 0, 1}, Fields{2001, 13, 0, 1},
        Fields{2001, 257, 0, 1}, Fields{2001, 1, 0, 0}, Fields{2001, 1, 0, 32},
        Fields{2001, 1, 0, 257}, Fields{2001, 4, 0, 31}, Fields{2001, 1, 0, 1, 24},
        Fields{2001, 1, 0, 1, 0, 60}, Fields{2001, 1, 0, 1, 0, 0, 60},
        Fields{2001, 1, 0, 1, 0, 0, 0, 1000}}) {
    ExpectRefused(fields);
  }
  if (UnderWine()) GTEST_SKIP() << "Wine 8 takes 29 February in every year, and the year 30828";
  for (const Fields& fields :
       {Fields{30828, 1, 0, 1}, Fields{2001, 2, 0, 29}, Fields{1900, 2, 0, 29}}) {
    ExpectRefused(fields);
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
  // No system call between setting and reading: on Windows each may set the last error.
  std::atomic<bool> begin = false;
  std::atomic<bool> done = false;
  std::thread other([&] {
    while (!begin) {
    }
    SetLastError(1);
    done = true;
  });
  SetLastError(kSentinel);
  begin = true;
  while (!done) {
  }
  EXPECT_EQ(kSentinel, GetLastError());
  other.join();
}

}  // namespace
