// _com_error, _bstr_t and _variant_t.
#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "corvane/platform.h"
#include "tests/platform/automation_fixture.h"

namespace Corvane::Test {
namespace {

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
const wchar_t* Place(const _bstr_t& text) { return text; }

TEST(BstrHolderTest, SharesCopiesUntilOneChanges) {
  _bstr_t first(L"one");
  _bstr_t second = first;
  EXPECT_EQ(Place(first), Place(second));
  second += L"two";
  EXPECT_EQ(L"one onetwo", Chars(first + L" " + second));
  second = first;
  first = L"three";
  EXPECT_EQ(L"one", Chars(second));
}

TEST(BstrHolderTest, ComparesAndJoinsWholeTextsAndTellsAbsentFromEmpty) {
  const _bstr_t absent;
  const _bstr_t empty(L"");
  const _bstr_t longer(SysAllocStringLen(L"a\0b", 3), false);
  EXPECT_TRUE(!absent && !!empty && !_bstr_t(static_cast<const wchar_t*>(nullptr)));
  EXPECT_TRUE(absent.copy() == nullptr && absent.length() == 0);
  EXPECT_TRUE(absent != empty && absent < empty);
  EXPECT_TRUE(_bstr_t(L"a") < longer && longer != _bstr_t(L"a") && _bstr_t(L"b") > longer);
  EXPECT_EQ(std::wstring(L">a\0b<", 5), Chars(L">" + longer + absent + L"<"));
}

TEST(BstrHolderTest, HandsItsTextOver) {
  _bstr_t holder;
  *holder.GetAddress() = SysAllocString(L"out");
  const _bstr_t copy(holder.copy(), false);
  EXPECT_TRUE(copy == holder && Place(copy) != Place(holder));
  BSTR text = holder.Detach();
  EXPECT_TRUE(!holder);
  holder.Attach(text);
  EXPECT_EQ(text, holder.GetBSTR());
  holder.Assign(nullptr);
  EXPECT_TRUE(!holder);
}

TEST(BstrHolderTest, ConvertsNarrowText) {
#ifdef __MINGW32__
  GTEST_SKIP() << "MinGW-w64 declares the conversion functions but has no library with them";
#else
  const _bstr_t text = "nar" + _bstr_t(L"row");
  EXPECT_STREQ("narrow", static_cast<const char*>(text));
  EXPECT_TRUE(!_bstr_t(static_cast<const char*>(nullptr)));
  EXPECT_TRUE(_variant_t("narrow") == _variant_t(L"narrow"));
#endif
}

TEST(VariantHolderTest, TakesItsTypeFromTheValue) {
  const _variant_t values[] = {{}, 1L, 1, 1u, 1ul, static_cast<unsigned short>(1), L"text"};
  std::vector<int> types;
  for (const _variant_t& value : values) types.push_back(value.vt);
  EXPECT_EQ((std::vector<int>{VT_EMPTY, VT_I4, VT_INT, VT_UINT, VT_UI4, VT_UI2, VT_BSTR}), types);
  EXPECT_EQ(std::nullopt, Thrown([] { _com_util::CheckError(S_FALSE); }));
  EXPECT_EQ(E_INVALIDARG, Thrown([] { _variant_t value(1L, VT_I8); }));
  EXPECT_EQ(E_INVALIDARG, Thrown([] { _variant_t value(short{1}, VT_I4); }));
  EXPECT_EQ(E_POINTER, Thrown([] { _variant_t value(static_cast<const VARIANT*>(nullptr)); }));
  if (sizeof(long) == sizeof(LONG)) return;
  EXPECT_EQ(INT32_MAX, _variant_t(std::numeric_limits<long>::max()).lVal);
  EXPECT_EQ(INT32_MIN, _variant_t(std::numeric_limits<long>::min()).lVal);
  EXPECT_EQ(UINT32_MAX, _variant_t(std::numeric_limits<unsigned long>::max()).ulVal);
}

TEST(VariantHolderTest, AssignsConvertsAndCompares) {
  _variant_t value(L"12.6");
  EXPECT_EQ(13L, static_cast<long>(value));
  EXPECT_EQ(12.6, static_cast<double>(value));
  EXPECT_TRUE(static_cast<bool>(value));
  value = true;
  value = short{0};  // keeps VT_BOOL
  EXPECT_EQ(VT_BOOL, value.vt);
  value = 5;
  EXPECT_EQ(L"5", Chars(static_cast<_bstr_t>(value)));
  EXPECT_TRUE(value == _variant_t(5) && value != _variant_t(5L));
  EXPECT_TRUE(_variant_t(1LL << 40) != _variant_t(1LL << 41));
  EXPECT_FALSE(_variant_t() == static_cast<const VARIANT*>(nullptr));
  value = L"text";
  EXPECT_TRUE(value == _variant_t(L"text") && value != _variant_t(L"texts"));
  EXPECT_EQ(DISP_E_TYPEMISMATCH, Thrown([&] { static_cast<void>(static_cast<int>(value)); }));
}

TEST(VariantHolderTest, BalancesReferences) {
  CountedObject object;
  {
    _variant_t value(static_cast<IUnknown*>(&object));
    _variant_t copy = value;
    EXPECT_EQ(3u, object.references);
    IUnknown* extracted = copy;
    EXPECT_EQ(4u, object.references);
    _variant_t taken(extracted, false);
    _variant_t moved = std::move(copy);
    moved = L"text";
    std::vector<_variant_t> many(3, value);
    many.erase(many.begin());
  }
  EXPECT_EQ(1u, object.references);
}

TEST(VariantHolderTest, MovesRawVariants) {
  VARIANT raw = _variant_t(L"raw").Detach();
  const BSTR text = raw.bstrVal;
  _variant_t taken(raw, false);
  EXPECT_EQ(VT_EMPTY, raw.vt);
  raw = taken.Detach();
  EXPECT_EQ(VT_EMPTY, taken.vt);
  taken = L"old";
  taken.Attach(raw);
  EXPECT_EQ(text, taken.bstrVal);
  EXPECT_EQ(VT_EMPTY, taken.GetAddress()->vt);
}

}  // namespace
}  // namespace Corvane::Test
