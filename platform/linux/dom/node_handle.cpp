#include "platform/linux/dom/node_handle.h"

#include "base/utf8.h"
#include "platform/linux/dom/pattern/pattern_evaluator.h"
#include "platform/linux/dom/tree/xml_names.h"

namespace Corvane::Dom {

DOMNodeType NodeHandle::Type() const {
  if (IsAttributeText()) return NODE_TEXT;
  const NodeKind kind = InTree().Kind(m_node);
  return kind == NodeKind::kDeclarationAttribute ? NODE_ATTRIBUTE : static_cast<DOMNodeType>(kind);
}

NodeHandle NodeHandle::Parent() const {
  if (IsAttributeText()) return At(m_node & ~kAttributeTextBit);
  return At(Type() == NODE_ATTRIBUTE ? kNoNode : InTree().Parent(m_node));
}

NodeId NodeHandle::FirstChildId() const {
  if (IsAttributeText()) return kNoNode;
  return Type() == NODE_ATTRIBUTE ? m_node | kAttributeTextBit : InTree().FirstChild(m_node);
}

NodeHandle NodeHandle::LastChild() const {
  if (Type() == NODE_ATTRIBUTE || IsAttributeText()) return FirstChild();
  return At(InTree().LastChild(m_node));
}

NodeHandle NodeHandle::PreviousSibling() const {
  return At(IsAttributeText() ? kNoNode : InTree().PreviousSibling(m_node));
}

NodeHandle NodeHandle::NextSibling() const {
  return At(IsAttributeText() ? kNoNode : InTree().NextSibling(m_node));
}

std::vector<NodeId> NodeHandle::Children() const {
  std::vector<NodeId> children;
  NodeId child = FirstChildId();
  if (Type() == NODE_ATTRIBUTE) return {child};
  for (; child != kNoNode; child = InTree().NextSibling(child)) children.push_back(child);
  return children;
}

bool NodeHandle::HasAttributeMap() const {
  // Of the processing instructions only the XML declaration has attributes.
  return Type() == NODE_ELEMENT || (!IsAttributeText() && AttributeCount() > 0);
}

NodeHandle NodeHandle::FindAttribute(std::wstring_view name) const {
  const std::optional<std::string> utf8 = ToUtf8Strictly(name);
  return At(utf8 ? InTree().FindAttribute(m_node, *utf8) : kNoNode);
}

std::optional<std::string_view> NodeHandle::Name() const {
  return IsAttributeText() ? "#text" : InTree().NodeName(m_node);
}

std::optional<std::string_view> NodeHandle::Value() const {
  const DOMNodeType type = Type();
  if (type == NODE_DOCUMENT || type == NODE_ELEMENT) return std::nullopt;
  return InTree().Value(m_node & ~kAttributeTextBit);
}

std::optional<std::string_view> NodeHandle::NamespaceUri() const {
  if (IsAttributeText()) return std::nullopt;
  return FindNamespace(InTree(), m_node);
}

std::optional<std::string_view> NodeHandle::Prefix() const {
  const DOMNodeType type = Type();
  if (type != NODE_ELEMENT && type != NODE_ATTRIBUTE) return std::nullopt;
  const std::string_view name = InTree().Name(m_node);
  if (type == NODE_ATTRIBUTE && name == "xmlns") return name;
  const std::string_view written = PrefixOf(name);
  if (written.empty()) return std::nullopt;
  return written;
}

std::optional<std::string_view> NodeHandle::BaseName() const {
  const DOMNodeType type = Type();
  if (type == NODE_PROCESSING_INSTRUCTION) return InTree().Name(m_node);  // the target
  if (type != NODE_ELEMENT && type != NODE_ATTRIBUTE) return std::nullopt;
  const std::string_view name = InTree().Name(m_node);
  return type == NODE_ATTRIBUTE && name == "xmlns" ? "" : LocalPartOf(name);
}

std::string_view NodeHandle::Text(std::string* scratch) const {
  // Trimmed like every text node, though its attribute is not.
  if (IsAttributeText()) return TrimXmlSpace(InTree().Value(m_node & ~kAttributeTextBit));
  std::uint64_t work = 0;
  return TextOf(InTree(), m_node, kWholeText, scratch, &work);
}

std::shared_ptr<const Expression> NodeHandle::Compile(std::wstring_view pattern) const {
  std::shared_ptr<const Expression> compiled =
      m_document->patterns.Compile(pattern, InTree().Names());
  if (!compiled) throw PatternRefused();
  return compiled;
}

// The text below an attribute is not in the tree; from there only what starts at the document is
// found.
NodeId NodeHandle::Context() const { return IsAttributeText() ? kNoNode : m_node; }

std::vector<NodeId> NodeHandle::Select(std::wstring_view pattern) const {
  return PatternEvaluator(InTree()).All(*Compile(pattern), Context());
}

NodeHandle NodeHandle::SelectFirst(std::wstring_view pattern) const {
  return At(PatternEvaluator(InTree()).First(*Compile(pattern), Context()));
}

}  // namespace Corvane::Dom
