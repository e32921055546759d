// BSTR, VARIANT and SAFEARRAY: life, copies and element access.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "corvane/platform.h"
#include "tests/support/hr.h"

namespace {

using namespace std::string_literals;

// Clears the VARIANT at the end.
struct Owned : VARIANT {
  Owned() { VariantInit(this); }
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;
  ~Owned() { VariantClear(this); }
};

// Lives on the stack: only the balance of references counts.
struct Counted final : IUnknown {
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
  ULONG references = 1;
};

std::string Bytes(BSTR text) {
  return {reinterpret_cast<const char*>(text), SysStringByteLen(text)};
}

std::wstring Chars(BSTR text) { return {text, SysStringLen(text)}; }

TEST(BstrTest, KeepsItsLengthAndEndsInNul) {
  const std::wstring inner(L"a\0b", 3);
  const struct {
    const char* name;
    BSTR text;
    std::wstring expected;
  } cases[] = {
      {"up to the NUL", SysAllocString(inner.c_str()), L"a"},
      {"empty", SysAllocString(L""), L""},
      {"NUL inside", SysAllocStringLen(inner.data(), 3), inner},
      {"part of a text", SysAllocStringLen(L"abcdef", 2), L"ab"},
      {"no text", SysAllocStringLen(L"abc", 0), L""},
  };
  for (const auto& c : cases) {
    ASSERT_NE(nullptr, c.text) << c.name;
    EXPECT_EQ(c.expected, Chars(c.text)) << c.name;
    EXPECT_EQ(c.expected.size() * sizeof(wchar_t), SysStringByteLen(c.text)) << c.name;
    EXPECT_EQ(L'\0', c.text[c.expected.size()]) << c.name;
    std::uint32_t prefix = 0;
    std::memcpy(&prefix, reinterpret_cast<const char*>(c.text) - sizeof(prefix), sizeof(prefix));
    EXPECT_EQ(SysStringByteLen(c.text), prefix) << c.name;
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

TEST(BstrTest, TakesNull) {
  EXPECT_EQ(nullptr, SysAllocString(nullptr));
  EXPECT_EQ(0u, SysStringLen(nullptr));
  EXPECT_EQ(0u, SysStringByteLen(nullptr));
  SysFreeString(nullptr);
  BSTR blank = SysAllocStringLen(nullptr, 2);
  EXPECT_EQ(2u, SysStringLen(blank));
  EXPECT_EQ(L'\0', blank[2]);
  SysFreeString(blank);
}

TEST(BstrTest, RefusesLengthsOfMoreThan32Bits) {
  EXPECT_EQ(nullptr, SysAllocStringLen(nullptr, UINT32_MAX / sizeof(wchar_t)));
  EXPECT_EQ(nullptr, SysAllocStringLen(nullptr, UINT32_MAX));
  EXPECT_EQ(nullptr, SysAllocStringByteLen(nullptr, UINT32_MAX));
}

TEST(VariantTest, ClearsKnownTypesOnly) {
  const struct {
    const char* name;
    unsigned type;
    HRESULT expected;
  } cases[] = {
      {"empty", VT_EMPTY, S_OK},
      {"null", VT_NULL, S_OK},
      {"number", VT_UI8, S_OK},
      {"NULL text", VT_BSTR, S_OK},
      {"NULL object", VT_DISPATCH, S_OK},
      {"NULL array", VT_ARRAY | VT_I4, S_OK},
      {"reference", VT_BYREF | VT_I4, S_OK},
      {"reference to an array", VT_BYREF | VT_ARRAY | VT_UI1, S_OK},
      {"gap in the numbering", 15, DISP_E_BADVARTYPE},
      {"beyond the automation types", 24, DISP_E_BADVARTYPE},
      {"reference to nothing", VT_BYREF | VT_EMPTY, DISP_E_BADVARTYPE},
      {"array of nulls", VT_ARRAY | VT_NULL, DISP_E_BADVARTYPE},
      {"vector modifier", 0x1000 | VT_I4, DISP_E_BADVARTYPE},
      {"reserved modifier", 0x8000 | VT_I4, DISP_E_BADVARTYPE},
  };
  for (const auto& c : cases) {
    VARIANT value;
    VariantInit(&value);
    value.vt = static_cast<VARTYPE>(c.type);
    EXPECT_HR(VariantClear(&value), c.expected) << c.name;
    EXPECT_EQ(c.expected == S_OK ? unsigned{VT_EMPTY} : c.type, value.vt) << c.name;
  }
}

TEST(VariantTest, CopiesTextByByteLength) {
  Owned source;
  source.vt = VT_BSTR;
  source.bstrVal = SysAllocStringByteLen("a\0c", 3);
  Owned copy;
  copy.vt = VT_BSTR;
  copy.bstrVal = SysAllocString(L"old");
  EXPECT_HR(VariantCopy(&copy, &source), S_OK);
  EXPECT_NE(source.bstrVal, copy.bstrVal);
  EXPECT_EQ("a\0c"s, Bytes(copy.bstrVal));
}

TEST(VariantTest, CopiesNullTextAsEmptyText) {
  VARIANT source;
  VariantInit(&source);
  source.vt = VT_BSTR;
  source.bstrVal = nullptr;
  Owned copy;
  EXPECT_HR(VariantCopy(&copy, &source), S_OK);
  EXPECT_NE(nullptr, copy.bstrVal);
  BSTR none = nullptr;
  source.vt = VT_BSTR | VT_BYREF;
  source.pbstrVal = &none;
  Owned followed;
  EXPECT_HR(VariantCopyInd(&followed, &source), S_OK);
  EXPECT_EQ(VT_BSTR, followed.vt);
  EXPECT_NE(nullptr, followed.bstrVal);
}

TEST(VariantTest, CountsReferencesOfObjects) {
  Counted object;
  {
    Owned source;
    source.vt = VT_UNKNOWN;
    source.punkVal = &object;
    object.AddRef();
    Owned copy;
    EXPECT_HR(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(3u, object.references);
    EXPECT_HR(VariantCopy(&copy, &copy), S_OK);
    EXPECT_EQ(3u, object.references);
  }
  EXPECT_EQ(1u, object.references);
}

TEST(VariantTest, LeavesTheDestinationWhenTheSourceIsNoVariant) {
  VARIANT source;
  VariantInit(&source);
  source.vt = 15;
  Owned destination;
  destination.vt = VT_I4;
  destination.lVal = 7;
  EXPECT_HR(VariantCopy(&destination, &source), DISP_E_BADVARTYPE);
  EXPECT_HR(VariantCopyInd(&destination, &source), DISP_E_BADVARTYPE);
  EXPECT_EQ(VT_I4, destination.vt);
  EXPECT_EQ(7, destination.lVal);
}

TEST(VariantTest, FollowsReferencesOnce) {
  LONG number = 5;
  VARIANT inner;
  VariantInit(&inner);
  inner.vt = VT_I4 | VT_BYREF;
  inner.plVal = &number;
  VARIANT outer;
  VariantInit(&outer);
  outer.vt = VT_VARIANT | VT_BYREF;
  outer.pvarVal = &inner;
  Owned copy;
  EXPECT_HR(VariantCopy(&copy, &inner), S_OK);
  EXPECT_EQ(VT_I4 | VT_BYREF, copy.vt);
  EXPECT_HR(VariantCopyInd(&copy, &outer), S_OK);
  EXPECT_EQ(VT_I4, copy.vt);
  EXPECT_EQ(5, copy.lVal);
  VARIANT outermost;
  VariantInit(&outermost);
  outermost.vt = VT_VARIANT | VT_BYREF;
  outermost.pvarVal = &outer;
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
  const struct {
    unsigned type;
    std::size_t bytes;
  } cases[] = {
      {VT_I1, 1},      {VT_UI1, 1},  {VT_I2, 2},    {VT_BOOL, 2},    {VT_I4, 4},
      {VT_UINT, 4},    {VT_R4, 4},   {VT_ERROR, 4}, {VT_UI8, 8},     {VT_R8, 8},
      {VT_CY, 8},      {VT_DATE, 8}, {VT_BSTR, 8},  {VT_UNKNOWN, 8}, {VT_VARIANT, sizeof(VARIANT)},
      {VT_DISPATCH, 8}};
  for (const auto& c : cases) {
    SAFEARRAY* array = SafeArrayCreateVector(static_cast<VARTYPE>(c.type), 0, 2);
    ASSERT_NE(nullptr, array) << c.type;
    VARTYPE type = VT_EMPTY;
    EXPECT_HR(SafeArrayGetVartype(array, &type), S_OK);
    EXPECT_EQ(c.type, type);
    EXPECT_EQ(c.bytes, array->cbElements) << c.type;
    EXPECT_EQ(1u, SafeArrayGetDim(array));
    EXPECT_HR(SafeArrayDestroy(array), S_OK);
  }
  for (const unsigned type : {unsigned{VT_EMPTY}, unsigned{VT_NULL}, 15u, 24u}) {
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
  EXPECT_HR(SafeArrayGetUBound(m_array, 0, nullptr), E_INVALIDARG);
  EXPECT_HR(SafeArrayGetLBound(nullptr, 1, &bound), E_INVALIDARG);

  LONG element = 42;
  EXPECT_HR(Put(0, &element), S_OK);
  element = 0;
  EXPECT_HR(Get(0, &element), S_OK);
  EXPECT_EQ(42, element);
  for (const LONG index : {-2, 1, INT32_MAX, INT32_MIN}) {
    EXPECT_HR(Get(index, &element), DISP_E_BADINDEX) << index;
    EXPECT_HR(Put(index, &element), DISP_E_BADINDEX) << index;
  }
  EXPECT_HR(Get(0, nullptr), E_INVALIDARG);
  EXPECT_HR(SafeArrayGetElement(m_array, nullptr, &element), E_INVALIDARG);
  EXPECT_HR(SafeArrayPutElement(nullptr, &bound, &element), E_INVALIDARG);
}

TEST_F(SafeArrayTest, HasAnUpperBoundBelowTheLowerWhenEmpty) {
  Create(VT_UI1, 5, 0);
  LONG bound = 0;
  EXPECT_HR(SafeArrayGetUBound(m_array, 1, &bound), S_OK);
  EXPECT_EQ(4, bound);
  EXPECT_HR(Get(5, &bound), DISP_E_BADINDEX);
}

TEST_F(SafeArrayTest, OwnsCopiesOfTexts) {
  Create(VT_BSTR, 0, 2);
  BSTR text = SysAllocStringByteLen("abc", 3);
  EXPECT_HR(Put(1, text), S_OK);
  EXPECT_HR(Put(1, text), S_OK);  // frees the element before
  SysFreeString(text);
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

TEST_F(SafeArrayTest, OwnsReferencesToObjects) {
  Counted object;
  SAFEARRAY* array = SafeArrayCreateVector(VT_UNKNOWN, 0, 1);
  LONG index = 0;
  EXPECT_HR(SafeArrayPutElement(array, &index, &object), S_OK);
  EXPECT_HR(SafeArrayPutElement(array, &index, &object), S_OK);
  EXPECT_EQ(2u, object.references);
  IUnknown* element = nullptr;
  EXPECT_HR(SafeArrayGetElement(array, &index, &element), S_OK);
  EXPECT_EQ(&object, element);
  EXPECT_EQ(3u, object.references);
  element->Release();
  EXPECT_HR(SafeArrayDestroy(array), S_OK);
  EXPECT_EQ(1u, object.references);
}

TEST_F(SafeArrayTest, CopiesVariantsDeeply) {
  Create(VT_VARIANT, 1, 2);
  {
    Owned element;
    element.vt = VT_BSTR;
    element.bstrVal = SysAllocString(L"text");
    EXPECT_HR(Put(2, &element), S_OK);
  }
  SAFEARRAY* copy = nullptr;
  ASSERT_HR(SafeArrayCopy(m_array, &copy), S_OK);
  EXPECT_HR(SafeArrayDestroy(m_array), S_OK);
  m_array = copy;
  VARIANT element;  // its old content is not looked at
  std::memset(static_cast<void*>(&element), 0xFF, sizeof(element));
  EXPECT_HR(Get(2, &element), S_OK);
  EXPECT_EQ(VT_BSTR, element.vt);
  EXPECT_EQ(L"text", Chars(element.bstrVal));
  VariantClear(&element);
  element.vt = 15;
  EXPECT_HR(Put(2, &element), DISP_E_BADVARTYPE);
}

TEST_F(SafeArrayTest, IsNotDestroyedWhileLocked) {
  Create(VT_UI1, 0, 3);
  void* data = nullptr;
  EXPECT_HR(SafeArrayAccessData(m_array, &data), S_OK);
  std::memcpy(data, "abc", 3);
  EXPECT_HR(SafeArrayDestroy(m_array), DISP_E_ARRAYISLOCKED);
  VARIANT value;
  VariantInit(&value);
  value.vt = VT_ARRAY | VT_UI1;
  value.parray = m_array;
  EXPECT_HR(VariantClear(&value), DISP_E_ARRAYISLOCKED);
  EXPECT_HR(SafeArrayUnaccessData(m_array), S_OK);
  EXPECT_HR(SafeArrayUnaccessData(m_array), E_UNEXPECTED);
  BYTE last = 0;
  EXPECT_HR(Get(2, &last), S_OK);
  EXPECT_EQ('c', last);
  EXPECT_HR(SafeArrayAccessData(m_array, nullptr), E_INVALIDARG);
  EXPECT_HR(SafeArrayAccessData(nullptr, &data), E_INVALIDARG);
  EXPECT_HR(SafeArrayUnaccessData(nullptr), E_INVALIDARG);
}

TEST_F(SafeArrayTest, TakesNullArrays) {
  EXPECT_HR(SafeArrayDestroy(nullptr), S_OK);
  EXPECT_EQ(0u, SafeArrayGetDim(nullptr));
  SAFEARRAY* copy = nullptr;
  EXPECT_HR(SafeArrayCopy(nullptr, &copy), S_OK);
  EXPECT_EQ(nullptr, copy);
  EXPECT_HR(SafeArrayCopy(nullptr, nullptr), E_INVALIDARG);
  EXPECT_HR(SafeArrayGetVartype(nullptr, nullptr), E_INVALIDARG);
}

}  // namespace
