// _com_error, _bstr_t and _variant_t.
#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "corvane/platform.h"
#include "tests/support/hr.h"

namespace {

struct Counted final : IUnknown {
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    *object = iid == IID_IUnknown ? this : nullptr;
    if (*object == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
  ULONG references = 1;
};

// The code that `action` throws.
template <typename Action>
std::optional<HRESULT> Thrown(Action action) {
  try {
    action();
  } catch (const _com_error& error) {
    return error.Error();
  }
  return std::nullopt;
}

std::wstring Chars(const _bstr_t& text) {
  return {static_cast<const wchar_t*>(text), text.length()};
}

TEST(ComErrorTest, IsThrownForFailuresOnly) {
  EXPECT_EQ(std::nullopt, Thrown([] { _com_util::CheckError(S_OK); }));
  EXPECT_EQ(std::nullopt, Thrown([] { _com_util::CheckError(S_FALSE); }));
  EXPECT_EQ(E_FAIL, Thrown([] { _com_util::CheckError(E_FAIL); }));
  EXPECT_EQ(E_OUTOFMEMORY, Thrown([] { _com_issue_error(E_OUTOFMEMORY); }));
}

TEST(BstrHolderTest, SharesCopiesUntilOneChanges) {
  _bstr_t first(L"one");
  _bstr_t second = first;
  EXPECT_EQ(static_cast<const wchar_t*>(first), static_cast<const wchar_t*>(second));
  second += L"two";
  EXPECT_EQ(L"one", Chars(first));
  EXPECT_EQ(L"onetwo", Chars(second));
  second = first;
  first = L"three";
  EXPECT_EQ(L"one", Chars(second));
}

TEST(BstrHolderTest, TellsAbsentFromEmpty) {
  const _bstr_t absent;
  const _bstr_t empty(L"");
  EXPECT_TRUE(!absent);
  EXPECT_FALSE(!empty);
  EXPECT_EQ(nullptr, static_cast<const wchar_t*>(absent));
  EXPECT_EQ(nullptr, absent.copy());
  EXPECT_EQ(0u, absent.length());
  EXPECT_TRUE(absent != empty);
  EXPECT_TRUE(absent < empty);
  EXPECT_EQ(L"x", Chars(absent + L"x"));
  EXPECT_TRUE(!_bstr_t(static_cast<const wchar_t*>(nullptr)));
}

TEST(BstrHolderTest, ComparesWholeTexts) {
  BSTR inner = SysAllocStringLen(L"a\0b", 3);
  const _bstr_t longer(inner, false);
  EXPECT_TRUE(_bstr_t(L"a") < longer);
  EXPECT_TRUE(longer != _bstr_t(L"a"));
  EXPECT_TRUE(_bstr_t(L"a") == _bstr_t(L"a"));
  EXPECT_TRUE(_bstr_t(L"b") > _bstr_t(L"aa"));
  EXPECT_EQ(std::wstring(L"a\0b<", 4), Chars(longer + L"<"));
  EXPECT_EQ(std::wstring(L">a\0b", 4), Chars(L">" + longer));
}

TEST(BstrHolderTest, HandsItsTextOver) {
  _bstr_t holder;
  *holder.GetAddress() = SysAllocString(L"out");
  EXPECT_EQ(L"out", Chars(holder));
  BSTR copy = holder.copy();
  EXPECT_NE(copy, static_cast<const wchar_t*>(holder));
  SysFreeString(copy);
  BSTR text = holder.Detach();
  EXPECT_TRUE(!holder);
  _bstr_t owner;
  owner.Attach(text);
  EXPECT_EQ(text, owner.GetBSTR());
  owner.Assign(holder.GetBSTR());
  EXPECT_TRUE(!owner);
}

TEST(BstrHolderTest, ConvertsNarrowText) {
#ifdef __MINGW32__
  GTEST_SKIP() << "MinGW-w64 declares the conversion functions but has no library with them";
#else
  const _bstr_t text("narrow");
  EXPECT_EQ(L"narrow", Chars(text));
  EXPECT_STREQ("narrow", static_cast<const char*>(text));
  EXPECT_EQ(L"ab", Chars("a" + _bstr_t(L"b")));
  EXPECT_TRUE(!_bstr_t(static_cast<const char*>(nullptr)));
  _variant_t value("narrow");
  EXPECT_EQ(L"narrow", std::wstring(value.bstrVal));
  value = "other";
  EXPECT_EQ(L"other", std::wstring(value.bstrVal));
#endif
}

TEST(BstrHolderTest, ConvertsVariants) {
  EXPECT_EQ(L"7", Chars(_bstr_t(_variant_t(7))));
  EXPECT_EQ(L"abc", Chars(_bstr_t(_variant_t(L"abc"))));
  _variant_t null;
  null.vt = VT_NULL;
  EXPECT_EQ(DISP_E_TYPEMISMATCH, Thrown([&] { _bstr_t text(null); }));
}

TEST(VariantHolderTest, TakesItsTypeFromTheValue) {
  Counted object;
  const struct {
    const char* name;
    unsigned expected;
    _variant_t value;
  } cases[] = {
      {"nothing", VT_EMPTY, {}},
      {"short", VT_I2, short{1}},
      {"long", VT_I4, 1L},
      {"int", VT_INT, 1},
      {"unsigned", VT_UINT, 1u},
      {"unsigned long", VT_UI4, 1ul},
      {"long long", VT_I8, 1LL},
      {"unsigned long long", VT_UI8, 1ull},
      {"float", VT_R4, 1.0f},
      {"double", VT_R8, 1.0},
      {"bool", VT_BOOL, true},
      {"byte", VT_UI1, BYTE{1}},
      {"char", VT_I1, 'a'},
      {"unsigned short", VT_UI2, static_cast<unsigned short>(1)},
      {"wide text", VT_BSTR, L"text"},
      {"text object", VT_BSTR, _bstr_t(L"text")},
      {"object", VT_UNKNOWN, static_cast<IUnknown*>(&object)},
      {"error", VT_ERROR, {1L, VT_ERROR}},
      {"date", VT_DATE, {1.0, VT_DATE}},
  };
  for (const auto& c : cases) EXPECT_EQ(c.expected, c.value.vt) << c.name;
  EXPECT_EQ(E_INVALIDARG, Thrown([] { _variant_t value(1L, VT_I8); }));
  EXPECT_EQ(E_INVALIDARG, Thrown([] { _variant_t value(short{1}, VT_I4); }));
}

TEST(VariantHolderTest, AssignsAndConverts) {
  _variant_t value(L"12.6");
  EXPECT_EQ(13L, static_cast<long>(value));
  EXPECT_EQ(13, static_cast<int>(value));
  EXPECT_EQ(12.6, static_cast<double>(value));
  EXPECT_TRUE(static_cast<bool>(value));
  value = true;
  EXPECT_EQ(-1, static_cast<int>(value));
  value = short{0};  // keeps VT_BOOL
  EXPECT_EQ(VT_BOOL, value.vt);
  value = 5;
  EXPECT_EQ(VT_INT, value.vt);
  EXPECT_EQ(L"5", Chars(static_cast<_bstr_t>(value)));
  value = L"text";
  EXPECT_EQ(DISP_E_TYPEMISMATCH, Thrown([&] { static_cast<void>(static_cast<int>(value)); }));
  EXPECT_TRUE(value == _variant_t(L"text"));
}

TEST(VariantHolderTest, SaturatesLongs) {
  if (sizeof(long) == sizeof(LONG)) GTEST_SKIP() << "every long fits VT_I4 here";
  EXPECT_EQ(INT32_MAX, _variant_t(std::numeric_limits<long>::max()).lVal);
  EXPECT_EQ(INT32_MIN, _variant_t(std::numeric_limits<long>::min()).lVal);
  EXPECT_EQ(UINT32_MAX, _variant_t(std::numeric_limits<unsigned long>::max()).ulVal);
}

TEST(VariantHolderTest, ComparesTypeAndValue) {
  EXPECT_TRUE(_variant_t(L"a") == _variant_t(L"a"));
  EXPECT_TRUE(_variant_t(L"a") != _variant_t(L"b"));
  EXPECT_TRUE(_variant_t(L"a") != _variant_t(L"ab"));
  EXPECT_TRUE(_variant_t(1) != _variant_t(1L));
  EXPECT_TRUE(_variant_t(1LL << 40) != _variant_t(1LL << 41));
  EXPECT_TRUE(_variant_t() == _variant_t());
  EXPECT_FALSE(_variant_t() == static_cast<const VARIANT*>(nullptr));
}

TEST(VariantHolderTest, BalancesReferences) {
  Counted object;
  {
    _variant_t value(static_cast<IUnknown*>(&object));
    EXPECT_EQ(2u, object.references);
    _variant_t copy = value;
    EXPECT_EQ(3u, object.references);
    IUnknown* extracted = copy;
    EXPECT_EQ(4u, object.references);
    extracted->Release();
    _variant_t moved = std::move(copy);
    moved = L"text";
    std::vector<_variant_t> many(3, value);
    many.erase(many.begin());
    object.AddRef();
    _variant_t taken(static_cast<IUnknown*>(&object), false);
  }
  EXPECT_EQ(1u, object.references);
}

TEST(VariantHolderTest, MovesRawVariants) {
  VARIANT raw;
  VariantInit(&raw);
  raw.vt = VT_BSTR;
  raw.bstrVal = SysAllocString(L"raw");
  const BSTR text = raw.bstrVal;
  _variant_t taken(raw, false);
  EXPECT_EQ(VT_EMPTY, raw.vt);
  EXPECT_EQ(text, taken.bstrVal);
  raw = taken.Detach();
  EXPECT_EQ(VT_EMPTY, taken.vt);
  taken = L"old";
  taken.Attach(raw);
  EXPECT_EQ(text, taken.bstrVal);
  EXPECT_EQ(&taken.GetVARIANT(), &taken);
  EXPECT_EQ(VT_EMPTY, taken.GetAddress()->vt);
  EXPECT_EQ(E_POINTER, Thrown([] { _variant_t value(static_cast<const VARIANT*>(nullptr)); }));
}

TEST(VariantHolderTest, ChangesTypeOrKeepsItsValue) {
  _variant_t value(L"12");
  value.ChangeType(VT_I4);
  EXPECT_EQ(12, value.lVal);
  const _variant_t text(L"abc");
  EXPECT_EQ(DISP_E_TYPEMISMATCH, Thrown([&] { value.ChangeType(VT_I4, &text); }));
  EXPECT_EQ(12, value.lVal);
  value.ChangeType(VT_BSTR, &text);
  EXPECT_EQ(L"abc", std::wstring(value.bstrVal));
}

}  // namespace
