// BSTR, VARIANT and SAFEARRAY: life, copies and element access.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "corvane/handles.h"
#include "tests/platform/automation_fixture.h"
#include "tests/support/cases.h"
#include "tests/support/hr.h"

namespace Corvane::Test {
namespace {

using namespace std::string_literals;

std::string Bytes(BSTR text) {
  return {reinterpret_cast<const char*>(text), SysStringByteLen(text)};
}

// Its length, its prefix in bytes and its terminator.
void ExpectText(const std::wstring& expected, const UniqueBstr& text) {
  ASSERT_TRUE(text);
  EXPECT_EQ(expected, text.View());
  EXPECT_EQ(L'\0', text.Get()[expected.size()]);
  std::uint32_t prefix = 0;
  std::memcpy(&prefix, reinterpret_cast<const char*>(text.Get()) - sizeof(prefix), sizeof(prefix));
  EXPECT_EQ(expected.size() * sizeof(wchar_t), prefix);
}

TEST(BstrTest, KeepsItsLengthAndEndsInNul) {
  ExpectText(L"a", UniqueBstr(SysAllocString(L"a\0b")));
  ExpectText(L"", UniqueBstr(SysAllocString(L"")));
  ExpectText(L"a\0b"s, UniqueBstr(SysAllocStringLen(L"a\0b", 3)));
  ExpectText(L"ab", UniqueBstr(SysAllocStringLen(L"abcdef", 2)));
  ExpectText(L"", UniqueBstr(SysAllocStringLen(L"abc", 0)));
  ExpectText(L"\0\0"s, UniqueBstr(SysAllocStringLen(nullptr, 2)));
  for (UINT bytes = 0; bytes < 9; ++bytes) {
    const UniqueBstr text(SysAllocStringByteLen("abcdefgh", bytes));
    EXPECT_EQ("abcdefgh"s.substr(0, bytes), Bytes(text.Get()));
    EXPECT_EQ(bytes / sizeof(wchar_t), SysStringLen(text.Get())) << bytes;
    EXPECT_EQ(L'\0', text.Get()[(bytes + sizeof(wchar_t) - 1) / sizeof(wchar_t)]) << bytes;
  }
  // Null, and lengths of more than 32 bits.
  EXPECT_EQ(nullptr, SysAllocString(nullptr));
  EXPECT_EQ(0u, SysStringLen(nullptr) + SysStringByteLen(nullptr));
  SysFreeString(nullptr);
  EXPECT_EQ(nullptr, SysAllocStringLen(nullptr, UINT32_MAX / sizeof(wchar_t)));
  EXPECT_EQ(nullptr, SysAllocStringLen(nullptr, UINT32_MAX));
  EXPECT_EQ(nullptr, SysAllocStringByteLen(nullptr, UINT32_MAX));
}

// What a type is good for: clearing, copying, being the type of an array's elements.
TEST(VariantTest, KnowsItsTypes) {
  for (const Case& c : ReadCases("platform/variant_types.txt")) {
    SCOPED_TRACE(c.Where());
    const auto type = static_cast<VARTYPE>(c.Number("type"));
    const HRESULT expected = c.Text("clears") == "yes" ? S_OK : DISP_E_BADVARTYPE;
    VARIANT value{};
    value.vt = type;
    _variant_t copy(7L);
    EXPECT_HR(VariantCopy(&copy, &value), expected);
    EXPECT_TRUE(expected == S_OK || copy == _variant_t(7L));
    EXPECT_HR(VariantClear(&value), expected);
    EXPECT_EQ(expected == S_OK ? VARTYPE{VT_EMPTY} : type, value.vt);
    if (!c.Find("bytes")) continue;
    SAFEARRAY* array = SafeArrayCreateVector(type, 5, 0);
    ASSERT_EQ(c.Number("bytes") != 0, array != nullptr);
    if (array == nullptr) continue;
    VARTYPE stored = VT_EMPTY;
    EXPECT_HR(SafeArrayGetVartype(array, &stored), S_OK);
    EXPECT_EQ(type, stored);
    EXPECT_EQ(c.Number("bytes"), array->cbElements);
    EXPECT_HR(SafeArrayDestroy(array), S_OK);
  }
}

TEST(VariantTest, CopiesTextByByteLengthAndNullAsEmptyText) {
  _variant_t source;
  source.vt = VT_BSTR;
  source.bstrVal = SysAllocStringByteLen("a\0c", 3);
  _variant_t copy(L"old");
  EXPECT_HR(VariantCopy(&copy, &source), S_OK);
  EXPECT_NE(source.bstrVal, copy.bstrVal);
  EXPECT_EQ("a\0c"s, Bytes(copy.bstrVal));
  EXPECT_HR(VariantCopy(&source, &source), S_OK);
  EXPECT_EQ("a\0c"s, Bytes(source.bstrVal));
  BSTR none = nullptr;
  VARIANT null{};
  null.vt = VT_BSTR;
  EXPECT_HR(VariantCopy(&copy, &null), S_OK);
  EXPECT_NE(nullptr, copy.bstrVal);
  null.vt = VT_BSTR | VT_BYREF;
  null.pbstrVal = &none;
  EXPECT_HR(VariantCopyInd(&copy, &null), S_OK);
  EXPECT_EQ(VT_BSTR, copy.vt);
  EXPECT_NE(nullptr, copy.bstrVal);
}

TEST(VariantTest, FollowsReferencesOnce) {
  LONG number = 5;
  VARIANT inner = ReferenceTo(VT_I4, &number);
  VARIANT outer = ReferenceTo(VT_VARIANT, &inner);
  const VARIANT outermost = ReferenceTo(VT_VARIANT, &outer);
  VARIANT unknown{};
  unknown.vt = 15;
  _variant_t copy;
  EXPECT_HR(VariantCopy(&copy, &inner), S_OK);
  EXPECT_EQ(VT_I4 | VT_BYREF, copy.vt);
  EXPECT_HR(VariantCopyInd(&copy, &outer), S_OK);
  EXPECT_HR(VariantCopyInd(&copy, &unknown), DISP_E_BADVARTYPE);
  EXPECT_TRUE(copy == _variant_t(5L));
  EXPECT_HR(VariantCopyInd(&copy, const_cast<VARIANT*>(&outermost)), E_INVALIDARG);
  EXPECT_HR(VariantCopyInd(&inner, &inner), S_OK);
  EXPECT_EQ(VT_I4, inner.vt);
  EXPECT_EQ(5, inner.lVal);
}

// A vector that the test destroys.
class SafeArrayTest : public testing::Test {
 protected:
  ~SafeArrayTest() override { EXPECT_HR(SafeArrayDestroy(m_array), S_OK); }

  void Create(VARTYPE type, LONG lowerBound, ULONG count) {
    EXPECT_HR(SafeArrayDestroy(m_array), S_OK);
    m_array = SafeArrayCreateVector(type, lowerBound, count);
    ASSERT_NE(nullptr, m_array);
  }
  HRESULT Put(LONG index, void* element) { return SafeArrayPutElement(m_array, &index, element); }
  HRESULT Get(LONG index, void* element) { return SafeArrayGetElement(m_array, &index, element); }
  // "<lower> <upper>"
  std::string Bounds() {
    LONG lower = 0, upper = 0;
    EXPECT_HR(SafeArrayGetLBound(m_array, 1, &lower), S_OK);
    EXPECT_HR(SafeArrayGetUBound(m_array, 1, &upper), S_OK);
    EXPECT_EQ(1u, SafeArrayGetDim(m_array));
    return std::to_string(lower) + " " + std::to_string(upper);
  }

  SAFEARRAY* m_array = nullptr;
};

TEST_F(SafeArrayTest, ChecksIndexesAndDimensions) {
  Create(VT_I4, 5, 0);
  EXPECT_EQ("5 4", Bounds());
  Create(VT_I4, -1, 2);
  EXPECT_EQ("-1 0", Bounds());
  LONG element = 42;
  EXPECT_HR(Put(0, &element), S_OK);
  element = 0;
  EXPECT_HR(Get(0, &element), S_OK);
  EXPECT_EQ(42, element);
  for (const LONG index : {-2, 1, INT32_MAX, INT32_MIN}) {
    EXPECT_HR(Get(index, &element), DISP_E_BADINDEX) << index;
    EXPECT_HR(Put(index, &element), DISP_E_BADINDEX) << index;
  }
  for (const UINT dimension : {0u, 2u}) {
    EXPECT_HR(SafeArrayGetLBound(m_array, dimension, &element), DISP_E_BADINDEX);
    EXPECT_HR(SafeArrayGetUBound(m_array, dimension, &element), DISP_E_BADINDEX);
  }
}

TEST_F(SafeArrayTest, OwnsCopiesOfTexts) {
  Create(VT_BSTR, 0, 2);
  UniqueBstr text(SysAllocStringByteLen("abc", 3));
  EXPECT_HR(Put(1, text.Get()), S_OK);
  EXPECT_HR(Put(1, text.Get()), S_OK);  // frees the element before
  text.Reset();
  SAFEARRAY* copy = nullptr;
  ASSERT_HR(SafeArrayCopy(m_array, &copy), S_OK);
  EXPECT_HR(SafeArrayDestroy(m_array), S_OK);
  m_array = copy;
  EXPECT_HR(Get(1, text.Receive()), S_OK);
  EXPECT_EQ("abc", Bytes(text.Get()));
  EXPECT_HR(Get(0, text.Receive()), S_OK);
  EXPECT_FALSE(text);
  EXPECT_HR(Put(1, nullptr), S_OK);
  EXPECT_HR(Get(1, text.Receive()), S_OK);
  EXPECT_EQ(0u, SysStringByteLen(text.Get()));
}

TEST_F(SafeArrayTest, IsNotDestroyedWhileLocked) {
  Create(VT_UI1, 0, 3);
  VARIANT value{};
  value.vt = VT_ARRAY | VT_UI1;
  value.parray = m_array;
  void* data = nullptr;
  EXPECT_HR(SafeArrayAccessData(m_array, &data), S_OK);
  std::memcpy(data, "abc", 3);
  EXPECT_HR(SafeArrayDestroy(m_array), DISP_E_ARRAYISLOCKED);
  EXPECT_HR(VariantClear(&value), DISP_E_ARRAYISLOCKED);
  EXPECT_HR(SafeArrayUnaccessData(m_array), S_OK);
  EXPECT_HR(SafeArrayUnaccessData(m_array), E_UNEXPECTED);
  BYTE last = 0;
  EXPECT_HR(Get(2, &last), S_OK);
  EXPECT_EQ('c', last);
}

TEST_F(SafeArrayTest, TakesNullPointers) {
  Create(VT_I4, 0, 1);
  LONG number = 0;
  SAFEARRAY* copy = m_array;
  EXPECT_HR(SafeArrayGetUBound(m_array, 0, nullptr), E_INVALIDARG);
  EXPECT_HR(SafeArrayGetLBound(nullptr, 1, &number), E_INVALIDARG);
  EXPECT_HR(Get(0, nullptr), E_INVALIDARG);
  EXPECT_HR(SafeArrayPutElement(nullptr, &number, &number), E_INVALIDARG);
  EXPECT_HR(SafeArrayAccessData(m_array, nullptr), E_INVALIDARG);
  EXPECT_HR(SafeArrayUnaccessData(nullptr), E_INVALIDARG);
  EXPECT_HR(SafeArrayCopy(nullptr, &copy), S_OK);
  EXPECT_EQ(nullptr, copy);
}

}  // namespace
}  // namespace Corvane::Test
