// Nodes, lists and attribute maps.
#include "tests/platform/dom_fixture.h"
#include "tests/support/wine.h"

namespace Corvane::Test {
namespace {

class DomNodeTest : public DomTest {
 protected:
  // "<null>" with S_FALSE, or the text with S_OK.
  template <class Get>
  static std::wstring Ask(Get get) {
    Text text;
    const HRESULT result = get(text.Receive());
    EXPECT_EQ(text.Get() != nullptr ? S_OK : S_FALSE, result);
    return text.Value();
  }

  std::wstring AttributeNames(const wchar_t* pattern) {
    Com<IXMLDOMNode> node;
    Find(pattern, &node);
    if (!node) return L"<none>";
    Com<IXMLDOMNamedNodeMap> map;
    if (node->get_attributes(map.Receive()) != S_OK)
      return map ? L"<map without success>" : L"<no map>";
    std::wstring names;
    Com<IXMLDOMNode> attribute;
    while (map->nextNode(attribute.Receive()) == S_OK) names += NameOf(attribute.Get()) + L' ';
    return names;
  }
};

TEST_F(DomNodeTest, NamesEveryKindOfNode) {
  ASSERT_EQ(S_OK, Load(L"<r xmlns:d='urn:d'><d:U n='' d:a='' xml:lang='de'/><V "
                       L"xmlns='urn:v'/>t<![CDATA[c]]><!--m-->"
                       L"<?go x?></r>"));
  const struct {
    const wchar_t* pattern;
    DOMNodeType type;
    const wchar_t* name;
    const wchar_t* baseName;
    const wchar_t* prefix;
    const wchar_t* uri;
    const char* wineDefect = nullptr;
  } kRows[] = {
      {L"/", NODE_DOCUMENT, L"#document", L"<null>", L"<null>", L"<null>"},
      {L"r", NODE_ELEMENT, L"r", L"r", L"<null>", L"<null>"},
      {L"r/d:U", NODE_ELEMENT, L"d:U", L"U", L"d", L"urn:d"},
      {L"r/V", NODE_ELEMENT, L"V", L"V", L"<null>", L"urn:v"},
      {L"//@n", NODE_ATTRIBUTE, L"n", L"n", L"<null>", L"<null>"},
      {L"//@d:a", NODE_ATTRIBUTE, L"d:a", L"a", L"d", L"urn:d", "Wine refuses prefixed attributes"},
      {L"//@xml:lang", NODE_ATTRIBUTE, L"xml:lang", L"lang", L"xml",
       L"http://www.w3.org/XML/1998/namespace", "Wine refuses prefixed attributes"},
      {L"//@xmlns:d", NODE_ATTRIBUTE, L"xmlns:d", L"d", L"xmlns", L"",
       "Wine does not select declarations"},
      {L"//@xmlns", NODE_ATTRIBUTE, L"xmlns", L"", L"xmlns", L"",
       "Wine does not select declarations"},
      {L"r/textnode()", NODE_TEXT, L"#text", L"<null>", L"<null>", L"<null>"},
      {L"r/cdata()", NODE_CDATA_SECTION, L"#cdata-section", L"<null>", L"<null>", L"<null>",
       "Wine lacks cdata()"},
      {L"r/comment()", NODE_COMMENT, L"#comment", L"<null>", L"<null>", L"<null>"},
      {L"r/pi()", NODE_PROCESSING_INSTRUCTION, L"go", L"go", L"<null>", L"<null>"},
  };
  for (const auto& row : kRows) {
    if (SkipRow(Narrow(row.pattern).c_str(), WineDefect(row.wineDefect))) continue;
    Com<IXMLDOMNode> node;
    Find(row.pattern, &node);
    ASSERT_TRUE(node) << Narrow(row.pattern);
    DOMNodeType type = NODE_INVALID;
    EXPECT_EQ(S_OK, node->get_nodeType(&type));
    EXPECT_EQ(row.type, type) << Narrow(row.pattern);
    EXPECT_EQ(row.name, NameOf(node.Get()));
    EXPECT_EQ(row.baseName, Ask([&](BSTR* out) { return node->get_baseName(out); }))
        << Narrow(row.pattern);
    EXPECT_EQ(row.prefix, Ask([&](BSTR* out) { return node->get_prefix(out); }))
        << Narrow(row.pattern);
    EXPECT_EQ(row.uri, Ask([&](BSTR* out) { return node->get_namespaceURI(out); }))
        << Narrow(row.pattern);
  }
}

TEST_F(DomNodeTest, WalksInBothDirections) {
  ASSERT_EQ(
      S_OK,
      Load(L"<?xml version='1.0' encoding='UTF-8'?><!--c--><r a='1'> <x><y k=''/></x> t <z/></r>"));
  const auto names = [&](bool forward) {
    std::wstring all;
    Com<IXMLDOMNode> nodes[2];
    EXPECT_EQ(S_OK, forward ? m_document->get_firstChild(nodes[0].Receive())
                            : m_document->get_lastChild(nodes[0].Receive()));
    for (int at = 0; nodes[at]; at = 1 - at) {
      all += NameOf(nodes[at].Get()) + L' ';
      Com<IXMLDOMNodeList> children;
      EXPECT_EQ(S_OK, nodes[at]->get_childNodes(children.Receive()));
      LONG count = -1;
      EXPECT_EQ(S_OK, children->get_length(&count));
      all += std::to_wstring(count) + L' ';
      forward ? nodes[at]->get_nextSibling(nodes[1 - at].Receive())
              : nodes[at]->get_previousSibling(nodes[1 - at].Receive());
    }
    return all;
  };
  EXPECT_EQ(L"xml 0 #comment 0 r 3 ", names(true));
  EXPECT_EQ(L"r 3 #comment 0 xml 0 ", names(false));

  Com<IXMLDOMNode> root;
  Com<IXMLDOMNode> last;
  Com<IXMLDOMNode> text;
  Com<IXMLDOMNode> first;
  Find(L"r", &root);
  EXPECT_EQ(S_OK, root->get_lastChild(last.Receive()));
  EXPECT_EQ(L"z", NameOf(last.Get()));
  EXPECT_EQ(S_OK, last->get_previousSibling(text.Receive()));
  EXPECT_EQ(S_OK, text->get_previousSibling(first.Receive()));
  EXPECT_EQ(L"x", NameOf(first.Get()));
  Com<IXMLDOMNode> none;
  EXPECT_EQ(S_FALSE, first->get_previousSibling(none.Receive()));
  EXPECT_FALSE(none);
  EXPECT_EQ(S_FALSE, last->get_firstChild(none.Receive()));
  VARIANT value;
  VariantInit(&value);
  EXPECT_EQ(S_FALSE, root->get_nodeValue(&value));
  EXPECT_EQ(VT_NULL, value.vt);
  EXPECT_EQ(L"version=\"1.0\" encoding=\"UTF-8\"", Select(L"pi()"));
}

TEST_F(DomNodeTest, AttributesHaveNoParentAndOneText) {
  ASSERT_EQ(S_OK, Load(L"<r a=' v '/>"));
  Com<IXMLDOMNode> attribute;
  Com<IXMLDOMNode> node;
  Find(L"r/@a", &attribute);
  ASSERT_TRUE(attribute);
  EXPECT_EQ(S_FALSE, attribute->get_parentNode(node.Receive()));
  EXPECT_FALSE(node);
  EXPECT_EQ(S_OK, attribute->get_firstChild(node.Receive()));
  ASSERT_TRUE(node);
  EXPECT_EQ(L"#text", NameOf(node.Get()));
  EXPECT_EQ(L"v", TextOf(node.Get()));
  EXPECT_EQ(L" v ", TextOf(attribute.Get()));
  VARIANT value;
  EXPECT_EQ(S_OK, node->get_nodeValue(&value));
  EXPECT_STREQ(L" v ", value.bstrVal);
  VariantClear(&value);
  Com<IXMLDOMNode> up;
  EXPECT_EQ(S_OK, node->get_parentNode(up.Receive()));
  EXPECT_EQ(L"a", NameOf(up.Get()));
  EXPECT_EQ(S_OK, node->selectSingleNode(Text(L"/r").Get(), up.Receive()));
  EXPECT_EQ(S_FALSE, node->selectSingleNode(Text(L"r").Get(), up.Receive()));
}

TEST_F(DomNodeTest, ListsAttributesInDocumentOrder) {
  ASSERT_EQ(S_OK, Load(L"<?xml version='1.0'?><r b='' a=''><n:s n:b='' d='' xmlns:n='u'/><t "
                       L"xmlns='u'/>x<u/><v e:b='' d='' xmlns:e=''/></r>"));
  EXPECT_EQ(L"b a ", AttributeNames(L"r"));
  EXPECT_EQ(L"", AttributeNames(L"r/u"));
  EXPECT_EQ(L"<no map>", AttributeNames(L"/"));
  EXPECT_EQ(L"<no map>", AttributeNames(L"r/text()"));
  if (const char* reason =
          WineDefect("Wine moves declarations, and the XML declaration has no map")) {
    GTEST_SKIP() << reason;
  }
  EXPECT_EQ(L"n:b d xmlns:n ", AttributeNames(L"r/n:s"));
  EXPECT_EQ(L"xmlns ", AttributeNames(L"r/t"));
  EXPECT_EQ(L"e:b d xmlns:e ", AttributeNames(L"r/v"));
  EXPECT_EQ(L"version ", AttributeNames(L"pi()"));
}

TEST_F(DomNodeTest, FindsAttributesByTheNameAsWritten) {
  ASSERT_EQ(S_OK, Load(L"<r xmlns:n='u' n:b='1' xml:lang='de' C='2'/>"));
  Com<IXMLDOMNode> root;
  Find(L"r", &root);
  Com<IXMLDOMNamedNodeMap> map;
  ASSERT_EQ(S_OK, root->get_attributes(map.Receive()));
  const struct {
    const wchar_t* name;
    const wchar_t* text;  // null when there is no such attribute
    const char* wineDefect = nullptr;
  } kRows[] = {
      {L"n:b", L"1"},  {L"xml:lang", L"de"}, {L"C", L"2"},
      {L"b", nullptr}, {L"lang", nullptr},   {L"c", nullptr},
      {L"", nullptr},  {L"r", nullptr},      {L"xmlns:n", L"u", "Wine does not find declarations"},
  };
  for (const auto& row : kRows) {
    if (SkipRow(Narrow(row.name).c_str(), WineDefect(row.wineDefect))) continue;
    Com<IXMLDOMNode> node;
    EXPECT_EQ(row.text != nullptr ? S_OK : S_FALSE,
              map->getNamedItem(Text(row.name).Get(), node.Receive()));
    ASSERT_EQ(row.text != nullptr, static_cast<bool>(node)) << Narrow(row.name);
    if (node) {
      EXPECT_EQ(row.text, TextOf(node.Get()));
    }
  }
  Com<IXMLDOMNode> node;
  EXPECT_EQ(E_INVALIDARG, map->getNamedItem(nullptr, node.Receive()));
  EXPECT_EQ(E_INVALIDARG, map->getNamedItem(Text(L"C").Get(), nullptr));
}

TEST_F(DomNodeTest, EndsListsWithoutAnError) {
  ASSERT_EQ(S_OK, Load(L"<r><a/><b/></r>"));
  Com<IXMLDOMNode> root;
  Find(L"r", &root);
  Com<IXMLDOMNodeList> list;
  ASSERT_EQ(S_OK, root->get_childNodes(list.Receive()));
  Com<IXMLDOMNode> node;
  EXPECT_EQ(S_FALSE, list->get_item(-1, node.Receive()));
  EXPECT_EQ(S_FALSE, list->get_item(2, node.Receive()));
  EXPECT_FALSE(node);
  EXPECT_EQ(S_OK, list->get_item(1, node.Receive()));
  EXPECT_EQ(L"b", NameOf(node.Get()));
  EXPECT_EQ(S_OK, list->nextNode(node.Receive()));
  EXPECT_EQ(L"a", NameOf(node.Get())) << "get_item must not move nextNode";
  EXPECT_EQ(S_OK, list->nextNode(node.Receive()));
  EXPECT_EQ(S_FALSE, list->nextNode(node.Receive()));
  EXPECT_FALSE(node);
  EXPECT_EQ(E_INVALIDARG, list->get_item(0, nullptr));
  EXPECT_EQ(E_INVALIDARG, list->get_length(nullptr));
  EXPECT_EQ(E_INVALIDARG, root->get_text(nullptr));
}

TEST_F(DomNodeTest, OffersElementsOnlyForElements) {
  ASSERT_EQ(S_OK, Load(L"<r a='1'>t</r>"));
  Com<IXMLDOMNode> node;
  Com<IXMLDOMElement> element;
  Find(L"r", &node);
  EXPECT_EQ(S_OK,
            node->QueryInterface(IID_IXMLDOMElement, reinterpret_cast<void**>(element.Receive())));
  VARIANT value;
  VariantInit(&value);
  EXPECT_EQ(S_OK, element->getAttribute(Text(L"a").Get(), &value));
  EXPECT_EQ(VT_BSTR, value.vt);
  VariantClear(&value);
  EXPECT_EQ(S_FALSE, element->getAttribute(Text(L"b").Get(), &value));
  EXPECT_EQ(VT_NULL, value.vt);
  Find(L"r/text()", &node);
  EXPECT_EQ(E_NOINTERFACE,
            node->QueryInterface(IID_IXMLDOMElement, reinterpret_cast<void**>(element.Receive())));
  EXPECT_FALSE(element);
}

TEST_F(DomNodeTest, OutlivesItsDocument) {
  ASSERT_EQ(S_OK, Load(L"<r><a>kept</a></r>"));
  Com<IXMLDOMNode> node;
  Find(L"r/a", &node);
  m_document.Receive();
  EXPECT_EQ(L"kept", TextOf(node.Get()));
  Com<IXMLDOMDocument> owner;
  EXPECT_EQ(S_OK, node->get_ownerDocument(owner.Receive()));
  EXPECT_EQ(L"kept", TextOf(owner.Get()));
}

}  // namespace
}  // namespace Corvane::Test
