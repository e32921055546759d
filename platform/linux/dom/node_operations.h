// The operations of IXMLDOMNode, for every kind of node. Outputs are emptied first; E_INVALIDARG
// for a null one. No exception leaves them.
#ifndef CORVANE_PLATFORM_LINUX_DOM_NODE_OPERATIONS_H_
#define CORVANE_PLATFORM_LINUX_DOM_NODE_OPERATIONS_H_

#include "corvane/linux/dom.h"
#include "platform/linux/dom/document_data.h"

namespace Corvane::Dom {

DOMNodeType NodeType(const NodeHandle& handle);

HRESULT GetNodeName(const NodeHandle& handle, BSTR* name);
HRESULT GetNodeValue(const NodeHandle& handle, VARIANT* value);
HRESULT GetNodeType(const NodeHandle& handle, DOMNodeType* type);
HRESULT GetText(const NodeHandle& handle, BSTR* text);
HRESULT GetNamespaceUri(const NodeHandle& handle, BSTR* uri);
HRESULT GetPrefix(const NodeHandle& handle, BSTR* prefix);
HRESULT GetBaseName(const NodeHandle& handle, BSTR* name);

HRESULT GetParentNode(const NodeHandle& handle, IXMLDOMNode** parent);
HRESULT GetFirstChild(const NodeHandle& handle, IXMLDOMNode** child);
HRESULT GetLastChild(const NodeHandle& handle, IXMLDOMNode** child);
HRESULT GetPreviousSibling(const NodeHandle& handle, IXMLDOMNode** sibling);
HRESULT GetNextSibling(const NodeHandle& handle, IXMLDOMNode** sibling);
HRESULT HasChildNodes(const NodeHandle& handle, VARIANT_BOOL* has);
HRESULT GetChildNodes(const NodeHandle& handle, IXMLDOMNodeList** children);
HRESULT GetAttributes(const NodeHandle& handle, IXMLDOMNamedNodeMap** map);
HRESULT GetOwnerDocument(const NodeHandle& handle, IXMLDOMDocument** document);

HRESULT SelectNodes(const NodeHandle& handle, BSTR expression, IXMLDOMNodeList** nodes);
HRESULT SelectSingleNode(const NodeHandle& handle, BSTR expression, IXMLDOMNode** node);

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_NODE_OPERATIONS_H_
