// Names, values and text.
#include <optional>
#include <string>

#include "platform/linux/dom/com_object.h"
#include "platform/linux/dom/node_operations.h"
#include "platform/linux/dom/tree/encoding.h"
#include "platform/linux/dom/tree/text.h"
#include "platform/linux/dom/tree/xml_names.h"

namespace Corvane::Dom {
namespace {

// S_FALSE and a null output when there is no text.
template <class Read>
HRESULT GiveText(BSTR* out, Read read) {
  if (out == nullptr) return E_INVALIDARG;
  *out = nullptr;
  return Guard([&] {
    const std::optional<std::string_view> text = read();
    if (!text) return S_FALSE;
    *out = Utf8ToBstr(*text);
    return S_OK;
  });
}

// Those with a qualified name, or with a target.
bool IsNamed(const NodeHandle& handle) {
  const DOMNodeType type = NodeType(handle);
  return type == NODE_ELEMENT || type == NODE_ATTRIBUTE || type == NODE_PROCESSING_INSTRUCTION;
}

}  // namespace

DOMNodeType NodeType(const NodeHandle& handle) {
  if (IsAttributeText(handle.node)) return NODE_TEXT;
  const NodeKind kind = handle.document->tree->Kind(handle.node);
  return kind == NodeKind::kDeclarationAttribute ? NODE_ATTRIBUTE : static_cast<DOMNodeType>(kind);
}

HRESULT GetNodeName(const NodeHandle& handle, BSTR* name) {
  return GiveText(name, [&]() -> std::optional<std::string_view> {
    if (IsAttributeText(handle.node)) return "#text";
    return handle.document->tree->NodeName(handle.node);
  });
}

HRESULT GetNodeValue(const NodeHandle& handle, VARIANT* value) {
  if (value == nullptr) return E_INVALIDARG;
  VariantInit(value);
  value->vt = VT_NULL;
  const DOMNodeType type = NodeType(handle);
  if (type == NODE_DOCUMENT || type == NODE_ELEMENT) return S_FALSE;
  return Guard([&] {
    value->bstrVal = Utf8ToBstr(handle.document->tree->Value(handle.node & ~kAttributeTextBit));
    value->vt = VT_BSTR;
    return S_OK;
  });
}

HRESULT GetNodeType(const NodeHandle& handle, DOMNodeType* type) {
  if (type == nullptr) return E_INVALIDARG;
  *type = NodeType(handle);
  return S_OK;
}

HRESULT GetText(const NodeHandle& handle, BSTR* text) {
  std::string scratch;
  std::uint64_t work = 0;
  return GiveText(text, [&]() -> std::optional<std::string_view> {
    const Tree& tree = *handle.document->tree;
    // Trimmed like every text node, though its attribute is not.
    if (IsAttributeText(handle.node))
      return TrimXmlSpace(tree.Value(handle.node & ~kAttributeTextBit));
    return TextOf(tree, handle.node, kWholeText, &scratch, &work);
  });
}

HRESULT GetNamespaceUri(const NodeHandle& handle, BSTR* uri) {
  return GiveText(uri, [&]() -> std::optional<std::string_view> {
    if (IsAttributeText(handle.node)) return std::nullopt;
    return FindNamespace(*handle.document->tree, handle.node);
  });
}

HRESULT GetPrefix(const NodeHandle& handle, BSTR* prefix) {
  return GiveText(prefix, [&]() -> std::optional<std::string_view> {
    const DOMNodeType type = NodeType(handle);
    if (type != NODE_ELEMENT && type != NODE_ATTRIBUTE) return std::nullopt;
    const std::string_view name = handle.document->tree->Name(handle.node);
    if (type == NODE_ATTRIBUTE && name == "xmlns") return name;
    const std::string_view written = PrefixOf(name);
    if (written.empty()) return std::nullopt;
    return written;
  });
}

HRESULT GetBaseName(const NodeHandle& handle, BSTR* name) {
  return GiveText(name, [&]() -> std::optional<std::string_view> {
    if (!IsNamed(handle)) return std::nullopt;
    const std::string_view written = handle.document->tree->Name(handle.node);
    const DOMNodeType type = NodeType(handle);
    if (type == NODE_ATTRIBUTE && written == "xmlns") return "";
    return type == NODE_PROCESSING_INSTRUCTION ? written : LocalPartOf(written);
  });
}

}  // namespace Corvane::Dom
