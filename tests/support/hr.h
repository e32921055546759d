// Result codes in failures and in data files: by name where they have a usual one, else by number.
#ifndef CORVANE_TESTS_SUPPORT_HR_H_
#define CORVANE_TESTS_SUPPORT_HR_H_

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "corvane/platform.h"

namespace Corvane::Test {

inline std::string HrText(HRESULT result) {
  if (result == S_OK) return "S_OK";
  if (result == S_FALSE) return "S_FALSE";
  if (result == E_FAIL) return "E_FAIL";
  if (result == E_INVALIDARG) return "E_INVALIDARG";
  if (result == E_OUTOFMEMORY) return "E_OUTOFMEMORY";
  char number[16];
  std::snprintf(number, sizeof(number), "0x%08X", static_cast<unsigned>(result));
  return number;
}

}  // namespace Corvane::Test

#define EXPECT_HR(expression, code) \
  EXPECT_EQ(::Corvane::Test::HrText(expression), ::Corvane::Test::HrText(code)) << #expression
#define ASSERT_HR(expression, code) \
  ASSERT_EQ(::Corvane::Test::HrText(expression), ::Corvane::Test::HrText(code)) << #expression

#endif  // CORVANE_TESTS_SUPPORT_HR_H_
