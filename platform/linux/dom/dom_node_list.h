// The children of a node, or the result of a selection. The tree never changes, so neither does the
// list.
#ifndef CORVANE_PLATFORM_LINUX_DOM_DOM_NODE_LIST_H_
#define CORVANE_PLATFORM_LINUX_DOM_DOM_NODE_LIST_H_

#include <utility>
#include <vector>

#include "platform/linux/dom/node_cursor.h"

namespace Corvane::Dom {

class DomNodeList final : public NodeCursor<IXMLDOMNodeList> {
 public:
  DomNodeList(DocumentPtr document, std::vector<NodeId> nodes)
      : m_document(std::move(document)), m_nodes(std::move(nodes)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;

 private:
  const DocumentPtr& Document() const override { return m_document; }
  std::uint32_t Count() const override { return static_cast<std::uint32_t>(m_nodes.size()); }
  NodeId At(std::uint32_t index) const override { return m_nodes[index]; }

  const DocumentPtr m_document;
  const std::vector<NodeId> m_nodes;
};

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_DOM_NODE_LIST_H_
