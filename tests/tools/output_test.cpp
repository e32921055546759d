// What the tool writes: escaped text, JSON, durations, numbers of bytes, a document's progress.
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>
#include <unordered_set>

#include "base/utf8.h"
#include "tests/support/cases.h"
#include "tests/tools/tool_test.h"
#include "tools/map/answers.h"
#include "tools/output/text.h"
#include "tools/print/progress.h"

namespace Corvane::Tool {
namespace {

using Test::Contains;
using Test::ControlsIn;
using Test::ReadCases;

TEST(TextEscape, CharactersAreHarmlessAndDifferFromEachOther) {
  std::unordered_set<std::string> seen;
  for (char32_t c = 0; c <= 0x10FFFF; c += c < 0x3000 ? 1 : 97) {
    if (IsSurrogate(c)) continue;
    std::string text = "a";
    AppendUtf8(c, &text);
    const std::string escaped = EscapeText(text + 'z');
    EXPECT_EQ(EscapeText(ToWide(text + 'z')), escaped);
    EXPECT_TRUE(seen.insert(escaped).second) << escaped;
    EXPECT_EQ(ControlsIn(escaped), U"") << escaped;
  }
}

TEST(TextEscape, WritesWhatATerminalWouldActOnAsText) {
  for (const auto& c : ReadCases("tools/escapes.txt")) {
    EXPECT_EQ(EscapeText(c.Text("text")), c.Text("escaped")) << c.Where();
  }
  const auto high = static_cast<wchar_t>(0xD83D), low = static_cast<wchar_t>(0xDDA8);
  EXPECT_EQ(EscapeText(std::wstring{L'a', high}), "a\\u{D83D}");
  EXPECT_EQ(EscapeText(std::wstring{low, L'z'}), "\\u{DDA8}z");
}

TEST(Duration, IsCutToTwoUnits) {
  for (const auto& c : ReadCases("tools/durations.txt")) {
    const auto ticks = static_cast<std::uint64_t>(c.Number("ticks"));
    EXPECT_EQ(FormatDuration(ticks), c.Text("text")) << c.Where();
  }
}

std::string Json(const std::wstring& name, const std::wstring& text) {
  std::vector<NamedValue> answers;
  answers.push_back({name, S_OK, UniqueVariant(text), {}});
  return FormatJson(answers);
}

TEST(OutputJson, CarriesEveryCharacterAndShowsNoControl) {
  std::wstring text;
  for (int unit = 0; unit < 0x3000; ++unit) text += static_cast<wchar_t>(unit);
  text += L"\uFEFF\uFFFD\U0001F5A8\\u202e\"";
  const std::string json = Json(text, text);
  EXPECT_EQ(nlohmann::json::parse(json)[ToUtf8(text)], ToUtf8(text));
  EXPECT_EQ(ControlsIn(json), U"\n\n\n");
  const auto high = static_cast<wchar_t>(0xD800), low = static_cast<wchar_t>(0xDFFF);
  EXPECT_EQ(Json(L"v", {high, L'a', low, high}), "{\n  \"v\": \"\uFFFDa\uFFFD\uFFFD\"\n}\n");
}

TEST(OutputJson, KeepsTheOrderAndTheKindOfValues) {
  std::vector<NamedValue> answers(6);
  for (NamedValue& answer : answers) answer.result = S_OK;
  answers[0] = {L"z", S_OK, UniqueVariant(L"12"), {}};
  answers[1].name = L"a";
  *answers[1].value.Receive() = _variant_t(-7L).Detach();
  answers[2] = {L"none", S_FALSE, {}, "absent"};
  answers[3].name = L"big";
  *answers[3].value.Receive() = _variant_t(~0ULL).Detach();
  answers[4].name = L"null text";
  answers[4].value.Receive()->vt = VT_BSTR;
  answers[5] = {L"z", S_OK, UniqueVariant(L"again"), {}};
  EXPECT_EQ(FormatJson(answers),
            "{\n  \"z\": \"again\",\n  \"a\": -7,\n  \"none\": null,\n"
            "  \"big\": 18446744073709551615,\n  \"null text\": \"\"\n}\n");
  EXPECT_EQ(FormatJson({}), "{}\n");
}

TEST(ProgressOfDocument, TellsBytesInRoundNumbers) {
  for (const auto& c : ReadCases("tools/bytes.txt")) {
    const auto bytes = static_cast<std::uint64_t>(c.Number("bytes"));
    EXPECT_EQ(FormatBytes(bytes), c.Text("text")) << c.Where();
  }
}

TEST(ProgressOfDocument, IsDrawnFiveTimesASecondAtMost) {
  std::ostringstream out;
  Progress progress(out, true, 1000);
  for (int i = 0; i < 60; ++i) {
    progress.Tell(250, "sending");
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  progress.Say("printed");
  const std::string text = out.str();
  EXPECT_TRUE(Contains(text, "\r[#####---------------]  25%  250 bytes of 1.0 kB sent, "));
  const auto draws = std::count(text.begin(), text.end(), '#') / 5;
  EXPECT_GE(draws, 2);
  EXPECT_LE(draws, 12);  // even where the pauses take four times as long
  // What was drawn is gone before a line that stays.
  EXPECT_TRUE(text.ends_with(" \rcorvane: printed\n")) << text;
}

TEST(ProgressOfDocument, IsNotDrawnWithoutTerminal) {
  std::ostringstream out;
  Progress progress(out, false, std::nullopt);
  progress.Tell(5, "sending");
  EXPECT_EQ(out.str(), "");
}

}  // namespace
}  // namespace Corvane::Tool
