// Text conversion, time, UUIDs and the last error.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <ctime>
#include <set>
#include <string>
#include <string_view>
#include <thread>

#include "corvane/platform.h"
#include "platform/system.h"
#include "tests/support/wine.h"

namespace {

using Corvane::Test::UnderWine;

constexpr DWORD kSentinel = 4711;  // a last error that nothing here sets

// Both the size query and the conversion, which must agree.
std::wstring Widen(std::string_view text, DWORD flags = 0) {
  const int bytes = static_cast<int>(text.size());
  const int size = MultiByteToWideChar(CP_UTF8, flags, text.data(), bytes, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(size), L'#');
  if (size == 0) return wide;
  EXPECT_EQ(size, MultiByteToWideChar(CP_UTF8, flags, text.data(), bytes, wide.data(), size));
  return wide;
}

std::string Narrow(std::wstring_view text, DWORD flags = 0) {
  const int chars = static_cast<int>(text.size());
  const int size =
      WideCharToMultiByte(CP_UTF8, flags, text.data(), chars, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<std::size_t>(size), '#');
  if (size == 0) return narrow;
  EXPECT_EQ(size, WideCharToMultiByte(CP_UTF8, flags, text.data(), chars, narrow.data(), size,
                                      nullptr, nullptr));
  return narrow;
}

// What the universal character names below become on either width of wchar_t.
TEST(TextTest, ConvertsWellFormedTextBothWays) {
  const struct {
    const char* name;
    std::string narrow;
    std::wstring wide;
  } cases[] = {
      {"NUL inside", std::string("a\0b", 3), std::wstring(L"a\0b", 3)},
      {"first and last of two bytes", "\xC2\x80\xDF\xBF", L"\x80\x7FF"},
      {"first and last of three bytes", "\xE0\xA0\x80\xEF\xBF\xBF", L"\x800\xFFFF"},
      {"beside the surrogates", "\xED\x9F\xBF\xEE\x80\x80", L"\xD7FF\xE000"},
      {"first and last of four bytes", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", L"\U00010000\U0010FFFF"},
      {"byte order mark",
       "\xEF\xBB\xBF"
       "a",
       L"\xFEFF"
       L"a"},
      {"ASCII of many blocks", std::string(1000, 'x'), std::wstring(1000, L'x')},
      {"other text within a block of ASCII",
       std::string(40, 'x') + "\xE2\x82\xAC" + std::string(40, 'y'),
       std::wstring(40, L'x') + L"\x20AC" + std::wstring(40, L'y')},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.wide, Widen(c.narrow)) << c.name;
    EXPECT_EQ(c.wide, Widen(c.narrow, MB_ERR_INVALID_CHARS)) << c.name;
    EXPECT_EQ(c.narrow, Narrow(c.wide)) << c.name;
    EXPECT_EQ(c.narrow, Narrow(c.wide, WC_ERR_INVALID_CHARS)) << c.name;
  }
}

TEST(TextTest, ReplacesIllFormedBytes) {
  const struct {
    std::string_view narrow;
    std::wstring_view wide;
  } cases[] = {
      {"\x80", L"\xFFFD"},
      {"\xC0\x80", L"\xFFFD\xFFFD"},
      {"\xC2", L"\xFFFD"},
      {"\xC2"
       "A",
       L"\xFFFD"
       L"A"},
      {"\xC2\xC2\xA0", L"\xFFFD\xA0"},
      {"\xE0\x80", L"\xFFFD"},
      {"\xE0\x80\x80", L"\xFFFD\xFFFD"},
      {"\xE2\x82", L"\xFFFD"},
      {"\xE2\x82"
       "A",
       L"\xFFFD"
       L"A"},
      {"\xED\xA0\x80", L"\xFFFD\xFFFD"},
      {"\xF0\x80\x80\x80", L"\xFFFD\xFFFD\xFFFD"},
      {"\xF0\x90\x80", L"\xFFFD"},
      {"\xF0\x9F\x98\xF0", L"\xFFFD\xFFFD"},
      {"\xF4\x90\x80\x80", L"\xFFFD\xFFFD\xFFFD"},
      {"\xF5\x80\x80\x80", L"\xFFFD\xFFFD\xFFFD\xFFFD"},
      {"\xF1\x80\x80\xE0\xA0\xC2"
       "A",
       L"\xFFFD\xFFFD\xFFFD"
       L"A"},
  };
  for (const auto& c : cases) {
    const std::string padding(20, 'x');
    const std::wstring widePadding(20, L'x');
    EXPECT_EQ(std::wstring(c.wide), Widen(c.narrow)) << testing::PrintToString(c.narrow);
    EXPECT_EQ(widePadding + std::wstring(c.wide), Widen(padding + std::string(c.narrow)))
        << testing::PrintToString(c.narrow);
    SetLastError(kSentinel);
    EXPECT_EQ(L"", Widen(c.narrow, MB_ERR_INVALID_CHARS)) << testing::PrintToString(c.narrow);
    EXPECT_EQ(DWORD{ERROR_NO_UNICODE_TRANSLATION}, GetLastError());
  }
}

TEST(TextTest, ReplacesLoneSurrogates) {
  const std::wstring text = {L'a', static_cast<wchar_t>(0xD800), L'b'};
  EXPECT_EQ(
      "a\xEF\xBF\xBD"
      "b",
      Narrow(text));
  SetLastError(kSentinel);
  EXPECT_EQ("", Narrow(text, WC_ERR_INVALID_CHARS));
  EXPECT_EQ(DWORD{ERROR_NO_UNICODE_TRANSLATION}, GetLastError());
}

TEST(TextTest, WidenChecksItsArguments) {
  wchar_t out[8];
  const struct {
    const char* name;
    UINT codePage;
    DWORD flags;
    const char* input;
    int bytes;
    wchar_t* output;
    int size;
    int expected;
    DWORD error;
  } cases[] = {
      {"with the NUL", CP_ACP, 0, "ab", -1, out, 8, 3, kSentinel},
      {"any negative length", CP_UTF8, 0, "ab", -2, out, 8, 3, kSentinel},
      {"empty with the NUL", CP_UTF8, 0, "", -1, out, 8, 1, kSentinel},
      {"size query", CP_UTF8, 0, "ab", 2, nullptr, 0, 2, kSentinel},
      {"size query with a buffer", CP_UTF8, 0, "ab", 2, out, 0, 2, kSentinel},
      {"exact fit", CP_UTF8, 0, "ab", 2, out, 2, 2, kSentinel},
      {"too small", CP_UTF8, 0, "abc", 3, out, 2, 0, ERROR_INSUFFICIENT_BUFFER},
      {"no room for the NUL", CP_UTF8, 0, "ab", -1, out, 2, 0, ERROR_INSUFFICIENT_BUFFER},
      {"no length", CP_UTF8, 0, "ab", 0, out, 8, 0, ERROR_INVALID_PARAMETER},
      {"no input", CP_UTF8, 0, nullptr, 2, out, 8, 0, ERROR_INVALID_PARAMETER},
      {"no output", CP_UTF8, 0, "ab", 2, nullptr, 8, 0, ERROR_INVALID_PARAMETER},
      {"negative size", CP_UTF8, 0, "ab", 2, out, -1, 0, ERROR_INVALID_PARAMETER},
      {"unknown code page", 12345, 0, "ab", 2, out, 8, 0, ERROR_INVALID_PARAMETER},
  };
  for (const auto& c : cases) {
    SetLastError(kSentinel);
    EXPECT_EQ(c.expected,
              MultiByteToWideChar(c.codePage, c.flags, c.input, c.bytes, c.output, c.size))
        << c.name;
    EXPECT_EQ(c.error, GetLastError()) << c.name;
  }
}

TEST(TextTest, NarrowChecksItsArguments) {
  char out[8];
  const struct {
    const char* name;
    DWORD flags;
    const wchar_t* input;
    int chars;
    char* output;
    int size;
    int expected;
    DWORD error;
  } cases[] = {
      {"with the NUL", 0, L"ab", -1, out, 8, 3, kSentinel},
      {"size query", 0, L"\x20AC", 1, nullptr, 0, 3, kSentinel},
      {"no room for a whole character", 0, L"a\x20AC", 2, out, 3, 0, ERROR_INSUFFICIENT_BUFFER},
      {"no length", 0, L"ab", 0, out, 8, 0, ERROR_INVALID_PARAMETER},
      {"no input", 0, nullptr, 2, out, 8, 0, ERROR_INVALID_PARAMETER},
      {"no output", 0, L"ab", 2, nullptr, 8, 0, ERROR_INVALID_PARAMETER},
      {"foreign flag", 1, L"ab", 2, out, 8, 0, ERROR_INVALID_FLAGS},
  };
  for (const auto& c : cases) {
    SetLastError(kSentinel);
    EXPECT_EQ(c.expected, WideCharToMultiByte(CP_UTF8, c.flags, c.input, c.chars, c.output, c.size,
                                              nullptr, nullptr))
        << c.name;
    EXPECT_EQ(c.error, GetLastError()) << c.name;
  }
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
  EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, GetLastError());
}

std::uint64_t Units(const FILETIME& time) {
  return (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
}

FILETIME FromUnits(std::uint64_t units) {
  return {static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
}

TEST(TimeTest, ConvertsBothWays) {
  const struct {
    const char* name;
    SYSTEMTIME time;
    std::uint64_t units;
  } cases[] = {
      {"first moment", {1601, 1, 1, 1, 0, 0, 0, 0}, 0},
      {"one millisecond", {1601, 1, 1, 1, 0, 0, 0, 1}, 10'000},
      {"end of February 1900", {1900, 2, 3, 28, 23, 59, 59, 999}, 94'405'823'999'990'000},
      {"leap day of 2000", {2000, 2, 2, 29, 23, 59, 59, 999}, 125'963'423'999'990'000},
      {"Unix epoch", {1970, 1, 4, 1, 0, 0, 0, 0}, 116'444'736'000'000'000},
      {"last moment", {30827, 12, 5, 31, 23, 59, 59, 999}, 9'223'149'887'999'990'000},
  };
  for (const auto& c : cases) {
    FILETIME fileTime{};
    EXPECT_TRUE(SystemTimeToFileTime(&c.time, &fileTime)) << c.name;
    EXPECT_EQ(c.units, Units(fileTime)) << c.name;
    SYSTEMTIME time{};
    fileTime = FromUnits(c.units + 9'999);
    EXPECT_TRUE(FileTimeToSystemTime(&fileTime, &time)) << c.name;
    EXPECT_EQ(0, std::memcmp(&c.time, &time, sizeof(time))) << c.name;
  }
}

struct BadTime {
  const char* name;
  SYSTEMTIME time;
};

template <std::size_t kCount>
void ExpectRefused(const BadTime (&cases)[kCount]) {
  for (const BadTime& c : cases) {
    FILETIME fileTime = {1, 2};
    SetLastError(kSentinel);
    EXPECT_FALSE(SystemTimeToFileTime(&c.time, &fileTime)) << c.name;
    EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, GetLastError()) << c.name;
    EXPECT_EQ(1u, fileTime.dwLowDateTime) << c.name;
  }
}

TEST(TimeTest, RefusesFieldsOutOfRange) {
  ExpectRefused({
      {"before 1601", {1600, 12, 0, 31, 0, 0, 0, 0}},
      {"month 0", {2001, 0, 0, 1, 0, 0, 0, 0}},
      {"month 13", {2001, 13, 0, 1, 0, 0, 0, 0}},
      {"month 257", {2001, 257, 0, 1, 0, 0, 0, 0}},
      {"day 0", {2001, 1, 0, 0, 0, 0, 0, 0}},
      {"day 32", {2001, 1, 0, 32, 0, 0, 0, 0}},
      {"day 257", {2001, 1, 0, 257, 0, 0, 0, 0}},
      {"31 April", {2001, 4, 0, 31, 0, 0, 0, 0}},
      {"hour 24", {2001, 1, 0, 1, 24, 0, 0, 0}},
      {"minute 60", {2001, 1, 0, 1, 0, 60, 0, 0}},
      {"second 60", {2001, 1, 0, 1, 0, 0, 60, 0}},
      {"millisecond 1000", {2001, 1, 0, 1, 0, 0, 0, 1000}},
  });
}

TEST(TimeTest, RefusesLeapDaysOfCommonYearsAndYearsAfter30827) {
  if (UnderWine()) GTEST_SKIP() << "Wine 8 takes 29 February in every year, and the year 30828";
  ExpectRefused({
      {"after 30827", {30828, 1, 0, 1, 0, 0, 0, 0}},
      {"29 February", {2001, 2, 0, 29, 0, 0, 0, 0}},
      {"29 February of a century", {1900, 2, 0, 29, 0, 0, 0, 0}},
  });
}

TEST(TimeTest, RefusesCountsOf63Bits) {
  SYSTEMTIME time{};
  const FILETIME tooLate = FromUnits(std::uint64_t{1} << 63);
  EXPECT_FALSE(FileTimeToSystemTime(&tooLate, &time));
  EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, GetLastError());
  const FILETIME last = FromUnits((std::uint64_t{1} << 63) - 1);
  EXPECT_TRUE(FileTimeToSystemTime(&last, &time));
  EXPECT_EQ(30828, time.wYear);
  EXPECT_EQ(477, time.wMilliseconds);
}

TEST(TimeTest, AgreesWithTheCLibrary) {
  constexpr std::uint64_t kUnixEpoch = 116'444'736'000'000'000;
  constexpr std::uint64_t kUnitsPerSecond = 10'000'000;
  const std::time_t before = std::time(nullptr);
  SYSTEMTIME now{};
  GetSystemTime(&now);
  const std::time_t after = std::time(nullptr);
  FILETIME fileTime{};
  ASSERT_TRUE(SystemTimeToFileTime(&now, &fileTime));
  const auto seconds = static_cast<std::time_t>((Units(fileTime) - kUnixEpoch) / kUnitsPerSecond);
  EXPECT_LE(before - 1, seconds);  // the C library's clock ticks later
  EXPECT_GE(after + 1, seconds);
}

TEST(UuidTest, IsWrittenInItsStandardForm) {
  UUID uuid = {0x12345678, 0x9ABC, 0xDEF0, {0x01, 0x02, 0x03, 0x04, 0xAA, 0xBB, 0xCC, 0xDD}};
  RPC_CSTR text = nullptr;
  ASSERT_EQ(RPC_S_OK, UuidToStringA(&uuid, &text));
  EXPECT_STREQ("12345678-9abc-def0-0102-0304aabbccdd", reinterpret_cast<char*>(text));
  EXPECT_EQ(RPC_S_OK, RpcStringFreeA(&text));
  RPC_CSTR none = nullptr;
  EXPECT_EQ(RPC_S_OK, RpcStringFreeA(&none));
  if (UnderWine()) GTEST_SKIP() << "Wine 8 leaves the freed pointer in place";
  EXPECT_EQ(nullptr, text);
}

TEST(UuidTest, IsRandomOfVersionFour) {
  std::set<std::string> seen;
  for (int i = 0; i < 1000; ++i) {
    UUID uuid{};
    ASSERT_EQ(RPC_S_OK, UuidCreate(&uuid));
    RPC_CSTR text = nullptr;
    ASSERT_EQ(RPC_S_OK, UuidToStringA(&uuid, &text));
    const std::string written = reinterpret_cast<char*>(text);
    RpcStringFreeA(&text);
    EXPECT_EQ('4', written[14]) << written;
    EXPECT_NE(std::string::npos, std::string("89ab").find(written[19])) << written;
    EXPECT_TRUE(seen.insert(written).second) << written;
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
