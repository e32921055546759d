// White space, `text` and node values.
#include "tests/platform/dom_fixture.h"
#include "tests/support/wine.h"

namespace Corvane::Test {
namespace {

class DomTextTest : public DomTest {};

TEST_F(DomTextTest, JoinsAndTrims) {
  const struct {
    const char* name;
    const wchar_t* xml;
    const wchar_t* pattern;
    const wchar_t* text;
    const char* wineDefect = nullptr;
  } kRows[] = {
      {"nothing", L"<r/>", L"r", L""},
      {"blank", L"<r> \t\r\n </r>", L"r", L""},
      {"siblings without white space", L"<r><a>1</a><b>2</b></r>", L"r", L"12"},
      {"siblings with white space", L"<r>\n <a>1</a>\n <b>2</b>\n</r>", L"r", L"1 2"},
      {"white space dropped twice is one blank", L"<r><a>1</a> <b> </b> <c>2</c></r>", L"r",
       L"1 2"},
      {"inner white space stays", L"<r>a  \n b</r>", L"r", L"a  \n b"},
      {"own white space of the pieces stays", L"<r><s> s1 </s><s>\ns2 s2\t</s></r>", L"r",
       L"s1 \ns2 s2"},
      {"lines",
       L"<lc "
       L"dl='1'>\n<bs>fn1.txt\n</bs>\n<pr>\nfn2.txt\n</pr>\n<fo>\n<ba>\nf1\n</ba>\n</fo>\n</lc>",
       L"/", L"fn1.txt\n \nfn2.txt\n \nf1"},
      {"comments are left out", L"<r>a<!--c-->b<?p q?></r>", L"r", L"ab"},
      {"comment between blanks", L"<r>a<!--c--> <!--d-->b</r>", L"r", L"a b"},
      {"CDATA is not trimmed", L"<r> <![CDATA[ a ]]> </r>", L"r", L" a "},
      {"empty CDATA stops trimming",
       L"<r><![CDATA[]]> This is<s> a</s>  <i>description</i><d>. </d></r>", L"r",
       L" This is a description."},
      {"empty CDATA at the end", L"<r> a <![CDATA[]]></r>", L"r", L"a "},
      {"no blank beside an empty piece", L"<r><a>1</a><![CDATA[]]> </r>", L"r", L"1"},
      {"preserved", L"<r xml:space='preserve'> <a> 1 </a> </r>", L"r", L"  1  "},
      {"preserved below", L"<r><s xml:space='preserve'> </s><a>1</a></r>", L"r/s", L" "},
      {"default ends it", L"<r xml:space='preserve'><a xml:space='default'> <b>1</b> </a></r>",
       L"r/a", L"1"},
      {"no-break space is text", L"<r>\x00A0</r>", L"r", L"\x00A0"},
      {"line ends", L"<r>a\r\nb\rc</r>", L"r", L"a\nb\nc"},
      {"references", L"<r>&lt;&amp;&gt;&quot;&apos;&#65;&#x42;</r>", L"r", L"<&>\"'AB"},
      {"text node is trimmed", L"<r> a <b/></r>", L"r/text()", L"a"},
      {"even where white space is preserved", L"<r xml:space='preserve'> a </r>", L"r/text()",
       L"a"},
      {"attribute is not", L"<r a=' v '/>", L"r/@a", L" v "},
      {"references in an attribute", L"<r a='&#10;&lt;&#9;'/>", L"r/@a", L"\n<\t"},
      {"comment keeps blanks", L"<r><!-- c --></r>", L"r/comment()", L" c "},
      {"characters beyond ASCII", L"<r>a\x00E9\x4E2D</r>", L"r", L"a\x00E9\x4E2D"},
      {"long text beyond ASCII", L"<r>0123456789abcdef0123456789abcdef\x00E9</r>", L"r",
       L"0123456789abcdef0123456789abcdef\x00E9"},
  };
  for (const auto& row : kRows) {
    if (SkipRow(row.name, WineDefect(row.wineDefect))) continue;
    ASSERT_EQ(S_OK, Load(row.xml)) << row.name;
    EXPECT_EQ(row.text, Select(row.pattern)) << row.name;
  }
}

TEST_F(DomTextTest, KeepsWhiteSpaceInValuesAndDropsBlankNodes) {
  ASSERT_EQ(S_OK, Load(L"<r> <a/> x <b/> <![CDATA[ ]]></r>"));
  EXPECT_EQ(L",x,, ", SelectAll(L"r/node()"));
  Com<IXMLDOMNode> text;
  Find(L"r/text()", &text);
  ASSERT_TRUE(text);
  VARIANT value;
  VariantInit(&value);
  EXPECT_EQ(S_OK, text->get_nodeValue(&value));
  ASSERT_EQ(VT_BSTR, value.vt);
  EXPECT_STREQ(L" x ", value.bstrVal);
  VariantClear(&value);
}

TEST_F(DomTextTest, ComparesTheTextOfLongElementsWithoutReadingThemWhole) {
  if (const char* reason = LayerOnly("checks a short cut of the layer")) GTEST_SKIP() << reason;
  const struct {
    const char* name;
    const wchar_t* pattern;
    const wchar_t* text;
  } kRows[] = {
      {"longer than the literal", L"//a[. = '12']/@k", L"<none>"},
      {"equal", L"//a[. = '1234']/@k", L"1"},
      {"a prefix of the literal", L"//a[. = '12345']/@k", L"<none>"},
      {"above a prefix", L"//a[. > '123']/@k", L"1"},
      {"equal but for case", L"//b[. $ieq$ 'AB\x00C9']/@k", L"2"},
      {"trailing white space is no part of it", L"//c[. = 'x']/@k", L"3"},
  };
  ASSERT_EQ(S_OK, Load(L"<r><a k='1'><i>12</i><i>34</i></a><b k='2'><i>a</i><i>b\x00E9</i></b>"
                       L"<c k='3'><i>x </i><i xml:space='preserve'> </i></c></r>"));
  for (const auto& row : kRows) EXPECT_EQ(row.text, Select(row.pattern)) << row.name;
}

}  // namespace
}  // namespace Corvane::Test
