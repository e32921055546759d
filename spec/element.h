// Reading the elements of a specification.
#ifndef CORVANE_SPEC_ELEMENT_H_
#define CORVANE_SPEC_ELEMENT_H_

#include <string_view>
#include <utility>

#include "base/letter_case.h"
#include "corvane/handles.h"
#include "corvane/platform.h"

namespace Corvane {

// Null for a null element, and for a node that has no attributes.
inline RefPtr<IXMLDOMNamedNodeMap> AttributesOf(IXMLDOMNode* element) {
  RefPtr<IXMLDOMNamedNodeMap> attributes;
  if (element && element->get_attributes(attributes.Receive()) != S_OK) attributes.Reset();
  return attributes;
}

inline RefPtr<IXMLDOMNodeList> ChildrenOf(IXMLDOMNode* element) {
  RefPtr<IXMLDOMNodeList> children;
  if (element && element->get_childNodes(children.Receive()) != S_OK) children.Reset();
  return children;
}

// The node's text, "" for an empty one; null when it cannot be read.
inline UniqueBstr TextOfNode(IXMLDOMNode* node) {
  UniqueBstr text;
  if (FAILED(node->get_text(text.Receive()))) return {};
  return text.Get() ? std::move(text) : UniqueBstr::Make(L"");
}

// Local name, without a prefix; empty for a node that has none.
inline UniqueBstr LocalNameOf(IXMLDOMNode* node) {
  UniqueBstr name;
  if (node && FAILED(node->get_baseName(name.Receive()))) name.Reset();
  return name;
}

// The local name is `name` in any ASCII case; false for a node without one.
inline bool LocalNameIs(IXMLDOMNode* node, std::wstring_view name) {
  const UniqueBstr local = LocalNameOf(node);
  return local.Get() && EqualsIgnoreAsciiCase(local.View(), name);
}

// The attribute's text; null when it is absent or cannot be read, so that an empty text is a text.
inline UniqueBstr AttributeText(IXMLDOMNamedNodeMap* attributes, const wchar_t* name) {
  if (!attributes) return {};
  const UniqueBstr key = UniqueBstr::Make(name);
  RefPtr<IXMLDOMNode> attribute;
  if (attributes->getNamedItem(key.Get(), attribute.Receive()) != S_OK || !attribute) return {};
  return TextOfNode(attribute.Get());
}

// Calls `use` for every node of the list, in order.
template <typename Use>
void ForEachNode(IXMLDOMNodeList* nodes, Use use) {
  RefPtr<IXMLDOMNode> node;
  while (nodes && nodes->nextNode(node.Receive()) == S_OK && node) use(node.Get());
}

}  // namespace Corvane

#endif  // CORVANE_SPEC_ELEMENT_H_
