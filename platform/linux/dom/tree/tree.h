// A parsed document as a flat array of nodes in document order.
//
// Node 0 is the document. An element's attributes follow it directly, then its children's subtrees.
// A subtree is the index range [node, End(node)), which gives first child and next sibling without
// storing them. A node's tag holds its kind and its interned name, so that a name test is one
// comparison and `//name` one scan of a dense array. Immutable once built; any number of threads
// may read it.
#ifndef CORVANE_PLATFORM_LINUX_DOM_TREE_TREE_H_
#define CORVANE_PLATFORM_LINUX_DOM_TREE_TREE_H_

#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/dom/tree/name_table.h"

namespace Corvane::Dom {

using NodeId = std::uint32_t;
constexpr NodeId kNoNode = 0xFFFFFFFF;
constexpr std::size_t kWholeText = std::numeric_limits<std::size_t>::max();  // for TextOf

// The values are those of DOMNodeType, but for the pseudo-attributes of the XML declaration:
// attributes to the DOM, nothing to patterns.
enum class NodeKind : std::uint32_t {
  kElement = 1,
  kAttribute = 2,
  kText = 3,
  kCdata = 4,
  kInstruction = 7,
  kComment = 8,
  kDocument = 9,
  kDeclarationAttribute = 10,
};

using NodeTag = std::uint32_t;
constexpr unsigned kTagKindBits = 4;
constexpr NodeTag MakeTag(NodeKind kind, std::uint32_t name) {
  return name << kTagKindBits | static_cast<NodeTag>(kind);
}
constexpr NodeKind KindOfTag(NodeTag tag) {
  return static_cast<NodeKind>(tag & ((1u << kTagKindBits) - 1));
}

class Tree {
 public:
  Tree();  // an empty document

  NodeId End(NodeId node) const { return m_nodes[node].end; }
  NodeId Count() const { return static_cast<NodeId>(m_nodes.size()); }
  NodeTag Tag(NodeId node) const { return m_tags[node]; }
  std::span<const NodeTag> Tags() const { return m_tags; }
  NodeKind Kind(NodeId node) const { return KindOfTag(m_tags[node]); }

  // kNoNode when there is none. The parent of an attribute is its element.
  NodeId Parent(NodeId node) const { return m_nodes[node].parent; }
  NodeId FirstChild(NodeId node) const {
    const NodeId child = node + 1 + AttributeCount(node);
    return child < m_nodes[node].end ? child : kNoNode;
  }
  NodeId NextSibling(NodeId node) const;
  NodeId PreviousSibling(NodeId node) const;
  NodeId LastChild(NodeId node) const;
  NodeId DocumentElement() const;

  // The attributes of `node` are node + 1 and so on.
  std::uint32_t AttributeCount(NodeId node) const { return m_nodes[node].bits >> kFlagBits; }
  NodeId FindAttribute(NodeId element, std::string_view name) const;  // the name as written

  // UTF-8. The name as written, of elements, attributes and processing instructions; the value of
  // everything that has one, "" for documents and elements.
  std::string_view Name(NodeId node) const { return m_names.Get(m_tags[node] >> kTagKindBits); }
  std::string_view NodeName(
      NodeId node) const;  // as Name, "#text" and the like for nodes without one
  std::string_view Value(NodeId node) const {
    return std::string_view(m_values).substr(m_nodes[node].offset, m_nodes[node].length);
  }
  const NameTable& Names() const { return m_names; }

  // Whether xml:space="preserve" holds on an element.
  bool PreservesSpace(NodeId element) const {
    return (m_nodes[element].bits & kPreserveSpace) != 0;
  }
  // Whether white-space-only text was dropped between this text or CDATA node and the last
  // non-empty one before it.
  bool FollowsDroppedSpace(NodeId text) const {
    return (m_nodes[text].bits & kAfterDroppedSpace) != 0;
  }
  // The text and CDATA nodes with an index of at least `begin`, in document order, up to the end of
  // the document.
  std::span<const NodeId> TextNodesFrom(NodeId begin) const;

 private:
  friend class TreeBuilder;

  enum Flag : std::uint32_t { kPreserveSpace = 1, kAfterDroppedSpace = 2 };
  static constexpr unsigned kFlagBits = 2;
  struct Node {
    NodeId parent;
    NodeId end;
    std::uint32_t offset;  // of the value in m_values
    std::uint32_t length;  // of the value
    std::uint32_t bits;    // flags, and above them the number of attributes
  };

  std::vector<NodeTag> m_tags;
  std::vector<Node> m_nodes;
  std::vector<NodeId> m_textNodes;
  std::string m_values;
  NameTable m_names;
};

// The namespace URI of an element or attribute, nothing for a node in no namespace and for other
// kinds of node. The URI of a namespace declaration is "". Walks up the ancestors.
std::optional<std::string_view> FindNamespace(const Tree& tree, NodeId node);

// The `text` of a node: what a person would call its content.
//
// Documents and elements: their text and CDATA in document order, one blank between two non-empty
// pieces where white space was dropped, white space trimmed at both ends unless
// xml:space="preserve" holds, but never into or past a CDATA section. Text nodes: trimmed.
// Everything else: its value.
//
// The result lies in the tree or in *scratch. A caller that only compares may stop early: once more
// than `enough` bytes are certain, the rest may be missing, but the result is then longer than
// `enough`. *work grows by the effort, in about the time of visiting one node.
std::string_view TextOf(const Tree& tree, NodeId node, std::size_t enough, std::string* scratch,
                        std::uint64_t* work);

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_TREE_TREE_H_
