// XSL patterns: what the language selects, and what it refuses.
#include "tests/platform/dom_fixture.h"
#include "tests/support/wine.h"

namespace Corvane::Test {
namespace {

constexpr const wchar_t* kShelf =
    L"<?xml version='1.0'?><shelf xmlns:p='urn:p' xmlns:q='urn:p'><!--note--><?go now?>"
    L"<book id='1' p:k='K'><t>one</t><n>1</n><a>x</a><a>y</a></book>"
    L"<book id='2'><t>two</t><n>12</n><a>y</a></book>"
    L"<box><book id='3'><t>three</t><n>2</n><p:m>mp</p:m></book><book "
    L"id='4'><t><![CDATA[four]]></t></book></box>"
    L"<d:m xmlns:d='urn:p'>md</d:m><e xmlns='urn:e'><m>me</m></e><q:m>mq</q:m></shelf>";

struct Selection {
  const char* name;
  const wchar_t* pattern;
  const wchar_t* texts;  // of all nodes
  const char* wineDefect = nullptr;
};

constexpr const char* kDotFilter = "Wine gets filters on . wrong";
constexpr const char* kTextOrder = "Wine orders text as numbers";
constexpr const char* kAnyNode = "Wine compares every node";
constexpr const char* kMixed = "Wine refuses two word operators without parentheses";
constexpr const char* kNoSuchMethod = "Wine lacks the method";

const Selection kSelections[] = {
    {"root by name", L"shelf/box/book/@id", L"3,4"},
    {"context is the document, not the root", L"box", L""},
    {"absolute", L"/shelf/book/t", L"one,two"},
    {"any depth", L"//t", L"one,two,three,four"},
    {"any depth inside a path", L"shelf//book//t", L"one,two,three,four"},
    {"any depth from the context", L".//n", L"1,12,2"},
    {"dot changes nothing", L"./shelf/./box/book/./n", L"2"},
    {"any element", L"shelf/*/t", L"one,two"},
    {"attribute", L"//book/@id", L"1,2,3,4"},
    {"attributes are no children", L"//id", L""},
    {"parent", L"//n/../@id", L"1,2,3"},
    {"parent of several children is one node", L"//a/../@id", L"1,2"},
    {"parent of the document", L"/..", L""},
    {"comment", L"//comment()", L"note"},
    {"declaration is a processing instruction", L"pi()", L"version=\"1.0\""},
    {"processing instruction", L"shelf/pi()", L"now"},
    {"text", L"//book[@id='1']/t/text()", L"one"},
    {"text takes CDATA", L"//book[@id='4']/t/text()", L"four"},
    {"textnode does not", L"//book[@id='4']/t/textnode()", L"", "Wine takes CDATA for text"},
    {"cdata", L"//t/cdata()", L"four", kNoSuchMethod},
    {"element of a name", L"//box/book/element('n')", L"2"},
    {"attribute of a name", L"//book/attribute('id')", L"1,2,3,4"},
    {"union comes in document order", L"//n | //t", L"one,1,two,12,three,2,four"},
    {"union without duplicates", L"//t | //book/t", L"one,two,three,four"},
    {"group inside a path", L"shelf/(book|box/book)/n", L"1,12,2",
     "Wine refuses a group inside a path"},
    {"operators are names elsewhere", L"//or | //and | //not", L""},

    {"a name is what is written", L"//m", L"me"},
    {"prefix as written", L"//d:m", L"md"},
    {"another prefix of the same namespace", L"//q:m", L"mq"},
    {"prefix that the document never uses", L"//zz:m", L""},
    {"prefixed attribute", L"//book[@p:k='K']/t", L"one", "Wine refuses prefixed attributes"},
    {"prefixed name as a filter", L"//book[p:m]/@id", L"3", "Wine refuses a bare prefixed name"},
    {"case counts", L"//BOOK | //Book", L""},

    {"index from 0", L"//book[0]/@id", L"1,3"},
    {"index 1", L"//book[1]/@id", L"2,4"},
    {"index beyond the last", L"//book[2]", L""},
    {"index of a group", L"(//book)[2]/@id", L"3"},
    {"index after a filter", L"//book[n][1]/@id", L"2"},
    {"filter after an index", L"//book[1][n]/@id", L"2"},
    {"index()", L"//a[index()=1]", L"y"},
    {"index() below", L"shelf/*[index() < 2]/@id", L"1,2"},
    {"end()", L"//book[end()]/@id", L"2,4"},
    {"not end()", L"//a[$not$ end()]", L"x"},
    {"first or last", L"shelf/book[index()=0 or end()]/@id", L"1,2"},
    {"huge index", L"//book[99999999999999999999]", L""},

    {"filter on a child", L"//book[n]/@id", L"1,2,3"},
    {"filter on a path", L"shelf[box/book]/book/@id", L"1,2"},
    {"filter on any depth", L"*[.//n]/box//n", L"2"},
    {"filter on an attribute", L"//*[@id]/t", L"one,two,three,four"},
    {"several filters", L"//book[n][@id='2']/t", L"two"},
    {"declarations are attributes", L"//e[@*]/*", L"me",
     "Wine does not see namespace declarations"},
    {"filter on any node", L"//.[t='two']/n", L"12", kDotFilter},
    {"filter on any node below", L"shelf//.[n='2']/t", L"three", kDotFilter},
    {"filter on the context", L"//book/.[n='12']/t", L"two", kDotFilter},

    {"equal", L"//book[t='two']/@id", L"2"},
    {"double quotes", L"//book[t=\"two\"]/@id", L"2"},
    {"not equal", L"//book[n!='1']/@id", L"2,3"},
    {"an empty side makes it false", L"//book[zz!='1']/@id", L""},
    {"not of an empty side", L"//book[not(n='1')]/@id", L"2,3,4"},
    {"$not$ takes the whole comparison", L"//book[$not$ t='two']/@id", L"1,3,4",
     "Wine negates the left side"},
    {"only the first node is compared", L"//book[a='y']/@id", L"2", kAnyNode},
    {"any node", L"//book[$any$ a='y']/@id", L"1,2"},
    {"all nodes, or none", L"//book[$all$ a='y']/@id", L"2,3,4"},
    {"$eq$ and $ne$", L"//book[t $eq$ 'one' or t $ne$ 'two']/@id", L"1,3,4"},
    {"ignoring case", L"//book[t $ieq$ 'TWO']/@id", L"2"},
    {"text is compared as text", L"//n[. > '10']", L"12,2", kTextOrder},
    {"a number makes numbers", L"//n[. > 10]", L"12"},
    {"a number with a fraction", L"//n[. $lt$ 1.5]", L"1"},
    {"attribute below a number", L"//book[@id <= 2]/t", L"one,two"},
    {"not a number", L"//t[. < 5]", L""},
    {"path on the right", L"//book[@id = n]/t", L"one"},
    {"nodeType()", L"shelf/node()[nodeType()=8]", L"note"},
    {"nodeName()", L"//*[nodeName()='q:m']", L"mq", kNoSuchMethod},
    {"value()", L"//n[value()='12']", L"12", kNoSuchMethod},
    {"method applied to a child", L"//book[t!text()='two']/@id", L"2"},

    {"and binds tighter than or", L"//book[@id='4' or @id='1' and n='9']/@id", L"4"},
    {"parentheses", L"//book[(@id='4' or @id='1') and n]/@id", L"1"},
    {"word operators", L"//book[@id='1' $or$ @id='2' $and$ n='12']/@id", L"1,2", kMixed},
    {"C operators", L"//book[@id='1' || @id='2' && n='12']/@id", L"1,2", kMixed},
    {"white space between tokens", L" // book [ @id = '2' ] / t ", L"two"},
    {"nearest ancestor", L"//book[ancestor(box)]/@id", L"3,4"},
    {"ancestor as a step", L"//n[ancestor(book)/@id='2']", L"12"},
};

class DomPatternTest : public DomTest {};

TEST_F(DomPatternTest, SelectsInDocumentOrder) {
  ASSERT_EQ(S_OK, Load(kShelf));
  for (const Selection& row : kSelections) {
    if (SkipRow(row.name, WineDefect(row.wineDefect))) continue;
    EXPECT_EQ(row.texts, SelectAll(row.pattern)) << row.name << ": " << Narrow(row.pattern);
    Select(row.pattern);
  }
}

TEST_F(DomPatternTest, SelectsTheDocumentItself) {
  ASSERT_EQ(S_OK, Load(L"<r>x</r>"));
  Com<IXMLDOMNode> node;
  Find(L"/", &node);
  ASSERT_TRUE(node);
  EXPECT_EQ(L"#document", NameOf(node.Get()));
  ASSERT_EQ(S_FALSE, Load(L"<r>"));
  Find(L"/", &node);
  ASSERT_TRUE(node);
  EXPECT_EQ(L"", TextOf(node.Get()));
  EXPECT_EQ(L"<none>", Select(L"//*"));
}

TEST_F(DomPatternTest, SelectsRelativeToAnElement) {
  ASSERT_EQ(S_OK, Load(kShelf));
  const struct {
    const char* name;
    const wchar_t* pattern;
    const wchar_t* text;
  } kRows[] = {
      {"child", L"book/t", L"three"},
      {"absolute path starts at the document", L"/shelf/book/t", L"one"},
      {"so does //", L"//t", L"one"},
      {"attribute", L"book/@id", L"3"},
      {"parent", L"../book/t", L"one"},
  };
  Com<IXMLDOMNode> box;
  Find(L"//box", &box);
  ASSERT_TRUE(box);
  for (const auto& row : kRows) {
    Com<IXMLDOMNode> node;
    EXPECT_EQ(S_OK, box->selectSingleNode(Text(row.pattern).Get(), node.Receive())) << row.name;
    EXPECT_EQ(row.text, node ? TextOf(node.Get()) : L"<none>") << row.name;
  }
  Com<IXMLDOMNode> node;
  EXPECT_EQ(S_FALSE, box->selectSingleNode(Text(L"id").Get(), node.Receive()));
}

TEST_F(DomPatternTest, RefusesWhatTheLanguageLacks) {
  constexpr const char* kXPath = "Wine answers XPath";
  constexpr const char* kLenient = "Wine takes it";
  const struct {
    const char* name;
    const wchar_t* pattern;
    const char* wineDefect = nullptr;
  } kRows[] = {
      {"empty", L""},
      {"number", L"1"},
      {"string", L"'a'"},
      {"comparison at the top", L"r='1'"},
      {"boolean at the top", L"not(r)"},
      {"unclosed filter", L"r[a"},
      {"brackets", L"bad[["},
      {"empty filter", L"r[]"},
      {"slash at the end", L"r/"},
      {"two names", L"r r"},
      {"three slashes", L"///r", kLenient},
      {"unclosed quote", L"r[.='a]", "Wine closes the quote"},
      {"literal on the left", L"r['1' = .]", kLenient},
      {"chained comparison", L"r[a = b = c]", kLenient},
      {"fraction as an index", L"r[1.5]", kLenient},
      {"literal as a filter", L"r['a']", kLenient},
      {"union of truths", L"r[a='1' | b]"},
      {"unknown method", L"//foo()"},
      {"method with a bare name", L"//element(a)"},
      {"attribute method with a bare name", L"//attribute(a)"},
      {"unclosed method", L"//text("},
      {"ancestor inside a path", L"r/ancestor(r)", kLenient},
      {"path after a value", L"r[index()/a]"},
      {"step after a group of truths", L"(r or r)/a"},
      {"wildcard with a prefix", L"p:*"},
      {"axis", L"child::r", kXPath},
      {"position()", L"r[position()=1]", kXPath},
      {"last()", L"r[last()]", kXPath},
      {"count()", L"r[count(a)=0]", kXPath},
      {"contains()", L"r[contains(., 'a')]", kXPath},
      {"string()", L"r[string(.)='1']", kXPath},
      {"true()", L"r[true()]", kXPath},
      {"addition", L"r[1+1=2]", kXPath},
      {"variable", L"$x", kXPath},
      {"word operator in capitals", L"r[a $AND$ b]"},
  };
  ASSERT_EQ(S_OK, Load(L"<r>1</r>"));
  for (const auto& row : kRows) {
    if (SkipRow(row.name, WineDefect(row.wineDefect))) continue;
    EXPECT_EQ(L"<refused>", Select(row.pattern)) << row.name;
  }
}

TEST_F(DomPatternTest, TellsWrongArgumentsFromWrongPatterns) {
  ASSERT_EQ(S_OK, Load(L"<r/>"));
  auto* const untouched = reinterpret_cast<IXMLDOMNode*>(this);
  IXMLDOMNode* node = untouched;
  EXPECT_EQ(E_INVALIDARG, m_document->selectSingleNode(nullptr, &node));
  EXPECT_EQ(untouched, node);
  EXPECT_EQ(E_INVALIDARG, m_document->selectSingleNode(Text(L"r").Get(), nullptr));
  EXPECT_EQ(E_INVALIDARG, m_document->selectNodes(nullptr, nullptr));
}

TEST_F(DomPatternTest, ComparesTheSelectionOfNestedContextsInDocumentOrder) {
  // The first `a` has its own `b` after the one of the `a` inside it.
  ASSERT_EQ(S_OK, Load(L"<r><a><a><b>inner</b></a><b>outer</b></a><b>none</b></r>"));
  EXPECT_EQ(L"inner", Select(L"//a/b"));
  EXPECT_EQ(L"inner,outer", SelectAll(L"//a/b"));
  EXPECT_EQ(L"inner,outer", SelectAll(L"//a//b"));
  EXPECT_EQ(L"inner,outer", SelectAll(L"//b[../../a]"));
}

}  // namespace
}  // namespace Corvane::Test
