// JSON output, read back by a parser that refuses what is no UTF-8.
#include "base/utf8.h"
#include "tools/map/answers.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/tools/tool_run.h"

namespace Corvane::Tool {
namespace {

NamedValue Text(const std::wstring& name, const std::wstring& text) {
  return {name, S_OK, UniqueVariant(text), {}};
}

template <typename T>
NamedValue Number(const std::wstring& name, VARTYPE type, T VARIANT::*member, T number) {
  NamedValue answer{name, S_OK, {}, {}};
  VARIANT* const value = answer.value.Receive();
  value->vt = type;
  value->*member = number;
  return answer;
}

std::string Format(const std::wstring& name, const std::wstring& text) {
  std::vector<NamedValue> answers;
  answers.push_back(Text(name, text));
  return FormatJson(answers);
}

TEST(OutputJson, CarriesEveryCharacterAndShowsNoControl) {
  std::wstring text;
  for (int unit = 0; unit < 0x3000; ++unit) text += static_cast<wchar_t>(unit);
  text += L"\uFEFF\uFFFD\U0001F5A8\\u202e\"";
  const std::string json = Format(text, text);
  const auto parsed = nlohmann::json::parse(json);
  const std::string utf8 = ToUtf8(text);
  ASSERT_TRUE(parsed.contains(utf8));
  EXPECT_EQ(parsed[utf8], utf8);
  EXPECT_EQ(Corvane::Test::ControlsIn(json), U"\n\n\n");
}

TEST(OutputJson, ReplacesLoneSurrogates) {
  const auto high = static_cast<wchar_t>(0xD800), low = static_cast<wchar_t>(0xDFFF);
  const std::wstring text = {high, L'a', low, high};
  const auto parsed = nlohmann::json::parse(Format(L"v", text));
  EXPECT_EQ(parsed["v"], "\uFFFDa\uFFFD\uFFFD");
}

TEST(OutputJson, KeepsTheOrderAndTheKindOfValues) {
  std::vector<NamedValue> answers;
  answers.push_back(Text(L"z", L"12"));
  answers.push_back(Number<LONG>(L"a", VT_I4, &VARIANT::lVal, -7));
  answers.push_back({L"none", S_FALSE, {}, "absent"});
  answers.push_back(Number<ULONGLONG>(L"big", VT_UI8, &VARIANT::ullVal, ~0ULL));
  answers.push_back(Number<BSTR>(L"null text", VT_BSTR, &VARIANT::bstrVal, nullptr));
  answers.push_back(Text(L"z", L"again"));
  EXPECT_EQ(FormatJson(answers),
            "{\n  \"z\": \"again\",\n  \"a\": -7,\n  \"none\": null,\n"
            "  \"big\": 18446744073709551615,\n  \"null text\": \"\"\n}\n");
  EXPECT_EQ(FormatJson({}), "{}\n");
}

}  // namespace
}  // namespace Corvane::Tool
