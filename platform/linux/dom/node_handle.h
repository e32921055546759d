// A node as the interface sees it, and all that the interface tells of it.
#ifndef CORVANE_PLATFORM_LINUX_DOM_NODE_HANDLE_H_
#define CORVANE_PLATFORM_LINUX_DOM_NODE_HANDLE_H_

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "corvane/linux/dom.h"
#include "platform/linux/dom/pattern/pattern_cache.h"
#include "platform/linux/dom/tree/tree.h"

namespace Corvane::Dom {

// What the nodes of one load share: the tree, and the patterns compiled for it.
struct DocumentData {
  explicit DocumentData(std::unique_ptr<const Tree> loaded) : tree(std::move(loaded)) {}

  const std::unique_ptr<const Tree> tree;
  PatternCache patterns;
};

// Keeps a load alive after its document took another one.
using DocumentPtr = std::shared_ptr<DocumentData>;

// Thrown for an expression that does not parse, or is no set of nodes.
struct PatternRefused {};

// Every operation may throw std::bad_alloc. Where there is no such node: kNoNode; where the
// interface has no text: nothing. Texts are UTF-8 and live as long as the document.
class NodeHandle {
 public:
  NodeHandle(DocumentPtr document, NodeId node) : m_document(std::move(document)), m_node(node) {}

  const DocumentPtr& Document() const { return m_document; }
  NodeHandle At(NodeId node) const { return {m_document, node}; }
  bool IsNone() const { return m_node == kNoNode; }

  DOMNodeType Type() const;
  NodeHandle Parent() const;
  NodeHandle FirstChild() const { return At(FirstChildId()); }
  NodeHandle LastChild() const;
  NodeHandle PreviousSibling() const;
  NodeHandle NextSibling() const;
  NodeHandle DocumentElement() const { return At(m_document->tree->DocumentElement()); }
  std::vector<NodeId> Children() const;

  // The attributes are the AttributeCount() nodes that follow this one. The name is as written.
  bool HasAttributeMap() const;
  std::uint32_t AttributeCount() const { return m_document->tree->AttributeCount(m_node); }
  NodeHandle Attribute(std::uint32_t index) const { return At(m_node + 1 + index); }
  NodeHandle FindAttribute(std::wstring_view name) const;

  std::optional<std::string_view> Name() const;
  std::optional<std::string_view> Value() const;
  std::optional<std::string_view> NamespaceUri() const;
  std::optional<std::string_view> Prefix() const;
  std::optional<std::string_view> BaseName() const;
  std::string_view Text(std::string* scratch) const;  // lies in the document or in *scratch

  // Throw PatternRefused, and SelectionTooCostly.
  std::vector<NodeId> Select(std::wstring_view pattern) const;
  NodeHandle SelectFirst(std::wstring_view pattern) const;

 private:
  // The text node that every attribute has as its child is not in the tree: this bit on the
  // attribute's number stands for it. Trees have far fewer nodes.
  static constexpr NodeId kAttributeTextBit = 0x80000000;

  const Tree& InTree() const { return *m_document->tree; }
  bool IsAttributeText() const { return (m_node & kAttributeTextBit) != 0; }
  NodeId FirstChildId() const;
  std::shared_ptr<const Expression> Compile(std::wstring_view pattern) const;
  NodeId Context() const;

  DocumentPtr m_document;
  NodeId m_node;
};

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_NODE_HANDLE_H_
