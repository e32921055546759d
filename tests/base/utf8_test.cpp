#include "base/utf8.h"

#include <gtest/gtest.h>

#include <array>

#include "platform/system.h"

namespace Corvane::Test {
namespace {

const wchar_t kHigh = static_cast<wchar_t>(0xD83D);

// Conversion and measure, which must agree.
std::wstring Decoded(std::string_view utf8, Malformed policy) {
  std::wstring wide(Measure(utf8, policy).written, L'#');
  EXPECT_EQ(wide.size(), Convert(utf8, policy, wide).written);
  return wide;
}

std::string Encoded(std::wstring_view wide, Malformed policy) {
  std::string utf8(Measure(wide, policy).written, '#');
  EXPECT_EQ(utf8.size(), Convert(wide, policy, utf8).written);
  return utf8;
}

// The system's own conversion, which replaces alike.
std::wstring SystemWide(std::string_view utf8) {
  wchar_t wide[1000];
  const int chars = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()),
                                        wide, static_cast<int>(std::size(wide)));
  return {wide, static_cast<std::size_t>(chars)};
}

std::string SystemUtf8(std::wstring_view wide) {
  char utf8[1000];
  const int bytes = WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()),
                                        utf8, static_cast<int>(std::size(utf8)), nullptr, nullptr);
  return {utf8, static_cast<std::size_t>(bytes)};
}

TEST(Utf8, ConvertsWellFormedTextBothWays) {
  const std::string x(400, 'x');
  const std::wstring wideX(400, L'x');
  const struct {
    const char* name;
    std::string utf8;
    std::wstring wide;
  } kCases[] = {
      {"nothing", "", L""},
      {"NUL inside", {"a\0b", 3}, {L"a\0b", 3}},
      {"ends of two bytes", "\xC2\x80\xDF\xBF", L"\x80\u07FF"},
      {"ends of three bytes", "\xE0\xA0\x80\xEF\xBF\xBF", L"\u0800\uFFFF"},
      {"beside the surrogates", "\xED\x9F\xBF\xEE\x80\x80", L"\uD7FF\uE000"},
      {"ends of four bytes", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", L"\U00010000\U0010FFFF"},
      {"inside blocks of ASCII", x + "\xE2\x82\xAC" + x, wideX + L"\u20AC" + wideX},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(c.wide, ToWide(c.utf8)) << c.name;
    EXPECT_EQ(c.wide, SystemWide(c.utf8)) << c.name;
    EXPECT_EQ(c.utf8, SystemUtf8(c.wide)) << c.name;
    EXPECT_EQ(c.wide, ToWideStrictly(c.utf8)) << c.name;
    EXPECT_EQ(c.wide, Decoded(c.utf8, Malformed::kKeep)) << c.name;
    EXPECT_EQ(c.utf8, ToUtf8(c.wide)) << c.name;
    EXPECT_EQ(c.utf8, ToUtf8Strictly(c.wide)) << c.name;
    EXPECT_EQ(c.utf8, Encoded(c.wide, Malformed::kKeep)) << c.name;
    std::string again;
    for (std::size_t i = 0; i < c.wide.size();) AppendUtf8(NextCodePoint(c.wide, &i), &again);
    EXPECT_EQ(c.utf8, again) << c.name;
  }
}

TEST(Utf8, ReplacesOrRefusesMalformedBytes) {
  // A question mark stands for U+FFFD.
  struct Row {
    std::string utf8;
    std::wstring wide;
  };
  for (auto [utf8, wide] :
       {Row{"\x80", L"?"}, Row{"\xC0\x80", L"??"}, Row{"\xC2", L"?"}, Row{"\xC2z", L"?z"},
        Row{"\xC2\xC2\xA0", L"?\xA0"}, Row{"\xE0\x80", L"?"}, Row{"\xE0\x80\x80", L"??"},
        Row{"\xE2\x82", L"?"}, Row{"\xE2\x82z", L"?z"}, Row{"\xED\xA0\x80", L"??"},
        Row{"\xF0\x80\x80\x80", L"???"}, Row{"\xF0\x90\x80", L"?"}, Row{"\xF0\x9F\x98\xF0", L"??"},
        Row{"\xF4\x90\x80\x80", L"???"}, Row{"\xF5\x80\x80\x80", L"????"},
        Row{"\xF1\x80\x80\xE0\xA0\xC2z", L"???z"}}) {
    for (wchar_t& c : wide) c = c == L'?' ? L'\uFFFD' : c;
    const std::string name = testing::PrintToString(utf8);
    EXPECT_EQ(wide, ToWide(utf8)) << name;
    EXPECT_EQ(wide, SystemWide(utf8)) << name;
    EXPECT_EQ(std::wstring(20, L'x') + wide, ToWide(std::string(20, 'x') + utf8)) << name;
    EXPECT_EQ(std::nullopt, ToWideStrictly(utf8)) << name;
    EXPECT_TRUE(Measure(utf8, Malformed::kRefuse).malformed) << name;
    std::wstring again;
    for (std::size_t i = 0; i < utf8.size();) {
      again.push_back(static_cast<wchar_t>(NextCodePoint(utf8, &i)));
    }
    EXPECT_EQ(wide, again) << name;
  }
}

TEST(Utf8, ReplacesRefusesOrKeepsLoneSurrogates) {
  const std::wstring wide = {L'a', kHigh, L'z'};
  const std::string kept = "a\xED\xA0\xBDz";
  EXPECT_EQ("a\xEF\xBF\xBDz", ToUtf8(wide));
  EXPECT_EQ("a\xEF\xBF\xBDz", SystemUtf8(wide));
  EXPECT_EQ(std::nullopt, ToUtf8Strictly(wide));
  EXPECT_EQ(kept, Encoded(wide, Malformed::kKeep));
  EXPECT_EQ(wide, Decoded(kept, Malformed::kKeep));
  std::size_t position = 1;
  EXPECT_EQ(char32_t{0xD83D}, NextCodePoint(wide, &position));
  EXPECT_EQ(2u, position);
}

TEST(Utf8, WritesWholeCharactersThatFit) {
  std::array<char, 4> bytes{};
  const Conversion done = Convert(L"a\u20AC\u20AC", Malformed::kReplace, bytes);
  EXPECT_EQ(2u, done.read);
  EXPECT_EQ(4u, done.written);
  EXPECT_FALSE(done.malformed);
  wchar_t unit[1];
  EXPECT_EQ(sizeof(wchar_t) == 2 ? 0u : 1u,
            Convert("\U0001F5A8", Malformed::kReplace, unit).written);
}

}  // namespace
}  // namespace Corvane::Test
