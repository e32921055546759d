#include "platform/linux/dom/dom_node.h"

#include <cwchar>
#include <string>

#include "platform/linux/dom/dom_document.h"
#include "platform/linux/dom/tree/encoding.h"

namespace Corvane::Dom {

HRESULT DomNode::QueryInterface(REFIID iid, void** object) {
  return Query(iid, {&IID_IXMLDOMNode}, object);
}

HRESULT DomElement::QueryInterface(REFIID iid, void** object) {
  return Query(iid, {&IID_IXMLDOMNode, &IID_IXMLDOMElement}, object);
}

HRESULT DomElement::get_tagName(BSTR* name) { return GetNodeName(m_handle, name); }

HRESULT DomElement::getAttribute(BSTR name, VARIANT* value) {
  if (value == nullptr || name == nullptr) return E_INVALIDARG;
  VariantInit(value);
  value->vt = VT_NULL;
  return Guard([&] {
    const NodeId attribute = FindAttribute(m_handle, name);
    return attribute == kNoNode ? S_FALSE : GetNodeValue({m_handle.document, attribute}, value);
  });
}

HRESULT MakeNode(const DocumentPtr& document, NodeId node, IXMLDOMNode** out) {
  *out = nullptr;
  if (node == kNoNode) return S_FALSE;
  const NodeHandle handle{document, node};
  switch (NodeType(handle)) {
    case NODE_DOCUMENT:
      *out = new DomDocument(document);
      break;
    case NODE_ELEMENT:
      *out = new DomElement(handle);
      break;
    default:
      *out = new DomNode(handle);
  }
  return S_OK;
}

NodeId FindAttribute(const NodeHandle& element, BSTR name) {
  std::string utf8;
  const std::wstring_view wide(name);
  if (!WideToUtf8(wide, wide.size() * sizeof(wchar_t), &utf8)) return kNoNode;
  return element.document->tree->FindAttribute(element.node, utf8);
}

}  // namespace Corvane::Dom
