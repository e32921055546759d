// From a node to its neighbours.
#include "platform/linux/dom/com_object.h"
#include "platform/linux/dom/dom_document.h"
#include "platform/linux/dom/dom_node.h"
#include "platform/linux/dom/dom_node_list.h"
#include "platform/linux/dom/named_node_map.h"
#include "platform/linux/dom/node_operations.h"

namespace Corvane::Dom {
namespace {

bool IsAttribute(const NodeHandle& handle) { return NodeType(handle) == NODE_ATTRIBUTE; }

NodeId FirstChild(const NodeHandle& handle) {
  if (IsAttributeText(handle.node)) return kNoNode;
  return IsAttribute(handle) ? handle.node | kAttributeTextBit
                             : handle.document->tree->FirstChild(handle.node);
}

NodeId LastChild(const NodeHandle& handle) {
  if (IsAttributeText(handle.node) || IsAttribute(handle)) return FirstChild(handle);
  return handle.document->tree->LastChild(handle.node);
}

template <class Find>
HRESULT GiveNode(const NodeHandle& handle, IXMLDOMNode** out, Find find) {
  if (out == nullptr) return E_INVALIDARG;
  *out = nullptr;
  return Guard([&] { return MakeNode(handle.document, find(), out); });
}

}  // namespace

HRESULT GetParentNode(const NodeHandle& handle, IXMLDOMNode** parent) {
  return GiveNode(handle, parent, [&] {
    if (IsAttributeText(handle.node)) return handle.node & ~kAttributeTextBit;
    return IsAttribute(handle) ? kNoNode : handle.document->tree->Parent(handle.node);
  });
}

HRESULT GetFirstChild(const NodeHandle& handle, IXMLDOMNode** child) {
  return GiveNode(handle, child, [&] { return FirstChild(handle); });
}

HRESULT GetLastChild(const NodeHandle& handle, IXMLDOMNode** child) {
  return GiveNode(handle, child, [&] { return LastChild(handle); });
}

HRESULT GetPreviousSibling(const NodeHandle& handle, IXMLDOMNode** sibling) {
  return GiveNode(handle, sibling, [&] {
    return IsAttributeText(handle.node) ? kNoNode
                                        : handle.document->tree->PreviousSibling(handle.node);
  });
}

HRESULT GetNextSibling(const NodeHandle& handle, IXMLDOMNode** sibling) {
  return GiveNode(handle, sibling, [&] {
    return IsAttributeText(handle.node) ? kNoNode : handle.document->tree->NextSibling(handle.node);
  });
}

HRESULT HasChildNodes(const NodeHandle& handle, VARIANT_BOOL* has) {
  if (has == nullptr) return E_INVALIDARG;
  const bool any = FirstChild(handle) != kNoNode;
  *has = any ? VARIANT_TRUE : VARIANT_FALSE;
  return any ? S_OK : S_FALSE;
}

HRESULT GetChildNodes(const NodeHandle& handle, IXMLDOMNodeList** children) {
  if (children == nullptr) return E_INVALIDARG;
  *children = nullptr;
  return Guard([&] {
    std::vector<NodeId> nodes;
    for (NodeId child = FirstChild(handle); child != kNoNode;
         child = IsAttributeText(child) ? kNoNode : handle.document->tree->NextSibling(child)) {
      nodes.push_back(child);
    }
    *children = new DomNodeList(handle.document, std::move(nodes));
    return S_OK;
  });
}

HRESULT GetAttributes(const NodeHandle& handle, IXMLDOMNamedNodeMap** map) {
  if (map == nullptr) return E_INVALIDARG;
  *map = nullptr;
  return Guard([&] {
    // Of the processing instructions only the XML declaration has attributes.
    const bool hasMap =
        !IsAttributeText(handle.node) && (NodeType(handle) == NODE_ELEMENT ||
                                          handle.document->tree->AttributeCount(handle.node) > 0);
    if (!hasMap) return S_FALSE;
    *map = new NamedNodeMap(handle);
    return S_OK;
  });
}

HRESULT GetOwnerDocument(const NodeHandle& handle, IXMLDOMDocument** document) {
  if (document == nullptr) return E_INVALIDARG;
  *document = nullptr;
  if (NodeType(handle) == NODE_DOCUMENT) return S_FALSE;
  return Guard([&] {
    *document = new DomDocument(handle.document);
    return S_OK;
  });
}

}  // namespace Corvane::Dom
