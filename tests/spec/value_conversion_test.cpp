#include "corvane/data_item_spec.h"
#include "tests/support/dom.h"

namespace Corvane::Test {
namespace {

using ValueConversionTest = ParsingTest;

TEST_F(ValueConversionTest, FollowsTheTable) {
  static const struct {
    const char* name;
    const wchar_t* table;  // children of the item
    const wchar_t* raw;
    const wchar_t* converted;
  } kCases[] = {
      {"no table", L"", L"raw", L"raw"},
      {"any case", L"<Conversion Contains='IDLE' Value='Ready'/>", L"Idle", L"Ready"},
      {"any case of the element and its prefix",
       L"<q:CONVERSION xmlns:q='u' Contains='idle' Value='Ready'/>", L"IDLE", L"Ready"},
      {"all letters fold", L"<Conversion Contains='\u00C4RGER' Value='A'/>", L"\u00E4rger", L"A"},
      {"later entry of the same match wins",
       L"<Conversion Contains='a' Value='1'/><Conversion Contains='A' Value='2'/>", L"a", L"2"},
      {"an attribute missing", L"<Conversion Contains='a'/><Conversion Value='b'/>", L"a", L"a"},
      {"all words of a list", L"<Conversion Contains='jam,tray' Value='J'/>", L"Jam in Tray 2",
       L"J"},
      {"a word lacking", L"<Conversion Contains='jam,tray' Value='J'/>", L"jam", L"jam"},
      {"trailing comma is an empty word", L"<Conversion Contains='jam,' Value='J'/>", L"a jam",
       L"J"},
      {"word of a raw list", L"<Conversion Contains='low' Value='L'/>", L"toner,low", L"L"},
      {"part of a word of a raw list", L"<Conversion Contains='low' Value='L'/>", L"toner,lower",
       L"toner,lower"},
      {"part of a raw text", L"<Conversion Contains='low' Value='L'/>", L"toner low", L"toner low"},
      {"list matches, then a word does not",
       L"<Conversion Contains='a,b' Value='X'/><Conversion Contains='c' Value='Y'/>"
       L"<Conversion Contains='default' Value='D'/>",
       L"a b c", L"X"},
      {"greatest of several lists",
       L"<Conversion Contains='b,a' Value='2'/>"
       L"<Conversion Contains='a,b' Value='1'/>",
       L"ab", L"2"},
      {"whole value after a list",
       L"<Conversion Contains='a,b' Value='1'/>"
       L"<Conversion Contains='ab' Value='2'/>",
       L"ab", L"2"},
      {"whole value before a list stops",
       L"<Conversion Contains='ab' Value='1'/><Conversion Contains='b,a' Value='2'/>", L"ab", L"1"},
      {"default", L"<Conversion Contains='DEFAULT' Value='D'/>", L"other", L"D"},
      {"empty match text", L"<Conversion Contains='' Value='none'/>", L"", L"none"},
      {"empty match text, empty word", L"<Conversion Contains='' Value='none'/>", L"a,,b", L"none"},
      {"code-unit order",
       L"<Conversion Contains='\U0001F600,' Value='pair'/><Conversion Contains='\uFF5E,' "
       L"Value='last'/>",
       L"\U0001F600\uFF5E", L"last"},
  };
  for (const auto& c : kCases) {
    const std::wstring xml = std::wstring(L"<i Name='n'>") + c.table + L"</i>";
    const DataItemSpec item(Element(xml.c_str()).Get());
    EXPECT_EQ(c.converted, TextOf(item.ConvertValue(_variant_t(c.raw)))) << c.name;
  }
}

_variant_t Integer(std::int32_t number) {
  _variant_t value;
  value.vt = VT_I4;
  value.lVal = number;
  return value;
}

TEST_F(ValueConversionTest, MatchesIntegersAsDecimalText) {
  const DataItemSpec item(Element(L"<i><Conversion Contains='3' Value='Ready'/>"
                                  L"<Conversion Contains='-2147483648' Value='Least'/></i>")
                              .Get());
  EXPECT_EQ(L"Ready", TextOf(item.ConvertValue(Integer(3))));
  EXPECT_EQ(L"Least", TextOf(item.ConvertValue(Integer(-2147483647 - 1))));
  const _variant_t unchanged = item.ConvertValue(Integer(30));
  EXPECT_EQ(VT_I4, unchanged.vt);
  EXPECT_EQ(30, unchanged.lVal);
}

TEST_F(ValueConversionTest, OtherTypesMatchAsEmptyText) {
  const DataItemSpec plain(Element(L"<i><Conversion Contains='true' Value='T'/></i>").Get());
  const _variant_t unchanged = plain.ConvertValue(_variant_t(true));
  EXPECT_EQ(VT_BOOL, unchanged.vt);
  EXPECT_EQ(VARIANT_TRUE, unchanged.boolVal);
  const DataItemSpec fallback(Element(L"<i><Conversion Contains='default' Value='D'/></i>").Get());
  EXPECT_EQ(L"D", TextOf(fallback.ConvertValue(_variant_t(true))));
  const DataItemSpec empty(Element(L"<i><Conversion Contains='' Value='E'/></i>").Get());
  EXPECT_EQ(L"E", TextOf(empty.ConvertValue(_variant_t())));
}

TEST_F(ValueConversionTest, EmptyReplacementIsANullString) {
  const DataItemSpec item(Element(L"<i><Conversion Contains='x' Value=''/></i>").Get());
  const _variant_t value = item.ConvertValue(_variant_t(L"x"));
  EXPECT_EQ(VT_BSTR, value.vt);
  EXPECT_EQ(nullptr, value.bstrVal);
}

}  // namespace
}  // namespace Corvane::Test
