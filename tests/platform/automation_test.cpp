// BSTR, VARIANT and SAFEARRAY: life, copies and element access.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

#include "corvane/platform.h"
#include "tests/support/hr.h"

namespace {

using namespace std::string_literals;

// Lives on the stack: only the balance of references counts.
struct Counted final : IUnknown {
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
  ULONG references = 1;
};

std::string Bytes(BSTR text) {
  return {reinterpret_cast<const char*>(text), SysStringByteLen(text)};
}

TEST(BstrTest, KeepsItsLengthAndEndsInNul) {
  const struct {
    const char* name;
    BSTR text;
    std::wstring expected;
  } cases[] = {{"up to the NUL", SysAllocString(L"a\0b"), L"a"},
               {"empty", SysAllocString(L""), L""},
               {"NUL inside", SysAllocStringLen(L"a\0b", 3), L"a\0b"s},
               {"part of a text", SysAllocStringLen(L"abcdef", 2), L"ab"},
               {"no text", SysAllocStringLen(L"abc", 0), L""},
               {"blank", SysAllocStringLen(nullptr, 2), L"\0\0"s}};
  for (const auto& c : cases) {
    ASSERT_NE(nullptr, c.text) << c.name;
    EXPECT_EQ(c.expected, std::wstring(c.text, SysStringLen(c.text))) << c.name;
    EXPECT_EQ(L'\0', c.text[c.expected.size()]) << c.name;
    std::uint32_t prefix = 0;
    std::memcpy(&prefix, reinterpret_cast<const char*>(c.text) - sizeof(prefix), sizeof(prefix));
    EXPECT_EQ(c.expected.size() * sizeof(wchar_t), prefix) << c.name;
    SysFreeString(c.text);
  }
}

TEST(BstrTest, KeepsOddByteLengths) {
  for (UINT bytes = 0; bytes < 9; ++bytes) {
    BSTR text = SysAllocStringByteLen("abcdefgh", bytes);
    EXPECT_EQ("abcdefgh"s.substr(0, bytes), Bytes(text));
    EXPECT_EQ(bytes / sizeof(wchar_t), SysStringLen(text)) << bytes;
    SysFreeString(text);
  }
}

TEST(BstrTest, TakesNullAndRefusesLengthsOfMoreThan32Bits) {
  EXPECT_EQ(nullptr, SysAllocString(nullptr));
  EXPECT_EQ(0u, SysStringLen(nullptr));
  EXPECT_EQ(0u, SysStringByteLen(nullptr));
  SysFreeString(nullptr);
  EXPECT_EQ(nullptr, SysAllocStringLen(nullptr, UINT32_MAX / sizeof(wchar_t)));
  EXPECT_EQ(nullptr, SysAllocStringLen(nullptr, UINT32_MAX));
  EXPECT_EQ(nullptr, SysAllocStringByteLen(nullptr, UINT32_MAX));
}

TEST(VariantTest, ClearsKnownTypesOnly) {
  for (const int type : {VT_NULL | 0, VT_UI8 | 0, VT_BSTR | 0, VT_DISPATCH | 0, VT_ARRAY | VT_I4,
                         VT_BYREF | VT_I4, VT_BYREF | VT_ARRAY | VT_UI1}) {
    VARIANT value{};
    value.vt = static_cast<VARTYPE>(type);
    EXPECT_HR(VariantClear(&value), S_OK) << type;
    EXPECT_EQ(VT_EMPTY, value.vt);
  }
  // A gap, beyond the automation types, no such reference or array, foreign modifiers.
  for (const int type :
       {15, 24, VT_BYREF | VT_EMPTY, VT_ARRAY | VT_NULL, 0x1000 | VT_I4, 0x8000 | VT_I4}) {
    VARIANT value{};
    value.vt = static_cast<VARTYPE>(type);
    _variant_t destination(7L);
    EXPECT_HR(VariantClear(&value), DISP_E_BADVARTYPE) << type;
    EXPECT_HR(VariantCopy(&destination, &value), DISP_E_BADVARTYPE) << type;
    EXPECT_TRUE(destination == _variant_t(7L));
    EXPECT_EQ(type, int{value.vt});
  }
}

TEST(VariantTest, CopiesTextByByteLength) {
  _variant_t source;
  source.vt = VT_BSTR;
  source.bstrVal = SysAllocStringByteLen("a\0c", 3);
  _variant_t copy(L"old");
  EXPECT_HR(VariantCopy(&copy, &source), S_OK);
  EXPECT_NE(source.bstrVal, copy.bstrVal);
  EXPECT_EQ("a\0c"s, Bytes(copy.bstrVal));
}

TEST(VariantTest, CopiesNullTextAsEmptyText) {
  VARIANT source{};
  source.vt = VT_BSTR;
  _variant_t copy;
  EXPECT_HR(VariantCopy(&copy, &source), S_OK);
  EXPECT_NE(nullptr, copy.bstrVal);
  BSTR none = nullptr;
  source.vt = VT_BSTR | VT_BYREF;
  source.pbstrVal = &none;
  _variant_t followed;
  EXPECT_HR(VariantCopyInd(&followed, &source), S_OK);
  EXPECT_EQ(VT_BSTR, followed.vt);
  EXPECT_NE(nullptr, followed.bstrVal);
}

TEST(VariantTest, CopiesObjectsOntoThemselves) {
  Counted object;
  {
    _variant_t source(&object);
    EXPECT_HR(VariantCopy(&source, &source), S_OK);
    EXPECT_EQ(2u, object.references);
  }
  EXPECT_EQ(1u, object.references);
}

TEST(VariantTest, FollowsReferencesOnce) {
  LONG number = 5;
  VARIANT inner{};
  inner.vt = VT_I4 | VT_BYREF;
  inner.plVal = &number;
  VARIANT outer{};
  outer.vt = VT_VARIANT | VT_BYREF;
  outer.pvarVal = &inner;
  VARIANT outermost = outer;
  outermost.pvarVal = &outer;
  _variant_t copy;
  EXPECT_HR(VariantCopy(&copy, &inner), S_OK);
  EXPECT_EQ(VT_I4 | VT_BYREF, copy.vt);
  EXPECT_HR(VariantCopyInd(&copy, &outer), S_OK);
  VARIANT unknown{};
  unknown.vt = 15;
  EXPECT_HR(VariantCopyInd(&copy, &unknown), DISP_E_BADVARTYPE);
  EXPECT_TRUE(copy == _variant_t(5L));
  EXPECT_HR(VariantCopyInd(&copy, &outermost), E_INVALIDARG);
  EXPECT_HR(VariantCopyInd(&inner, &inner), S_OK);
  EXPECT_EQ(VT_I4, inner.vt);
  EXPECT_EQ(5, inner.lVal);
}

// A vector that the test destroys.
class SafeArrayTest : public testing::Test {
 protected:
  ~SafeArrayTest() override { EXPECT_HR(SafeArrayDestroy(m_array), S_OK); }

  void Create(VARTYPE type, LONG lowerBound, ULONG count) {
    m_array = SafeArrayCreateVector(type, lowerBound, count);
    ASSERT_NE(nullptr, m_array);
  }

  HRESULT Put(LONG index, void* element) { return SafeArrayPutElement(m_array, &index, element); }
  HRESULT Get(LONG index, void* element) { return SafeArrayGetElement(m_array, &index, element); }

  SAFEARRAY* m_array = nullptr;
};

TEST_F(SafeArrayTest, KnowsTypesAndElementSizes) {
  using Row = std::pair<unsigned, std::size_t>;
  for (const auto& [type, bytes] :
       {Row{VT_UI1, 1}, Row{VT_BOOL, 2}, Row{VT_I4, 4}, Row{VT_R4, 4}, Row{VT_ERROR, 4},
        Row{VT_UI8, 8}, Row{VT_R8, 8}, Row{VT_BSTR, 8}}) {
    SAFEARRAY* array = SafeArrayCreateVector(static_cast<VARTYPE>(type), 5, 0);
    ASSERT_NE(nullptr, array) << type;
    VARTYPE stored = VT_EMPTY;
    EXPECT_HR(SafeArrayGetVartype(array, &stored), S_OK);
    EXPECT_EQ(type, stored);
    EXPECT_EQ(bytes, array->cbElements) << type;
    EXPECT_EQ(1u, SafeArrayGetDim(array));
    LONG bound = 0;
    EXPECT_HR(SafeArrayGetUBound(array, 1, &bound), S_OK);
    EXPECT_EQ(4, bound);  // of an empty array, below its lower bound
    EXPECT_HR(SafeArrayDestroy(array), S_OK);
  }
  for (const int type : {VT_EMPTY | 0, VT_NULL | 0, 15, 24}) {
    EXPECT_EQ(nullptr, SafeArrayCreateVector(static_cast<VARTYPE>(type), 0, 2)) << type;
  }
}

TEST_F(SafeArrayTest, ChecksIndexesAndDimensions) {
  Create(VT_I4, -1, 2);
  LONG bound = 0;
  EXPECT_HR(SafeArrayGetLBound(m_array, 1, &bound), S_OK);
  EXPECT_EQ(-1, bound);
  EXPECT_HR(SafeArrayGetUBound(m_array, 1, &bound), S_OK);
  EXPECT_EQ(0, bound);
  for (const UINT dimension : {0u, 2u}) {
    EXPECT_HR(SafeArrayGetLBound(m_array, dimension, &bound), DISP_E_BADINDEX);
    EXPECT_HR(SafeArrayGetUBound(m_array, dimension, &bound), DISP_E_BADINDEX);
  }
  LONG element = 42;
  EXPECT_HR(Put(0, &element), S_OK);
  element = 0;
  EXPECT_HR(Get(0, &element), S_OK);
  EXPECT_EQ(42, element);
  for (const LONG index : {-2, 1, INT32_MAX, INT32_MIN}) {
    EXPECT_HR(Get(index, &element), DISP_E_BADINDEX) << index;
    EXPECT_HR(Put(index, &element), DISP_E_BADINDEX) << index;
  }
}

TEST_F(SafeArrayTest, OwnsCopiesOfTexts) {
  Create(VT_BSTR, 0, 2);
  BSTR text = SysAllocStringByteLen("abc", 3);
  EXPECT_HR(Put(1, text), S_OK);
  EXPECT_HR(Put(1, text), S_OK);  // frees the element before
  SysFreeString(text);
  SAFEARRAY* copy = nullptr;
  ASSERT_HR(SafeArrayCopy(m_array, &copy), S_OK);
  EXPECT_HR(SafeArrayDestroy(m_array), S_OK);
  m_array = copy;
  BSTR element = nullptr;
  EXPECT_HR(Get(1, &element), S_OK);
  EXPECT_EQ("abc", Bytes(element));
  SysFreeString(element);
  EXPECT_HR(Get(0, &element), S_OK);
  EXPECT_EQ(nullptr, element);
  EXPECT_HR(Put(1, nullptr), S_OK);
  EXPECT_HR(Get(1, &element), S_OK);
  EXPECT_EQ(0u, SysStringByteLen(element));
  SysFreeString(element);
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
  EXPECT_HR(SafeArrayDestroy(nullptr), S_OK);
  EXPECT_HR(SafeArrayCopy(nullptr, &copy), S_OK);
  EXPECT_EQ(nullptr, copy);
}

}  // namespace
