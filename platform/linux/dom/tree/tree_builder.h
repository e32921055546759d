// Builds a tree from the events of a reader, enforcing what a plain XML 1.0 reader leaves open:
// namespaces, the white space that is dropped, and the limits of dom.h. The first refusal ends the
// work: no event may follow it.
#ifndef CORVANE_PLATFORM_LINUX_DOM_TREE_TREE_BUILDER_H_
#define CORVANE_PLATFORM_LINUX_DOM_TREE_TREE_BUILDER_H_

#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/dom/tree/namespace_scopes.h"
#include "platform/linux/dom/tree/tree.h"

namespace Corvane::Dom {

class TreeBuilder {
 public:
  explicit TreeBuilder(std::size_t documentBytes);

  // Events, in document order; all text is valid UTF-8. `attributes` alternates names and values up
  // to a null pointer.
  void Declaration(const char* version, const char* encoding, int standalone);
  void StartElement(const char* name, const char** attributes);
  void EndElement();
  void Text(std::string_view text);
  void StartCdata();
  void EndCdata();
  void Comment(std::string_view text);
  void Instruction(const char* target, std::string_view text);
  void Refuse(const char* reason);  // `reason` is never freed

  // Null while nothing was refused.
  const char* Refusal() const { return m_refusal; }
  std::unique_ptr<Tree> Take() { return std::move(m_tree); }

 private:
  NodeId Append(NodeKind kind, std::uint32_t name);
  NodeId AppendValue(NodeKind kind, std::uint32_t name, std::string_view value);
  void AddAttributes(NodeId element, const char** attributes);
  void CheckPrefixes(NodeId element, std::uint32_t count);
  bool IsBound(const QualifiedName& name) const;
  void FlushText();
  void AppendText(NodeKind kind);

  std::unique_ptr<Tree> m_tree;
  NamespaceScopes m_scopes;
  std::uint32_t m_xmlSpace;
  NodeId m_current = 0;  // the innermost open element, or the document
  std::uint32_t m_depth = 0;
  std::size_t m_textStart = 0;  // the running text is the tail of the value pool from here
  bool m_droppedSpace = false;  // since the last non-empty text
  const char* m_refusal = nullptr;
  std::vector<std::pair<std::uint32_t, std::uint32_t>>
      m_expanded;  // URI and local name of prefixed attributes
};

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_TREE_TREE_BUILDER_H_
