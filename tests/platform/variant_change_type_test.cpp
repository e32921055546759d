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

struct Type {
  int number;
  int bits;  // of an integer; negative for a signed one
};

const Type& TypeNamed(const std::string& name) {
  static const auto types = [] {
    std::map<std::string, Type> all;
    for (const Case& c : ReadCases("platform/variant_types.txt")) {
      const int bits = static_cast<int>(c.Number("bits"));
      all[c.Text("name")] = {static_cast<int>(c.Number("type")), bits};
    }
    return all;
  }();
  return types.at(name);
}

// "-" is nothing: zeros.
_variant_t Make(const std::string& name, const std::string& text) {
  VARIANT value{};
  value.vt = static_cast<VARTYPE>(TypeNamed(name).number);
  if (text == "-") return {value, false};
  if (value.vt == VT_BSTR) return ToWide(text).c_str();
  if (value.vt == VT_R4) {
    value.fltVal = std::strtof(text.c_str(), nullptr);
  } else if (value.vt == VT_R8) {
    value.dblVal = std::strtod(text.c_str(), nullptr);
  } else {
    value.ullVal = std::strtoull(text.c_str(), nullptr, 10);
  }
  return {value, false};
}

std::string Write(const VARIANT& value, const Type& type) {
  if (value.vt == VT_BSTR) return ToUtf8({value.bstrVal, SysStringLen(value.bstrVal)});
  if (value.vt == VT_R8) {
    char number[64];
    std::snprintf(number, sizeof(number), "%.15g", value.dblVal);
    return number;
  }
  if (type.bits == 0) return "done";
  const int unused = 64 - std::abs(type.bits);
  const ULONGLONG shifted = value.ullVal << unused;
  return type.bits > 0 ? std::to_string(shifted >> unused)
                       : std::to_string(static_cast<LONGLONG>(shifted) >> unused);
}

// The result of a conversion to `type`, or the name of its failure.
std::string Convert(const VARIANT& source, const std::string& to, USHORT flags = 0) {
  const Type type = TypeNamed(to);
  _variant_t result;
  VARIANT view = source;  // some systems' headers take no const source
  const HRESULT status =
      VariantChangeType(&result, &view, flags, static_cast<VARTYPE>(type.number));
  EXPECT_EQ(SUCCEEDED(status) ? type.number : int{VT_EMPTY}, result.vt) << HrText(status);
  if (status == DISP_E_TYPEMISMATCH) return "mismatch";
  if (status == DISP_E_OVERFLOW) return "overflow";
  if (status == DISP_E_BADVARTYPE) return "bad type";
  return FAILED(status) ? HrText(status) : Write(result, type);
}

TEST(VariantChangeTypeTest, ConvertsEveryTypeToEveryOther) {
  for (const Case& c : CasesHere("platform/conversions.txt")) {
    SCOPED_TRACE(c.Where());
    const USHORT flags = c.Text("flags") == "alphabool" ? VARIANT_ALPHABOOL : 0;
    const _variant_t source = Make(c.Text("from"), c.Text("value"));
    EXPECT_EQ(c.Text("expected"), Convert(source, c.Text("to"), flags));
  }
}

TEST(VariantChangeTypeTest, FollowsReferences) {
  double real = 2.5;
  BSTR text = SysAllocStringLen(L"1\0z", 3);
  VARIANT inner = ReferenceTo(VT_R8, &real);
  EXPECT_EQ("2.5", Convert(inner, "bstr"));
  EXPECT_EQ("2", Convert(ReferenceTo(VT_VARIANT, &inner), "i4"));
  EXPECT_EQ(std::string("1\0z", 3), Convert(ReferenceTo(VT_BSTR, &text), "bstr"));
  EXPECT_EQ("1", Convert(ReferenceTo(VT_BSTR, &text), "i4"));
  SysFreeString(text);
}

TEST(VariantChangeTypeTest, MakesTextOfBytes) {
  _variant_t bytes = Make("array ui1", "-");
  bytes.parray = SafeArrayCreateVector(VT_UI1, 0, 5);
  std::memcpy(bytes.parray->pvData, "abcde", 5);
  _variant_t text;
  ASSERT_HR(VariantChangeType(&text, &bytes, 0, VT_BSTR), S_OK);
  EXPECT_EQ(5u, SysStringByteLen(text.bstrVal));
  EXPECT_EQ(0, std::memcmp(text.bstrVal, "abcde", 5));
  EXPECT_EQ("mismatch", Convert(bytes, "i4"));
  _variant_t numbers = Make("array i4", "-");
  numbers.parray = SafeArrayCreateVector(VT_I4, 0, 1);
  EXPECT_EQ("mismatch", Convert(numbers, "bstr"));
  EXPECT_EQ("done", Convert(numbers, "array i4"));
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
