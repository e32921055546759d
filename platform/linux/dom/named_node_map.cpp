#include "platform/linux/dom/named_node_map.h"

namespace Corvane::Dom {

HRESULT NamedNodeMap::QueryInterface(REFIID iid, void** object) {
  return Query(iid, {&IID_IXMLDOMNamedNodeMap}, object);
}

HRESULT NamedNodeMap::getNamedItem(BSTR name, IXMLDOMNode** node) {
  if (node == nullptr) return E_INVALIDARG;
  *node = nullptr;
  if (name == nullptr) return E_INVALIDARG;
  return Guard([&] { return MakeNode(m_element.document, FindAttribute(m_element, name), node); });
}

}  // namespace Corvane::Dom
