// The node objects: thin, made on demand over a tree that they keep alive.
#ifndef CORVANE_PLATFORM_LINUX_DOM_DOM_NODE_H_
#define CORVANE_PLATFORM_LINUX_DOM_DOM_NODE_H_

#include <utility>

#include "platform/linux/dom/com_object.h"
#include "platform/linux/dom/node_operations.h"

namespace Corvane::Dom {

// IXMLDOMNode on behalf of `Interface`, which is derived from it.
template <class Interface>
class NodeObject : public ComObject<Interface> {
 public:
  explicit NodeObject(NodeHandle handle) : m_handle(std::move(handle)) {}

  HRESULT STDMETHODCALLTYPE get_nodeName(BSTR* name) override {
    return GetNodeName(m_handle, name);
  }
  HRESULT STDMETHODCALLTYPE get_nodeValue(VARIANT* value) override {
    return GetNodeValue(m_handle, value);
  }
  HRESULT STDMETHODCALLTYPE get_nodeType(DOMNodeType* type) override {
    return GetNodeType(m_handle, type);
  }
  HRESULT STDMETHODCALLTYPE get_parentNode(IXMLDOMNode** parent) override {
    return GetParentNode(m_handle, parent);
  }
  HRESULT STDMETHODCALLTYPE get_childNodes(IXMLDOMNodeList** children) override {
    return GetChildNodes(m_handle, children);
  }
  HRESULT STDMETHODCALLTYPE get_firstChild(IXMLDOMNode** child) override {
    return GetFirstChild(m_handle, child);
  }
  HRESULT STDMETHODCALLTYPE get_lastChild(IXMLDOMNode** child) override {
    return GetLastChild(m_handle, child);
  }
  HRESULT STDMETHODCALLTYPE get_previousSibling(IXMLDOMNode** sibling) override {
    return GetPreviousSibling(m_handle, sibling);
  }
  HRESULT STDMETHODCALLTYPE get_nextSibling(IXMLDOMNode** sibling) override {
    return GetNextSibling(m_handle, sibling);
  }
  HRESULT STDMETHODCALLTYPE get_attributes(IXMLDOMNamedNodeMap** map) override {
    return GetAttributes(m_handle, map);
  }
  HRESULT STDMETHODCALLTYPE get_ownerDocument(IXMLDOMDocument** document) override {
    return GetOwnerDocument(m_handle, document);
  }
  HRESULT STDMETHODCALLTYPE hasChildNodes(VARIANT_BOOL* has) override {
    return HasChildNodes(m_handle, has);
  }
  HRESULT STDMETHODCALLTYPE get_text(BSTR* text) override { return GetText(m_handle, text); }
  HRESULT STDMETHODCALLTYPE selectNodes(BSTR expression, IXMLDOMNodeList** nodes) override {
    return SelectNodes(m_handle, expression, nodes);
  }
  HRESULT STDMETHODCALLTYPE selectSingleNode(BSTR expression, IXMLDOMNode** node) override {
    return SelectSingleNode(m_handle, expression, node);
  }
  HRESULT STDMETHODCALLTYPE get_namespaceURI(BSTR* uri) override {
    return GetNamespaceUri(m_handle, uri);
  }
  HRESULT STDMETHODCALLTYPE get_prefix(BSTR* prefix) override {
    return GetPrefix(m_handle, prefix);
  }
  HRESULT STDMETHODCALLTYPE get_baseName(BSTR* name) override {
    return GetBaseName(m_handle, name);
  }

 protected:
  NodeHandle m_handle;
};

class DomNode final : public NodeObject<IXMLDOMNode> {
 public:
  using NodeObject::NodeObject;
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
};

class DomElement final : public NodeObject<IXMLDOMElement> {
 public:
  using NodeObject::NodeObject;
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  HRESULT STDMETHODCALLTYPE get_tagName(BSTR* name) override;
  HRESULT STDMETHODCALLTYPE getAttribute(BSTR name, VARIANT* value) override;
};

// The object for a node, with one reference for the caller; S_FALSE and null for kNoNode. Throws
// std::bad_alloc.
HRESULT MakeNode(const DocumentPtr& document, NodeId node, IXMLDOMNode** out);
// The attribute of that name as written, kNoNode when there is none.
NodeId FindAttribute(const NodeHandle& element, BSTR name);

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_DOM_NODE_H_
