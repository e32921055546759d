// Nodes, lists and attribute maps.
#include "tests/platform/dom_fixture.h"
#include "tests/support/cases.h"
#include "tests/support/wine.h"

namespace Corvane::Test {
namespace {

// The name of a neighbour, "<none>" without one.
std::wstring Neighbour(IXMLDOMNode* node,
                       HRESULT (STDMETHODCALLTYPE IXMLDOMNode::*get)(IXMLDOMNode**)) {
  Node found;
  return Gives(node, get, &found) ? NameOf(found.Get()) : L"<none>";
}

// "name[attribute attribute ](child child )"; checks what leads the other way round.
std::wstring Outline(IXMLDOMNode* node) {
  const std::wstring name = NameOf(node);
  std::wstring outline = name;
  RefPtr<IXMLDOMNamedNodeMap> map;
  if (Gives(node, &IXMLDOMNode::get_attributes, &map)) {
    outline += L'[';
    for (Node each; map->nextNode(each.Receive()) == S_OK;) outline += NameOf(each.Get()) + L' ';
    outline += L']';
  }
  Node child, next;
  std::wstring before = L"<none>";
  LONG count = 0, length = -1;
  for (Gives(node, &IXMLDOMNode::get_firstChild, &child); child; child = std::move(next)) {
    outline += count++ == 0 ? L"(" : L"";
    EXPECT_EQ(name, Neighbour(child.Get(), &IXMLDOMNode::get_parentNode));
    EXPECT_EQ(before, Neighbour(child.Get(), &IXMLDOMNode::get_previousSibling));
    before = NameOf(child.Get());
    outline += Outline(child.Get()) + L' ';
    Gives(child.Get(), &IXMLDOMNode::get_nextSibling, &next);
  }
  EXPECT_EQ(before, Neighbour(node, &IXMLDOMNode::get_lastChild));
  RefPtr<IXMLDOMNodeList> children;
  EXPECT_EQ(S_OK, node->get_childNodes(children.Receive()));
  EXPECT_EQ(S_OK, children->get_length(&length));
  EXPECT_EQ(count, length);
  return outline + (count > 0 ? L")" : L"");
}

TEST_F(DomTest, LeadsFromEachNodeToItsNeighbours) {
  for (const Case& c : CasesHere("platform/dom_outlines.txt")) {
    SCOPED_TRACE(c.Where());
    ASSERT_EQ(S_OK, Load(c.Wide("xml")));
    EXPECT_EQ(c.Wide("outline"), Outline(m_document.Get()));
  }
}

TEST_F(DomTest, NamesEveryKindOfNode) {
  ASSERT_EQ(S_OK, Load(L"<r xmlns:d='urn:d'><d:U n='' d:a='' xml:lang='de'/><V "
                       L"xmlns='urn:v'/>t<![CDATA[c]]><!--m--><?go x?></r>"));
  for (const Case& c : CasesHere("platform/dom_nodes.txt")) {
    SCOPED_TRACE(c.Where());
    const Node node = Find(c.Wide("pattern"));
    ASSERT_TRUE(node);
    DOMNodeType type = NODE_INVALID;
    EXPECT_EQ(S_OK, node->get_nodeType(&type));
    EXPECT_EQ(c.Number("type"), type);
    EXPECT_EQ(c.Wide("name"), NameOf(node.Get()));
    EXPECT_EQ(c.Wide("base"), Ask(node.Get(), &IXMLDOMNode::get_baseName));
    EXPECT_EQ(c.Wide("prefix"), Ask(node.Get(), &IXMLDOMNode::get_prefix));
    EXPECT_EQ(c.Wide("uri"), Ask(node.Get(), &IXMLDOMNode::get_namespaceURI));
    UniqueVariant value;
    const HRESULT result = node->get_nodeValue(value.Receive());
    EXPECT_EQ(result, value.Get().vt == VT_BSTR ? S_OK : S_FALSE);
    EXPECT_EQ(c.Wide("value"), result == S_OK ? value.Get().bstrVal : L"<null>");
  }
}

TEST_F(DomTest, AttributesHaveNoParentAndOneText) {
  ASSERT_EQ(S_OK, Load(L"<r a=' v '/>"));
  const Node attribute = Find(L"r/@a");
  ASSERT_TRUE(attribute);
  EXPECT_EQ(L"a(#text )", Outline(attribute.Get()));
  EXPECT_EQ(L"<none>", Neighbour(attribute.Get(), &IXMLDOMNode::get_parentNode));
  EXPECT_EQ(L" v ", TextOf(attribute.Get()));
  Node text;
  ASSERT_TRUE(Gives(attribute.Get(), &IXMLDOMNode::get_firstChild, &text));
  EXPECT_EQ(L"v", TextOf(text.Get()));
  UniqueVariant value;
  EXPECT_EQ(S_OK, text->get_nodeValue(value.Receive()));
  EXPECT_STREQ(L" v ", value.Get().bstrVal);
  EXPECT_EQ(L"", Texts(L"/r", text.Get()));
  EXPECT_EQ(L"<none>", Texts(L"r", text.Get()));
}

TEST_F(DomTest, FindsAttributesByTheNameAsWritten) {
  ASSERT_EQ(S_OK, Load(L"<r xmlns:n='u' n:b='1' xml:lang='de' C='2'/>"));
  RefPtr<IXMLDOMNamedNodeMap> map;
  ASSERT_EQ(S_OK, Find(L"r")->get_attributes(map.Receive()));
  const auto find = [&map](const wchar_t* name) {
    Node node;
    const HRESULT found = map->getNamedItem(Bstr(name).Get(), node.Receive());
    EXPECT_EQ(node ? S_OK : S_FALSE, found);
    return node ? TextOf(node.Get()) : L"<none>";
  };
  EXPECT_EQ(L"1", find(L"n:b"));
  EXPECT_EQ(L"de", find(L"xml:lang"));
  EXPECT_EQ(L"2", find(L"C"));
  for (const wchar_t* none : {L"b", L"lang", L"c", L"", L"r"}) EXPECT_EQ(L"<none>", find(none));
  Node node;
  EXPECT_EQ(E_INVALIDARG, map->getNamedItem(nullptr, node.Receive()));
  EXPECT_EQ(E_INVALIDARG, map->getNamedItem(Bstr(L"C").Get(), nullptr));
  if (UnderWine()) GTEST_SKIP() << "Wine does not find declarations";
  EXPECT_EQ(L"u", find(L"xmlns:n"));
}

TEST_F(DomTest, EndsListsWithoutAnError) {
  ASSERT_EQ(S_OK, Load(L"<r><a/><b/></r>"));
  const Node root = Find(L"r");
  RefPtr<IXMLDOMNodeList> list;
  ASSERT_EQ(S_OK, root->get_childNodes(list.Receive()));
  Node node;
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

TEST_F(DomTest, OffersElementsOnlyForElements) {
  ASSERT_EQ(S_OK, Load(L"<r a='1'>t</r>"));
  RefPtr<IXMLDOMElement> element;
  EXPECT_EQ(S_OK, Find(L"r")->QueryInterface(IID_IXMLDOMElement, element.ReceiveVoid()));
  UniqueVariant value;
  EXPECT_EQ(S_OK, element->getAttribute(Bstr(L"a").Get(), value.Receive()));
  EXPECT_EQ(VT_BSTR, value.Get().vt);
  EXPECT_EQ(S_FALSE, element->getAttribute(Bstr(L"b").Get(), value.Receive()));
  EXPECT_EQ(VT_NULL, value.Get().vt);
  const Node text = Find(L"r/text()");
  EXPECT_EQ(E_NOINTERFACE, text->QueryInterface(IID_IXMLDOMElement, element.ReceiveVoid()));
  EXPECT_FALSE(element);
}

TEST_F(DomTest, NodesOutliveTheirDocument) {
  ASSERT_EQ(S_OK, Load(L"<r><a>kept</a></r>"));
  const Node node = Find(L"r/a");
  m_document.Reset();
  EXPECT_EQ(L"kept", TextOf(node.Get()));
  RefPtr<IXMLDOMDocument> owner;
  EXPECT_EQ(S_OK, node->get_ownerDocument(owner.Receive()));
  EXPECT_EQ(L"kept", TextOf(owner.Get()));
}

}  // namespace
}  // namespace Corvane::Test
