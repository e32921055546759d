// VariantChangeType: numbers, text, arrays of bytes, and what a failure leaves behind.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "base/utf8.h"
#include "corvane/platform.h"
#include "tests/platform/automation_fixture.h"
#include "tests/support/cases.h"
#include "tests/support/hr.h"

namespace Corvane::Test {
namespace {

VARTYPE TypeNamed(std::string name) {
  static const std::map<std::string, int> kTypes = {{"empty", VT_EMPTY},
                                                    {"null", VT_NULL},
                                                    {"i1", VT_I1},
                                                    {"ui1", VT_UI1},
                                                    {"i2", VT_I2},
                                                    {"ui2", VT_UI2},
                                                    {"i4", VT_I4},
                                                    {"ui4", VT_UI4},
                                                    {"i8", VT_I8},
                                                    {"ui8", VT_UI8},
                                                    {"int", VT_INT},
                                                    {"uint", VT_UINT},
                                                    {"r4", VT_R4},
                                                    {"r8", VT_R8},
                                                    {"bool", VT_BOOL},
                                                    {"bstr", VT_BSTR},
                                                    {"error", VT_ERROR},
                                                    {"cy", VT_CY},
                                                    {"date", VT_DATE},
                                                    {"unknown", VT_UNKNOWN},
                                                    {"dispatch", VT_DISPATCH},
                                                    {"15", 15},
                                                    {"byref i4", VT_BYREF | VT_I4},
                                                    {"byref null", VT_BYREF | VT_NULL},
                                                    {"array ui1", VT_ARRAY | VT_UI1},
                                                    {"array i4", VT_ARRAY | VT_I4}};
  return static_cast<VARTYPE>(kTypes.at(name));
}

// "-" is nothing: zeros.
_variant_t Make(VARTYPE type, const std::string& text) {
  VARIANT value{};
  value.vt = type;
  if (text == "-") return {value, false};
  if (type == VT_BSTR) return ToWide(text).c_str();
  if (type == VT_R4) {
    value.fltVal = std::strtof(text.c_str(), nullptr);
  } else if (type == VT_R8) {
    value.dblVal = std::strtod(text.c_str(), nullptr);
  } else {
    value.ullVal = std::strtoull(text.c_str(), nullptr, 10);
  }
  return {value, false};
}

std::string Write(const VARIANT& value) {
  char number[64];
  switch (value.vt) {
    case VT_I1:
      return std::to_string(static_cast<signed char>(value.cVal));
    case VT_UI1:
      return std::to_string(value.bVal);
    case VT_I2:
    case VT_BOOL:
      return std::to_string(value.iVal);
    case VT_UI2:
      return std::to_string(value.uiVal);
    case VT_I4:
    case VT_ERROR:
      return std::to_string(value.lVal);
    case VT_UI4:
      return std::to_string(value.ulVal);
    case VT_I8:
      return std::to_string(value.llVal);
    case VT_UI8:
      return std::to_string(value.ullVal);
    case VT_R8:
      std::snprintf(number, sizeof(number), "%.15g", value.dblVal);
      return number;
    case VT_BSTR:
      return ToUtf8({value.bstrVal, SysStringLen(value.bstrVal)});
    default:
      return "done";
  }
}

// The result of a conversion to `type`, or the name of its failure.
std::string Convert(const VARIANT& source, unsigned type, USHORT flags = 0) {
  _variant_t result;
  VARIANT view = source;  // some systems' headers take no const source
  const HRESULT status = VariantChangeType(&result, &view, flags, static_cast<VARTYPE>(type));
  EXPECT_EQ(SUCCEEDED(status) ? type : unsigned{VT_EMPTY}, result.vt) << HrText(status);
  if (status == DISP_E_TYPEMISMATCH) return "mismatch";
  if (status == DISP_E_OVERFLOW) return "overflow";
  if (status == DISP_E_BADVARTYPE) return "bad type";
  return FAILED(status) ? HrText(status) : Write(result);
}

TEST(VariantChangeTypeTest, ConvertsEveryTypeToEveryOther) {
  for (const Case& c : CasesHere("platform/conversions.txt")) {
    SCOPED_TRACE(c.Where());
    const USHORT flags = c.Text("flags") == "alphabool" ? VARIANT_ALPHABOOL : 0;
    const _variant_t source = Make(TypeNamed(c.Text("from")), c.Text("value"));
    EXPECT_EQ(c.Text("expected"), Convert(source, TypeNamed(c.Text("to")), flags));
  }
}

TEST(VariantChangeTypeTest, FollowsReferences) {
  double real = 2.5;
  BSTR text = SysAllocStringLen(L"1\0z", 3);
  VARIANT inner = ReferenceTo(VT_R8, &real);
  EXPECT_EQ("2.5", Convert(inner, VT_BSTR));
  EXPECT_EQ("2", Convert(ReferenceTo(VT_VARIANT, &inner), VT_I4));
  EXPECT_EQ(std::string("1\0z", 3), Convert(ReferenceTo(VT_BSTR, &text), VT_BSTR));
  EXPECT_EQ("1", Convert(ReferenceTo(VT_BSTR, &text), VT_I4));
  SysFreeString(text);
}

TEST(VariantChangeTypeTest, MakesTextOfBytes) {
  _variant_t bytes = Make(VT_ARRAY | VT_UI1, "-");
  bytes.parray = SafeArrayCreateVector(VT_UI1, 0, 5);
  std::memcpy(bytes.parray->pvData, "abcde", 5);
  _variant_t text;
  ASSERT_HR(VariantChangeType(&text, &bytes, 0, VT_BSTR), S_OK);
  EXPECT_EQ(5u, SysStringByteLen(text.bstrVal));
  EXPECT_EQ(0, std::memcmp(text.bstrVal, "abcde", 5));
  EXPECT_EQ("mismatch", Convert(bytes, VT_ARRAY | VT_I4));
  EXPECT_EQ("mismatch", Convert(bytes, VT_I4));
  _variant_t numbers = Make(VT_ARRAY | VT_I4, "-");
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
}  // namespace Corvane::Test
