// VariantChangeType: numbers, text, arrays of bytes, and what a failure leaves behind.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "corvane/platform.h"
#include "tests/support/hr.h"
#include "tests/support/wine.h"

namespace {

using Corvane::Test::HrText;

// The result of a conversion to `type`, or the name of its failure.
std::string Convert(const VARIANT& source, unsigned type, USHORT flags = 0) {
  _variant_t result;
  VARIANT view = source;  // some systems' headers take no const source
  const HRESULT status = VariantChangeType(&result, &view, flags, static_cast<VARTYPE>(type));
  EXPECT_EQ(SUCCEEDED(status) ? type : unsigned{VT_EMPTY}, result.vt) << HrText(status);
  if (status == DISP_E_TYPEMISMATCH) return "mismatch";
  if (status == DISP_E_OVERFLOW) return "overflow";
  if (status == DISP_E_BADVARTYPE) return "bad type";
  if (FAILED(status)) return HrText(status);
  if (type == VT_I1) return std::to_string(static_cast<signed char>(result.cVal));
  if (type == VT_UI1) return std::to_string(result.bVal);
  if (type == VT_I2 || type == VT_BOOL) return std::to_string(result.iVal);
  if (type == VT_UI2) return std::to_string(result.uiVal);
  if (type == VT_I4 || type == VT_ERROR) return std::to_string(result.lVal);
  if (type == VT_UI4) return std::to_string(result.ulVal);
  if (type == VT_I8) return std::to_string(result.llVal);
  if (type == VT_UI8) return std::to_string(result.ullVal);
  if (type == VT_BSTR) return {result.bstrVal, result.bstrVal + SysStringLen(result.bstrVal)};
  if (type != VT_R4 && type != VT_R8) return "done";
  char number[64];
  std::snprintf(number, sizeof(number), "%.15g",
                type == VT_R4 ? static_cast<double>(result.fltVal) : result.dblVal);
  return number;
}

struct Row {
  _variant_t source;
  std::string expected;
};

void CheckRow(unsigned type, const Row& row) {
  const _variant_t& source = row.source;
  const bool text = source.vt == VT_BSTR && source.bstrVal != nullptr;
  EXPECT_EQ(row.expected, Convert(source, type))
      << "vt " << source.vt << " to " << type << ": "
      << testing::PrintToString(text ? source.bstrVal : std::to_wstring(source.llVal));
}

template <typename... Rows>
void Check(unsigned type, const Rows&... rows) {
  (CheckRow(type, rows), ...);
}

_variant_t Zero(unsigned type) {
  VARIANT result{};
  result.vt = static_cast<VARTYPE>(type);
  return {result, false};
}

TEST(VariantChangeTypeTest, WritesNumbers) {
  Check(VT_BSTR, Row{{}, ""}, Row{-5L, "-5"}, Row{short{-5}, "-5"}, Row{'\xFD', "-3"},
        Row{BYTE{200}, "200"}, Row{7, "7"}, Row{~0u, "4294967295"}, Row{~0ul, "4294967295"},
        Row{LLONG_MIN, "-9223372036854775808"}, Row{~0ull, "18446744073709551615"}, Row{true, "-1"},
        Row{false, "0"});
}

TEST(VariantChangeTypeTest, WritesRealsWithFifteenOrSevenDigits) {
  Check(VT_BSTR, Row{0.0, "0"}, Row{-0.0, "0"}, Row{1.0, "1"}, Row{1.5, "1.5"}, Row{0.1, "0.1"},
        Row{-2.25, "-2.25"}, Row{1.0 / 3, "0.333333333333333"}, Row{123456789.0, "123456789"},
        Row{1e14, "100000000000000"}, Row{1e15, "1E+15"}, Row{999999999999999.9, "1E+15"},
        Row{-100000000000000.5, "-100000000000001"}, Row{9999995.0f, "9999995"},
        Row{123456789012345678.0, "1.23456789012346E+17"}, Row{0.0001, "0.0001"},
        Row{1e-5, "1E-05"}, Row{1e300, "1E+300"},
        Row{4.94065645841247e-324, "4.94065645841247E-324"}, Row{654322.23456f, "654322.3"},
        Row{0.1f, "0.1"}, Row{1e10f, "1E+10"});
}

TEST(VariantChangeTypeTest, ReadsText) {
  Check(VT_I4, Row{static_cast<const wchar_t*>(nullptr), "mismatch"}, Row{L"", "mismatch"},
        Row{L"  ", "mismatch"}, Row{L"abc", "mismatch"}, Row{L" 12 ", "12"}, Row{L"\t12\n", "12"},
        Row{L"1 2", "mismatch"}, Row{L"12abc", "mismatch"}, Row{L"12\u0663", "mismatch"},
        Row{L"-5", "-5"}, Row{L"+5", "5"}, Row{L"--5", "mismatch"}, Row{L"1e3", "1000"},
        Row{L"1.5E+1", "15"}, Row{L"1e99999999999", "overflow"}, Row{L"0x10", "mismatch"});
  Check(VT_R8, Row{L"", "mismatch"}, Row{L"abc", "mismatch"}, Row{L".5", "0.5"}, Row{L"5.", "5"},
        Row{L".", "mismatch"}, Row{L"1.2.3", "mismatch"}, Row{L"1e", "mismatch"},
        Row{L"1e400", "overflow"}, Row{L"inf", "mismatch"}, Row{L"12.6", "12.6"});
  Check(VT_BOOL, Row{L"", "mismatch"}, Row{L"abc", "mismatch"}, Row{L"True", "-1"},
        Row{L"false", "0"}, Row{L" True", "mismatch"}, Row{L"0.1", "-1"}, Row{L"0", "0"});
}

// What the system reads by the user's locale.
TEST(VariantChangeTypeTest, RefusesCurrencyDatesAndNotations) {
  if (const char* reason = Corvane::Test::LayerOnly("the system reads and writes all of these")) {
    GTEST_SKIP() << reason;
  }
  Check(VT_I4, Row{L"(12)", "mismatch"}, Row{L"$5", "mismatch"}, Row{L"1,234", "mismatch"},
        Row{L"12-", "mismatch"}, Row{L"+-5", "mismatch"}, Row{L"&H1F", "mismatch"},
        Row{L"&O17", "mismatch"}, Row{Zero(VT_CY), "mismatch"}, Row{Zero(VT_DATE), "mismatch"},
        Row{std::wstring(1025, L'1').c_str(), "mismatch"});
  Check(VT_BSTR, Row{Zero(VT_CY), "mismatch"}, Row{Zero(VT_DATE), "mismatch"});
  Check(VT_CY, Row{5L, "mismatch"}, Row{L"5", "mismatch"});
  Check(VT_DATE, Row{5L, "mismatch"}, Row{L"1/30/2001", "mismatch"});
  Check(VT_UNKNOWN, Row{Zero(VT_DISPATCH), "bad type"});
}

TEST(VariantChangeTypeTest, RoundsHalvesToEven) {
  Check(VT_I4, Row{L"12.5", "12"}, Row{L"12.6", "13"}, Row{L"13.5", "14"}, Row{L"-12.5", "-12"},
        Row{0.5, "0"}, Row{1.5, "2"}, Row{-1.5, "-2"}, Row{2.5f, "2"});
  Check(VT_UI1, Row{L"-0.5", "0"}, Row{-0.5, "0"});
}

TEST(VariantChangeTypeTest, ChecksRanges) {
  Check(VT_I1, Row{127.5, "overflow"}, Row{-128.5, "-128"});
  Check(VT_UI1, Row{300L, "overflow"});
  Check(VT_UI2, Row{-5L, "overflow"});
  Check(VT_I4, Row{L"2147483647.4", "2147483647"}, Row{L"2147483648", "overflow"},
        Row{L"2147483647.5", "overflow"}, Row{L"-2147483648", "-2147483648"},
        Row{2147483647.5, "overflow"}, Row{~0ull, "overflow"});
  Check(VT_UI4, Row{L"-1", "overflow"}, Row{L"4294967295", "4294967295"}, Row{-0.6, "overflow"});
  Check(VT_I8, Row{L"-9223372036854775808", "-9223372036854775808"},
        Row{L"9223372036854775808", "overflow"}, Row{0x1p63, "overflow"},
        Row{L"123456789012345678901234567890", "overflow"});
  Check(VT_UI8, Row{L"18446744073709551615", "18446744073709551615"}, Row{-5L, "overflow"},
        Row{L"18446744073709551616", "overflow"}, Row{0x1p63, "9223372036854775808"});
  Check(VT_R4, Row{L"3.5e38", "overflow"}, Row{1e300, "overflow"});
}

TEST(VariantChangeTypeTest, KeepsTheBitsOfIntegersOfOneWidth) {
  Check(VT_UI4, Row{-5L, "4294967291"}, Row{true, "4294967295"});
  Check(VT_I4, Row{~0u, "-1"});
  Check(VT_I1, Row{BYTE{200}, "-56"});
  Check(VT_UI1, Row{true, "255"});
  Check(VT_UI2, Row{short{-5}, "65531"});
  Check(VT_I8, Row{~0ull, "-1"});
  Check(VT_UI8, Row{-1LL, "18446744073709551615"});
}

TEST(VariantChangeTypeTest, ConvertsBooleans) {
  Check(VT_BOOL, Row{7L, "-1"}, Row{{}, "0"}, Row{0.1, "-1"});
  EXPECT_EQ("True", Convert(_variant_t(true), VT_BSTR, VARIANT_ALPHABOOL));
  EXPECT_EQ("False", Convert(_variant_t(false), VT_BSTR, VARIANT_ALPHABOOL));
  EXPECT_EQ("1", Convert(_variant_t(1L), VT_BSTR, VARIANT_ALPHABOOL));
}

TEST(VariantChangeTypeTest, RefusesWhatIsNoNumber) {
  Check(VT_BSTR, Row{Zero(VT_NULL), "mismatch"}, Row{Zero(VT_ERROR), "mismatch"},
        Row{Zero(VT_UNKNOWN), "mismatch"}, Row{Zero(VT_DISPATCH), "bad type"},
        Row{Zero(15), "bad type"}, Row{Zero(VT_BYREF | VT_NULL), "bad type"},
        Row{Zero(VT_BYREF | VT_I4), "mismatch"},
        Row{Zero(VT_ARRAY | VT_UI1), HrText(E_INVALIDARG)});
  Check(VT_I4, Row{Zero(VT_NULL), "mismatch"});
  Check(VT_EMPTY, Row{Zero(VT_NULL), "mismatch"}, Row{L"abc", "done"});
  Check(VT_NULL, Row{Zero(VT_NULL), "done"}, Row{5L, "done"}, Row{L"abc", "done"});
  Check(VT_ERROR, Row{{5L, VT_ERROR}, "5"}, Row{5L, "mismatch"});
  Check(VT_UNKNOWN, Row{5L, "mismatch"}, Row{L"1", "mismatch"});
  for (const int type : {15, VT_I4 | VT_BYREF, VT_I4 | VT_ARRAY})
    Check(static_cast<unsigned>(type), Row{5L, type == 15 ? "bad type" : "mismatch"});
}

TEST(VariantChangeTypeTest, FollowsReferences) {
  double real = 2.5;
  BSTR text = SysAllocStringLen(L"1\0z", 3);
  _variant_t source = Zero(VT_R8 | VT_BYREF);
  source.pdblVal = &real;
  EXPECT_EQ("2.5", Convert(source, VT_BSTR));
  _variant_t outer = Zero(VT_VARIANT | VT_BYREF);
  outer.pvarVal = &source;
  EXPECT_EQ("2", Convert(outer, VT_I4));
  source.vt = VT_BSTR | VT_BYREF;
  source.pbstrVal = &text;
  EXPECT_EQ(std::string("1\0z", 3), Convert(source, VT_BSTR));
  EXPECT_EQ("1", Convert(source, VT_I4));
  SysFreeString(text);
}

TEST(VariantChangeTypeTest, MakesTextOfBytes) {
  _variant_t bytes = Zero(VT_ARRAY | VT_UI1);
  bytes.parray = SafeArrayCreateVector(VT_UI1, 0, 5);
  std::memcpy(bytes.parray->pvData, "abcde", 5);
  _variant_t text;
  ASSERT_HR(VariantChangeType(&text, &bytes, 0, VT_BSTR), S_OK);
  EXPECT_EQ(5u, SysStringByteLen(text.bstrVal));
  EXPECT_EQ(0, std::memcmp(text.bstrVal, "abcde", 5));
  EXPECT_EQ("mismatch", Convert(bytes, VT_ARRAY | VT_I4));
  EXPECT_EQ("mismatch", Convert(bytes, VT_I4));
  _variant_t numbers = Zero(VT_ARRAY | VT_I4);
  numbers.parray = SafeArrayCreateVector(VT_I4, 0, 1);
  EXPECT_EQ("mismatch", Convert(numbers, VT_BSTR));
  EXPECT_EQ("done", Convert(numbers, VT_ARRAY | VT_I4));
}

TEST(VariantChangeTypeTest, ConvertsInPlaceOrNotAtAll) {
  _variant_t value(L"12");
  EXPECT_HR(VariantChangeType(&value, &value, 0, VT_I4), S_OK);
  EXPECT_TRUE(value == _variant_t(12L));
  _variant_t word(L"abc");
  EXPECT_HR(VariantChangeType(&word, &word, 0, VT_I4), DISP_E_TYPEMISMATCH);
  EXPECT_TRUE(word == _variant_t(L"abc"));
  EXPECT_HR(VariantChangeType(&word, &value, 0, VT_BSTR), S_OK);
  EXPECT_TRUE(word == _variant_t(L"12"));
  _variant_t missing(static_cast<const wchar_t*>(nullptr));
  EXPECT_HR(VariantChangeType(&missing, &missing, 0, VT_BSTR), S_OK);
  EXPECT_NE(nullptr, missing.bstrVal);
}

}  // namespace
