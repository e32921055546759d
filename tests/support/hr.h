// Result codes in failures, by name and number.
#ifndef CORVANE_TESTS_SUPPORT_HR_H_
#define CORVANE_TESTS_SUPPORT_HR_H_

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "corvane/platform.h"

namespace Corvane::Test {

inline std::string HrText(HRESULT result) {
  static const struct {
    HRESULT code;
    const char* name;
  } kNames[] = {{S_OK, "S_OK"},           {S_FALSE, "S_FALSE"},
                {E_FAIL, "E_FAIL"},       {E_INVALIDARG, "E_INVALIDARG"},
                {E_NOTIMPL, "E_NOTIMPL"}, {E_OUTOFMEMORY, "E_OUTOFMEMORY"}};
  char number[16];
  std::snprintf(number, sizeof(number), "0x%08X", static_cast<unsigned>(result));
  for (const auto& known : kNames) {
    if (known.code == result) return std::string(known.name) + " (" + number + ")";
  }
  return number;
}

}  // namespace Corvane::Test

#define EXPECT_HR(expression, code) \
  EXPECT_EQ(::Corvane::Test::HrText(expression), ::Corvane::Test::HrText(code)) << #expression
#define ASSERT_HR(expression, code) \
  ASSERT_EQ(::Corvane::Test::HrText(expression), ::Corvane::Test::HrText(code)) << #expression

#endif  // CORVANE_TESTS_SUPPORT_HR_H_
