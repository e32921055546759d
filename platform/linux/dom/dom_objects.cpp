#include "platform/linux/dom/dom_objects.h"

#include <utility>

#include "platform/linux/dom/com_object.h"
#include "platform/linux/dom/node_handle.h"
#include "platform/linux/dom/parse_error.h"
#include "platform/linux/dom/tree/encoding.h"
#include "platform/linux/dom/tree/xml_reader.h"

namespace Corvane::Dom {
namespace {

// The object of a node, with one reference for the caller; null where there is none. Any node leads
// to any other, and to its document.
IXMLDOMNode* MakeNode(NodeHandle node);
IXMLDOMDocument* MakeDocument(DocumentPtr document);

BSTR MakeText(std::optional<std::string_view> text) { return text ? Utf8ToBstr(*text) : nullptr; }

// VT_NULL and S_FALSE where there is no text.
template <class Find>
HRESULT GiveValue(VARIANT* value, Find find) {
  if (value == nullptr) return E_INVALIDARG;
  VariantInit(value);
  value->vt = VT_NULL;
  return Guard([&] {
    const BSTR text = MakeText(find());
    if (text == nullptr) return S_FALSE;
    value->vt = VT_BSTR;
    value->bstrVal = text;
    return S_OK;
  });
}

// Access by index and in turn. The tree never changes, so neither does what is listed.
template <class Interface, const IID* iid>
class NodeCursor : public ComObject<Interface, iid> {
 public:
  HRESULT STDMETHODCALLTYPE get_item(LONG index, IXMLDOMNode** node) override {
    return Give(node, [&]() -> IXMLDOMNode* {
      if (index < 0 || static_cast<std::uint32_t>(index) >= Count()) return nullptr;
      return MakeNode(At(static_cast<std::uint32_t>(index)));
    });
  }
  HRESULT STDMETHODCALLTYPE get_length(LONG* length) override {
    if (length == nullptr) return E_INVALIDARG;
    *length = static_cast<LONG>(Count());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode** node) override {
    const HRESULT result = get_item(m_next, node);
    if (result == S_OK) ++m_next;
    return result;
  }
  HRESULT STDMETHODCALLTYPE reset() override {
    m_next = 0;
    return S_OK;
  }

 private:
  virtual std::uint32_t Count() const = 0;
  virtual NodeHandle At(std::uint32_t index) const = 0;

  LONG m_next = 0;
};

// The children of a node, or the result of a selection.
class DomNodeList final : public NodeCursor<IXMLDOMNodeList, &IID_IXMLDOMNodeList> {
 public:
  DomNodeList(DocumentPtr document, std::vector<NodeId> nodes)
      : m_document(std::move(document)), m_nodes(std::move(nodes)) {}

 private:
  std::uint32_t Count() const override { return static_cast<std::uint32_t>(m_nodes.size()); }
  NodeHandle At(std::uint32_t index) const override { return {m_document, m_nodes[index]}; }

  const DocumentPtr m_document;
  const std::vector<NodeId> m_nodes;
};

// The attributes of an element, namespace declarations among them, in the order of the document.
class NamedNodeMap final : public NodeCursor<IXMLDOMNamedNodeMap, &IID_IXMLDOMNamedNodeMap> {
 public:
  explicit NamedNodeMap(NodeHandle element) : m_element(std::move(element)) {}

  HRESULT STDMETHODCALLTYPE getNamedItem(BSTR name, IXMLDOMNode** node) override {
    if (node != nullptr) *node = nullptr;
    if (name == nullptr) return E_INVALIDARG;
    return Give(node, [&] { return MakeNode(m_element.FindAttribute(name)); });
  }

 private:
  std::uint32_t Count() const override { return m_element.AttributeCount(); }
  NodeHandle At(std::uint32_t index) const override { return m_element.Attribute(index); }

  const NodeHandle m_element;
};

// IXMLDOMNode on behalf of `Interface`, which is derived from it.
template <class Interface, const IID* iid>
class NodeObject : public ComObject<Interface, iid> {
 public:
  explicit NodeObject(NodeHandle node) : m_node(std::move(node)) {}

  HRESULT STDMETHODCALLTYPE get_nodeName(BSTR* name) override {
    return Give(name, [&] { return MakeText(m_node.Name()); });
  }
  HRESULT STDMETHODCALLTYPE get_nodeValue(VARIANT* value) override {
    return GiveValue(value, [&] { return m_node.Value(); });
  }
  HRESULT STDMETHODCALLTYPE get_nodeType(DOMNodeType* type) override {
    if (type == nullptr) return E_INVALIDARG;
    *type = m_node.Type();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_parentNode(IXMLDOMNode** parent) override {
    return Give(parent, [&] { return MakeNode(m_node.Parent()); });
  }
  HRESULT STDMETHODCALLTYPE get_childNodes(IXMLDOMNodeList** children) override {
    return Give(children, [&] { return new DomNodeList(m_node.Document(), m_node.Children()); });
  }
  HRESULT STDMETHODCALLTYPE get_firstChild(IXMLDOMNode** child) override {
    return Give(child, [&] { return MakeNode(m_node.FirstChild()); });
  }
  HRESULT STDMETHODCALLTYPE get_lastChild(IXMLDOMNode** child) override {
    return Give(child, [&] { return MakeNode(m_node.LastChild()); });
  }
  HRESULT STDMETHODCALLTYPE get_previousSibling(IXMLDOMNode** sibling) override {
    return Give(sibling, [&] { return MakeNode(m_node.PreviousSibling()); });
  }
  HRESULT STDMETHODCALLTYPE get_nextSibling(IXMLDOMNode** sibling) override {
    return Give(sibling, [&] { return MakeNode(m_node.NextSibling()); });
  }
  HRESULT STDMETHODCALLTYPE get_attributes(IXMLDOMNamedNodeMap** map) override {
    return Give(map, [&] { return m_node.HasAttributeMap() ? new NamedNodeMap(m_node) : nullptr; });
  }
  HRESULT STDMETHODCALLTYPE get_ownerDocument(IXMLDOMDocument** document) override {
    return Give(document, [&] {
      return m_node.Type() == NODE_DOCUMENT ? nullptr : MakeDocument(m_node.Document());
    });
  }
  HRESULT STDMETHODCALLTYPE hasChildNodes(VARIANT_BOOL* has) override {
    if (has == nullptr) return E_INVALIDARG;
    const bool none = m_node.FirstChild().IsNone();
    *has = none ? VARIANT_FALSE : VARIANT_TRUE;
    return none ? S_FALSE : S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_text(BSTR* text) override {
    return Give(text, [&] {
      std::string scratch;
      return Utf8ToBstr(m_node.Text(&scratch));
    });
  }
  HRESULT STDMETHODCALLTYPE selectNodes(BSTR expression, IXMLDOMNodeList** nodes) override {
    if (expression == nullptr) return E_INVALIDARG;
    return Give(nodes,
                [&] { return new DomNodeList(m_node.Document(), m_node.Select(expression)); });
  }
  HRESULT STDMETHODCALLTYPE selectSingleNode(BSTR expression, IXMLDOMNode** node) override {
    if (expression == nullptr) return E_INVALIDARG;
    return Give(node, [&] { return MakeNode(m_node.SelectFirst(expression)); });
  }
  HRESULT STDMETHODCALLTYPE get_namespaceURI(BSTR* uri) override {
    return Give(uri, [&] { return MakeText(m_node.NamespaceUri()); });
  }
  HRESULT STDMETHODCALLTYPE get_prefix(BSTR* prefix) override {
    return Give(prefix, [&] { return MakeText(m_node.Prefix()); });
  }
  HRESULT STDMETHODCALLTYPE get_baseName(BSTR* name) override {
    return Give(name, [&] { return MakeText(m_node.BaseName()); });
  }

 protected:
  NodeHandle m_node;
};

class DomNode final : public NodeObject<IXMLDOMNode, &IID_IXMLDOMNode> {
 public:
  using NodeObject::NodeObject;
};

class DomElement final : public NodeObject<IXMLDOMElement, &IID_IXMLDOMElement> {
 public:
  using NodeObject::NodeObject;

  HRESULT STDMETHODCALLTYPE get_tagName(BSTR* name) override { return get_nodeName(name); }
  HRESULT STDMETHODCALLTYPE getAttribute(BSTR name, VARIANT* value) override {
    if (name == nullptr) return E_INVALIDARG;
    return GiveValue(value, [&]() -> std::optional<std::string_view> {
      const NodeHandle attribute = m_node.FindAttribute(name);
      return attribute.IsNone() ? std::nullopt : attribute.Value();
    });
  }
};

DocumentPtr EmptyDocument() { return std::make_shared<DocumentData>(std::make_unique<Tree>()); }

class DomDocument final : public NodeObject<IXMLDOMDocument, &IID_IXMLDOMDocument> {
 public:
  explicit DomDocument(DocumentPtr document) : NodeObject({std::move(document), 0}) {}

  HRESULT STDMETHODCALLTYPE get_documentElement(IXMLDOMElement** element) override {
    return Give(element, [&] {
      NodeHandle root = m_node.DocumentElement();
      return root.IsNone() ? nullptr : new DomElement(std::move(root));
    });
  }
  HRESULT STDMETHODCALLTYPE load(VARIANT source, VARIANT_BOOL* succeeded) override {
    if (succeeded != nullptr) *succeeded = VARIANT_FALSE;
    const bool isReference = source.vt == (VT_BSTR | VT_BYREF);
    if (isReference && source.pbstrVal == nullptr) return E_INVALIDARG;
    // Streams and other documents are no sources here.
    if (source.vt == VT_UNKNOWN || source.vt == VT_DISPATCH) {
      return source.punkVal == nullptr ? E_INVALIDARG : E_NOTIMPL;
    }
    const BSTR path = isReference            ? *source.pbstrVal
                      : source.vt == VT_BSTR ? source.bstrVal
                                             : nullptr;
    return Load(ReadSource, path, succeeded);
  }
  HRESULT STDMETHODCALLTYPE loadXML(BSTR xml, VARIANT_BOOL* succeeded) override {
    if (succeeded != nullptr) *succeeded = VARIANT_FALSE;
    return Load(ReadWide, xml, succeeded);
  }
  HRESULT STDMETHODCALLTYPE get_parseError(IXMLDOMParseError** error) override {
    return Give(error, [&] { return new ParseError(m_failure); });
  }
  HRESULT STDMETHODCALLTYPE get_async(VARIANT_BOOL* async) override {
    if (async == nullptr) return E_INVALIDARG;
    *async = m_async;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE put_async(VARIANT_BOOL async) override {
    m_async = async != VARIANT_FALSE ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_preserveWhiteSpace(VARIANT_BOOL* preserve) override {
    if (preserve == nullptr) return E_INVALIDARG;
    *preserve = VARIANT_FALSE;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE put_preserveWhiteSpace(VARIANT_BOOL preserve) override {
    return preserve == VARIANT_FALSE ? S_OK : E_NOTIMPL;
  }

 private:
  using Read = std::unique_ptr<Tree>(std::wstring_view text, LoadFailure* failure);

  // Every load empties the document first.
  HRESULT Load(Read* read, BSTR text, VARIANT_BOOL* succeeded) {
    return Guard([&] {
      m_node = {EmptyDocument(), 0};
      m_failure = {};
      std::unique_ptr<Tree> tree = read(text != nullptr ? text : L"", &m_failure);
      if (!tree) return S_FALSE;
      m_node = {std::make_shared<DocumentData>(std::move(tree)), 0};
      if (succeeded != nullptr) *succeeded = VARIANT_TRUE;
      return S_OK;
    });
  }

  LoadFailure m_failure;
  VARIANT_BOOL m_async = VARIANT_TRUE;
};

IXMLDOMDocument* MakeDocument(DocumentPtr document) { return new DomDocument(std::move(document)); }

IXMLDOMNode* MakeNode(NodeHandle node) {
  if (node.IsNone()) return nullptr;
  switch (node.Type()) {
    case NODE_DOCUMENT:
      return MakeDocument(node.Document());
    case NODE_ELEMENT:
      return new DomElement(std::move(node));
    default:
      return new DomNode(std::move(node));
  }
}

}  // namespace
}  // namespace Corvane::Dom

HRESULT CreateDomDocument(REFIID iid, void** object) {
  if (object == nullptr) return E_INVALIDARG;
  *object = nullptr;
  return Corvane::Dom::Guard([&] {
    IXMLDOMDocument* document = Corvane::Dom::MakeDocument(Corvane::Dom::EmptyDocument());
    const HRESULT result = document->QueryInterface(iid, object);
    document->Release();
    return result;
  });
}
