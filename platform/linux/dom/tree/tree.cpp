#include "platform/linux/dom/tree/tree.h"

#include <algorithm>

#include "platform/linux/dom/tree/xml_names.h"

namespace Corvane::Dom {

Tree::Tree() {
  m_tags.push_back(MakeTag(NodeKind::kDocument, 0));
  m_nodes.push_back({kNoNode, 1, 0, 0, 0});
}

NodeId Tree::NextSibling(NodeId node) const {
  const NodeKind kind = Kind(node);
  if (kind == NodeKind::kAttribute || kind == NodeKind::kDeclarationAttribute) return kNoNode;
  const NodeId next = End(node);
  return node != 0 && next < End(Parent(node)) ? next : kNoNode;
}

NodeId Tree::PreviousSibling(NodeId node) const {
  const NodeId parent = Parent(node);
  if (parent == kNoNode || node <= parent + AttributeCount(parent) + 1) return kNoNode;
  NodeId previous = node - 1;
  while (Parent(previous) != parent) previous = Parent(previous);
  return previous;
}

NodeId Tree::LastChild(NodeId node) const {
  if (FirstChild(node) == kNoNode) return kNoNode;
  NodeId last = End(node) - 1;
  while (Parent(last) != node) last = Parent(last);
  return last;
}

NodeId Tree::DocumentElement() const {
  for (NodeId child = FirstChild(0); child != kNoNode; child = NextSibling(child)) {
    if (Kind(child) == NodeKind::kElement) return child;
  }
  return kNoNode;
}

NodeId Tree::FindAttribute(NodeId element, std::string_view name) const {
  const std::uint32_t id = m_names.Find(name);
  if (id == kNoName) return kNoNode;
  for (NodeId attribute = element + 1; attribute <= element + AttributeCount(element);
       ++attribute) {
    if (m_tags[attribute] >> kTagKindBits == id) return attribute;
  }
  return kNoNode;
}

std::string_view Tree::NodeName(NodeId node) const {
  switch (Kind(node)) {
    case NodeKind::kDocument:
      return "#document";
    case NodeKind::kText:
      return "#text";
    case NodeKind::kCdata:
      return "#cdata-section";
    case NodeKind::kComment:
      return "#comment";
    default:
      return Name(node);
  }
}

std::span<const NodeId> Tree::TextNodesFrom(NodeId begin) const {
  const auto first = std::lower_bound(m_textNodes.begin(), m_textNodes.end(), begin);
  return {first, m_textNodes.end()};
}

std::optional<std::string_view> FindNamespace(const Tree& tree, NodeId node) {
  const NodeKind kind = tree.Kind(node);
  if (kind != NodeKind::kElement && kind != NodeKind::kAttribute) return std::nullopt;
  const std::string_view name = tree.Name(node);
  const std::string_view prefix = PrefixOf(name);
  std::string declaration("xmlns");
  if (kind == NodeKind::kAttribute) {
    if (name == declaration || prefix == declaration) return std::string_view();
    if (prefix.empty()) return std::nullopt;
    node = tree.Parent(node);
  }
  if (prefix == "xml") return kXmlNamespace;
  if (!prefix.empty()) declaration.append(":").append(prefix);
  for (; tree.Kind(node) == NodeKind::kElement; node = tree.Parent(node)) {
    const NodeId found = tree.FindAttribute(node, declaration);
    if (found == kNoNode) continue;
    const std::string_view uri = tree.Value(found);
    if (uri.empty()) return std::nullopt;
    return uri;
  }
  return std::nullopt;
}

}  // namespace Corvane::Dom
