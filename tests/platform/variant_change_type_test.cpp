// VariantChangeType: numbers, text, arrays of bytes, and what a failure leaves behind.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "corvane/platform.h"
#include "tests/support/hr.h"
#include "tests/support/wine.h"

namespace {

using Corvane::Test::HrText;
using Corvane::Test::UnderWine;

struct Owned : VARIANT {
  Owned() { VariantInit(this); }
  Owned(Owned&& other) noexcept : VARIANT(other) { VariantInit(&other); }
  Owned& operator=(const Owned&) = delete;
  ~Owned() { VariantClear(this); }
};

Owned Whole(VARTYPE type, long long value) {
  Owned result;
  result.vt = type;
  result.llVal = value;
  return result;
}

Owned Real(VARTYPE type, double value) {
  Owned result;
  result.vt = type;
  if (type == VT_R4) {
    result.fltVal = static_cast<float>(value);
  } else {
    result.dblVal = value;
  }
  return result;
}

Owned Text(const wchar_t* text) {
  Owned result;
  result.vt = VT_BSTR;
  result.bstrVal = SysAllocString(text);
  return result;
}

// The result of a conversion to `type`, or the name of its failure.
std::string Convert(const VARIANT& source, VARTYPE type, USHORT flags = 0) {
  Owned result;
  VARIANT view = source;  // some systems' headers take no const source
  const HRESULT status = VariantChangeType(&result, &view, flags, type);
  if (FAILED(status)) {
    EXPECT_EQ(VT_EMPTY, result.vt) << "a failure changed the destination";
    switch (status) {
      case DISP_E_TYPEMISMATCH:
        return "mismatch";
      case DISP_E_OVERFLOW:
        return "overflow";
      case DISP_E_BADVARTYPE:
        return "bad type";
      default:
        return HrText(status);
    }
  }
  EXPECT_EQ(type, result.vt);
  char number[64];
  switch (type) {
    case VT_I1:
      return std::to_string(static_cast<signed char>(result.cVal));
    case VT_UI1:
      return std::to_string(result.bVal);
    case VT_I2:
    case VT_BOOL:
      return std::to_string(result.iVal);
    case VT_UI2:
      return std::to_string(result.uiVal);
    case VT_I4:
    case VT_INT:
    case VT_ERROR:
      return std::to_string(result.lVal);
    case VT_UI4:
    case VT_UINT:
      return std::to_string(result.ulVal);
    case VT_I8:
    case VT_CY:
      return std::to_string(result.llVal);
    case VT_UI8:
      return std::to_string(result.ullVal);
    case VT_R4:
      std::snprintf(number, sizeof(number), "%.9g", static_cast<double>(result.fltVal));
      return number;
    case VT_R8:
    case VT_DATE:
      std::snprintf(number, sizeof(number), "%.15g", result.dblVal);
      return number;
    case VT_BSTR:
      EXPECT_NE(nullptr, result.bstrVal);
      return {result.bstrVal, result.bstrVal + SysStringLen(result.bstrVal)};
    default:
      return "done";
  }
}

struct Case {
  Owned source;
  unsigned type;
  std::string expected;
};

void Check(const std::vector<Case>& cases) {
  for (const Case& c : cases) {
    std::string name = "vt " + std::to_string(c.source.vt);
    if (c.source.vt == VT_BSTR && c.source.bstrVal != nullptr) {
      const std::wstring text = c.source.bstrVal;
      name += " \"" + std::string(text.begin(), text.end()) + "\"";
    } else {
      name += " bits " + std::to_string(c.source.llVal);
    }
    EXPECT_EQ(c.expected, Convert(c.source, static_cast<VARTYPE>(c.type)))
        << name << " to vt " << c.type;
  }
}

template <typename... Rows>
std::vector<Case> Table(Rows&&... rows) {
  std::vector<Case> result;
  (result.push_back(std::forward<Rows>(rows)), ...);
  return result;
}

TEST(VariantChangeTypeTest, WritesNumbers) {
  Check(Table(
      Case{Whole(VT_EMPTY, 0), VT_BSTR, ""}, Case{Whole(VT_I4, -5), VT_BSTR, "-5"},
      Case{Whole(VT_I1, -3), VT_BSTR, "-3"}, Case{Whole(VT_UI1, 200), VT_BSTR, "200"},
      Case{Whole(VT_INT, 7), VT_BSTR, "7"}, Case{Whole(VT_UI4, -1), VT_BSTR, "4294967295"},
      Case{Whole(VT_I8, std::numeric_limits<long long>::min()), VT_BSTR, "-9223372036854775808"},
      Case{Whole(VT_UI8, -1), VT_BSTR, "18446744073709551615"},
      Case{Whole(VT_BOOL, 0xFFFF), VT_BSTR, "-1"}, Case{Whole(VT_BOOL, 0), VT_BSTR, "0"},
      Case{Whole(VT_CY, 12345), VT_BSTR, "1.2345"}, Case{Whole(VT_CY, -15000), VT_BSTR, "-1.5"},
      Case{Whole(VT_CY, 10000), VT_BSTR, "1"}, Case{Whole(VT_CY, -1), VT_BSTR, "-0.0001"}));
}

TEST(VariantChangeTypeTest, WritesRealsWithFifteenDigits) {
  Check(Table(Case{Real(VT_R8, 0), VT_BSTR, "0"}, Case{Real(VT_R8, -0.0), VT_BSTR, "0"},
              Case{Real(VT_R8, 1), VT_BSTR, "1"}, Case{Real(VT_R8, 1.5), VT_BSTR, "1.5"},
              Case{Real(VT_R8, 0.1), VT_BSTR, "0.1"}, Case{Real(VT_R8, -2.25), VT_BSTR, "-2.25"},
              Case{Real(VT_R8, 1.0 / 3), VT_BSTR, "0.333333333333333"},
              Case{Real(VT_R8, 123456789), VT_BSTR, "123456789"},
              Case{Real(VT_R8, 1e14), VT_BSTR, "100000000000000"},
              Case{Real(VT_R8, 1e15), VT_BSTR, "1E+15"},
              Case{Real(VT_R8, 999999999999999.9), VT_BSTR, "1E+15"},
              Case{Real(VT_R8, 100000000000000.5), VT_BSTR, "100000000000001"},
              Case{Real(VT_R8, 123456789012345678.0), VT_BSTR, "1.23456789012346E+17"},
              Case{Real(VT_R8, 0.0001), VT_BSTR, "0.0001"},
              Case{Real(VT_R8, 1e-5), VT_BSTR, "1E-05"},
              Case{Real(VT_R8, 1e300), VT_BSTR, "1E+300"},
              Case{Real(VT_R8, std::numeric_limits<double>::denorm_min()), VT_BSTR,
                   "4.94065645841247E-324"},
              Case{Real(VT_R4, 654322.23456), VT_BSTR, "654322.3"},
              Case{Real(VT_R4, 0.1), VT_BSTR, "0.1"}, Case{Real(VT_R4, 1e10), VT_BSTR, "1E+10"}));
}

TEST(VariantChangeTypeTest, WritesInfinitiesAndNans) {
  if (UnderWine()) GTEST_SKIP() << "Wine 8 writes INF and NAN";
  const double infinity = std::numeric_limits<double>::infinity();
  Check(Table(Case{Real(VT_R8, infinity), VT_BSTR, "1.#INF"},
              Case{Real(VT_R8, -infinity), VT_BSTR, "-1.#INF"},
              Case{Real(VT_R8, std::nan("")), VT_I4, "overflow"}));
}

TEST(VariantChangeTypeTest, WritesDates) {
  Check(Table(Case{Real(VT_DATE, 0), VT_BSTR, "12:00:00 AM"},
              Case{Real(VT_DATE, 36921), VT_BSTR, "1/30/2001"},
              Case{Real(VT_DATE, 36921.5), VT_BSTR, "1/30/2001 12:00:00 PM"},
              Case{Real(VT_DATE, 36921.54321), VT_BSTR, "1/30/2001 1:02:13 PM"},
              Case{Real(VT_DATE, -1.25), VT_BSTR, "12/29/1899 6:00:00 AM"},
              Case{Real(VT_DATE, 2958466), VT_BSTR, HrText(E_INVALIDARG)}));
}

TEST(VariantChangeTypeTest, ReadsText) {
  Check(Table(Case{Text(nullptr), VT_I4, "mismatch"}, Case{Text(L""), VT_I4, "mismatch"},
              Case{Text(L""), VT_R8, "mismatch"}, Case{Text(L"abc"), VT_BOOL, "mismatch"},
              Case{Text(L"abc"), VT_R8, "mismatch"}, Case{Text(L" 12 "), VT_I4, "12"},
              Case{Text(L"\t12\n"), VT_I4, "12"},
              Case{Text(L"\x00a0"
                        L"12"),
                   VT_I4, "12"},
              Case{Text(L"1 2"), VT_I4, "mismatch"}, Case{Text(L"12abc"), VT_I4, "mismatch"},
              Case{Text(L"-5"), VT_I4, "-5"}, Case{Text(L"- 5"), VT_I4, "-5"},
              Case{Text(L"12-"), VT_I4, "-12"}, Case{Text(L"(12)"), VT_I4, "-12"},
              Case{Text(L"(12"), VT_I4, "mismatch"}, Case{Text(L"12)"), VT_I4, "mismatch"},
              Case{Text(L"--5"), VT_I4, "mismatch"}, Case{Text(L"-5-"), VT_I4, "mismatch"},
              Case{Text(L"(-5)"), VT_I4, "-5"}, Case{Text(L"$5"), VT_I4, "5"},
              Case{Text(L"$-5"), VT_I4, "-5"}, Case{Text(L"5$"), VT_I4, "5"},
              Case{Text(L"1,234"), VT_I4, "1234"}, Case{Text(L",1"), VT_I4, "mismatch"},
              Case{Text(L".5"), VT_R8, "0.5"}, Case{Text(L"5."), VT_R8, "5"},
              Case{Text(L"."), VT_R8, "mismatch"}, Case{Text(L"1.2.3"), VT_R8, "mismatch"},
              Case{Text(L"1e3"), VT_I4, "1000"}, Case{Text(L"1.5E+1"), VT_I4, "15"},
              Case{Text(L"1e"), VT_R8, "mismatch"}, Case{Text(L"1e400"), VT_R8, "overflow"},
              Case{Text(L"1e-400"), VT_R8, "0"}, Case{Text(L"1e99999999999"), VT_I4, "overflow"},
              Case{Text(L"0e99999999999"), VT_I4, "0"}, Case{Text(L"3.5e38"), VT_R4, "overflow"},
              Case{Text(L"0x10"), VT_I4, "mismatch"}, Case{Text(L"&H1f"), VT_I4, "31"},
              Case{Text(L"&O17"), VT_I4, "15"}, Case{Text(L"&HFFFF"), VT_I2, "-1"},
              Case{Text(L"&HFFFF"), VT_I4, "65535"}, Case{Text(L"inf"), VT_R8, "mismatch"},
              Case{Text(L"12.3456"), VT_CY, "123456"}, Case{Text(L"-0.00006"), VT_CY, "-1"},
              Case{Text(L"1/30/2001"), VT_DATE, "36921"},
              Case{Text(L"2001-01-30"), VT_DATE, "36921"},
              Case{Text(L"1/30/2001 6:00:00 PM"), VT_DATE, "36921.75"},
              Case{Text(L"12:30"), VT_DATE, "0.520833333333333"},
              Case{Text(L"2/30/2001"), VT_DATE, "mismatch"},
              Case{Text(L"abc"), VT_DATE, "mismatch"}, Case{Text(L"abc"), VT_NULL, "done"},
              Case{Text(L"abc"), VT_EMPTY, "done"}, Case{Text(L"1"), VT_UNKNOWN, "mismatch"}));
}

TEST(VariantChangeTypeTest, RoundsHalvesToEven) {
  Check(Table(Case{Text(L"12.5"), VT_I4, "12"}, Case{Text(L"12.6"), VT_I4, "13"},
              Case{Text(L"13.5"), VT_I4, "14"}, Case{Text(L"-12.5"), VT_I4, "-12"},
              Case{Text(L"2.50000000000000000001"), VT_I4, "3"}, Case{Text(L"0.5"), VT_UI1, "0"},
              Case{Text(L"-0.5"), VT_UI1, "0"}, Case{Real(VT_R8, 0.5), VT_I4, "0"},
              Case{Real(VT_R8, 1.5), VT_I4, "2"}, Case{Real(VT_R8, -1.5), VT_I4, "-2"},
              Case{Real(VT_R8, -0.5), VT_UI1, "0"}, Case{Real(VT_R4, 2.5), VT_I2, "2"},
              Case{Whole(VT_CY, 25000), VT_I4, "2"}, Case{Whole(VT_CY, -15000), VT_I4, "-2"},
              Case{Real(VT_DATE, 36921.5), VT_I4, "36922"}));
}

TEST(VariantChangeTypeTest, ChecksRanges) {
  Check(Table(
      Case{Text(L"2147483647.4"), VT_I4, "2147483647"},
      Case{Text(L"2147483648"), VT_I4, "overflow"}, Case{Text(L"2147483647.5"), VT_I4, "overflow"},
      Case{Text(L"-2147483648"), VT_I4, "-2147483648"}, Case{Text(L"-1"), VT_UI4, "overflow"},
      Case{Text(L"4294967295"), VT_UI4, "4294967295"},
      Case{Text(L"-9223372036854775808"), VT_I8, "-9223372036854775808"},
      Case{Text(L"9223372036854775808"), VT_I8, "overflow"},
      Case{Text(L"18446744073709551615"), VT_UI8, "18446744073709551615"},
      Case{Text(L"18446744073709551616"), VT_UI8, "overflow"},
      Case{Text(L"123456789012345678901234567890"), VT_I8, "overflow"},
      Case{Whole(VT_I4, 300), VT_UI1, "overflow"}, Case{Whole(VT_I4, -5), VT_UI2, "overflow"},
      Case{Whole(VT_I4, -5), VT_UI8, "overflow"}, Case{Whole(VT_UI8, -1), VT_I4, "overflow"},
      Case{Real(VT_R8, 127.5), VT_I1, "overflow"}, Case{Real(VT_R8, -128.5), VT_I1, "-128"},
      Case{Real(VT_R8, -0.6), VT_UI4, "overflow"},
      Case{Real(VT_R8, 2147483647.5), VT_I4, "overflow"},
      Case{Real(VT_R8, 9223372036854775808.0), VT_I8, "overflow"},
      Case{Real(VT_R8, 9223372036854775808.0), VT_UI8, "9223372036854775808"},
      Case{Real(VT_R8, 1e300), VT_R4, "overflow"}, Case{Real(VT_R8, 1e20), VT_CY, "overflow"},
      Case{Real(VT_R8, 2958466), VT_DATE, "overflow"},
      Case{Whole(VT_I8, std::numeric_limits<long long>::max()), VT_CY, "overflow"}));
}

TEST(VariantChangeTypeTest, KeepsTheBitsOfIntegersOfOneWidth) {
  Check(Table(Case{Whole(VT_I4, -5), VT_UI4, "4294967291"}, Case{Whole(VT_UI4, -1), VT_I4, "-1"},
              Case{Whole(VT_UI1, 200), VT_I1, "-56"}, Case{Whole(VT_I2, -5), VT_UI2, "65531"},
              Case{Whole(VT_UI8, -1), VT_I8, "-1"},
              Case{Whole(VT_I8, -1), VT_UI8, "18446744073709551615"},
              Case{Whole(VT_BOOL, 0xFFFF), VT_UI1, "255"},
              Case{Whole(VT_BOOL, 0xFFFF), VT_UI4, "4294967295"}));
}

TEST(VariantChangeTypeTest, ConvertsBooleans) {
  Check(Table(Case{Whole(VT_I4, 7), VT_BOOL, "-1"}, Case{Whole(VT_EMPTY, 0), VT_BOOL, "0"},
              Case{Real(VT_R8, 0.1), VT_BOOL, "-1"}, Case{Whole(VT_CY, 0), VT_BOOL, "0"},
              Case{Text(L"True"), VT_BOOL, "-1"}, Case{Text(L"false"), VT_BOOL, "0"},
              Case{Text(L"#TRUE#"), VT_BOOL, "-1"}, Case{Text(L"#FALSE#"), VT_BOOL, "0"},
              Case{Text(L"#true#"), VT_BOOL, "mismatch"}, Case{Text(L" True"), VT_BOOL, "mismatch"},
              Case{Text(L"0.1"), VT_BOOL, "-1"}, Case{Text(L"0"), VT_BOOL, "0"},
              Case{Text(L"Yes"), VT_BOOL, "mismatch"}));
  EXPECT_EQ("True", Convert(Whole(VT_BOOL, 0xFFFF), VT_BSTR, VARIANT_ALPHABOOL));
  EXPECT_EQ("False", Convert(Whole(VT_BOOL, 0), VT_BSTR, VARIANT_ALPHABOOL));
  EXPECT_EQ("1", Convert(Whole(VT_I4, 1), VT_BSTR, VARIANT_ALPHABOOL));
}

TEST(VariantChangeTypeTest, RefusesWhatIsNoNumber) {
  Check(Table(
      Case{Whole(VT_NULL, 0), VT_I4, "mismatch"}, Case{Whole(VT_NULL, 0), VT_BSTR, "mismatch"},
      Case{Whole(VT_NULL, 0), VT_EMPTY, "mismatch"}, Case{Whole(VT_NULL, 0), VT_NULL, "done"},
      Case{Whole(VT_I4, 5), VT_NULL, "done"}, Case{Whole(VT_ERROR, 5), VT_BSTR, "mismatch"},
      Case{Whole(VT_ERROR, 5), VT_ERROR, "5"}, Case{Whole(VT_I4, 5), VT_ERROR, "mismatch"},
      Case{Whole(VT_UNKNOWN, 0), VT_BSTR, "mismatch"},
      Case{Whole(VT_UNKNOWN, 0), VT_DISPATCH, "done"},
      Case{Whole(VT_DISPATCH, 0), VT_BSTR, "bad type"},
      Case{Whole(VT_DISPATCH, 0), VT_ERROR, "mismatch"},
      Case{Whole(VT_I4, 5), VT_UNKNOWN, "mismatch"}, Case{Whole(15, 0), VT_BSTR, "bad type"},
      Case{Whole(VT_I4, 5), 15, "bad type"}, Case{Whole(VT_I4, 5), VT_I4 | VT_BYREF, "mismatch"},
      Case{Whole(VT_I4, 5), VT_I4 | VT_ARRAY, "mismatch"},
      Case{Whole(VT_BYREF | VT_NULL, 0), VT_BSTR, "bad type"},
      Case{Whole(VT_BYREF | VT_I4, 0), VT_BSTR, "mismatch"},
      Case{Whole(VT_ARRAY | VT_UI1, 0), VT_BSTR, HrText(E_INVALIDARG)}));
}

TEST(VariantChangeTypeTest, FollowsReferences) {
  double real = 2.5;
  BSTR text = SysAllocStringLen(
      L"1\0"
      L"2",
      3);
  VARIANT source;
  VariantInit(&source);
  source.vt = VT_R8 | VT_BYREF;
  source.pdblVal = &real;
  EXPECT_EQ("2.5", Convert(source, VT_BSTR));
  VARIANT outer;
  VariantInit(&outer);
  outer.vt = VT_VARIANT | VT_BYREF;
  outer.pvarVal = &source;
  EXPECT_EQ("2", Convert(outer, VT_I4));
  source.vt = VT_BSTR | VT_BYREF;
  source.pbstrVal = &text;
  EXPECT_EQ(std::string("1\0"
                        "2",
                        3),
            Convert(source, VT_BSTR));
  EXPECT_EQ("1", Convert(source, VT_I4));
  SysFreeString(text);
}

TEST(VariantChangeTypeTest, MovesBytesBetweenArraysAndText) {
  Owned bytes;
  bytes.vt = VT_ARRAY | VT_UI1;
  bytes.parray = SafeArrayCreateVector(VT_UI1, 0, 5);
  std::memcpy(bytes.parray->pvData, "abcde", 5);
  Owned text;
  ASSERT_HR(VariantChangeType(&text, &bytes, 0, VT_BSTR), S_OK);
  EXPECT_EQ(5u, SysStringByteLen(text.bstrVal));
  EXPECT_EQ(0, std::memcmp(text.bstrVal, "abcde", 5));
  ASSERT_HR(VariantChangeType(&text, &text, 0, VT_ARRAY | VT_UI1), S_OK);
  LONG bound = 0;
  EXPECT_HR(SafeArrayGetUBound(text.parray, 1, &bound), S_OK);
  EXPECT_EQ(4, bound);
  EXPECT_EQ(0, std::memcmp(text.parray->pvData, "abcde", 5));
  EXPECT_EQ("mismatch", Convert(bytes, VT_ARRAY | VT_I4));
  EXPECT_EQ("mismatch", Convert(bytes, VT_I4));
  Owned numbers;
  numbers.vt = VT_ARRAY | VT_I4;
  numbers.parray = SafeArrayCreateVector(VT_I4, 0, 1);
  EXPECT_EQ("mismatch", Convert(numbers, VT_BSTR));
  EXPECT_EQ("done", Convert(numbers, VT_ARRAY | VT_I4));
}

TEST(VariantChangeTypeTest, ConvertsInPlaceOrNotAtAll) {
  Owned value = Text(L"12");
  EXPECT_HR(VariantChangeType(&value, &value, 0, VT_I4), S_OK);
  EXPECT_EQ(VT_I4, value.vt);
  EXPECT_EQ(12, value.lVal);
  EXPECT_HR(VariantChangeType(&value, &value, 0, VT_BSTR), S_OK);
  EXPECT_EQ(L"12", std::wstring(value.bstrVal));
  Owned word = Text(L"abc");
  EXPECT_HR(VariantChangeType(&word, &word, 0, VT_I4), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(VT_BSTR, word.vt);
  EXPECT_EQ(L"abc", std::wstring(word.bstrVal));
  EXPECT_HR(VariantChangeType(&word, &value, 0, VT_BSTR), S_OK);
  EXPECT_EQ(L"12", std::wstring(word.bstrVal));
  Owned missing = Text(nullptr);
  EXPECT_HR(VariantChangeType(&missing, &missing, 0, VT_BSTR), S_OK);
  EXPECT_NE(nullptr, missing.bstrVal);
}

}  // namespace
