// The attributes of an element, namespace declarations among them, in the order of the document.
#ifndef CORVANE_PLATFORM_LINUX_DOM_NAMED_NODE_MAP_H_
#define CORVANE_PLATFORM_LINUX_DOM_NAMED_NODE_MAP_H_

#include <utility>

#include "platform/linux/dom/node_cursor.h"

namespace Corvane::Dom {

class NamedNodeMap final : public NodeCursor<IXMLDOMNamedNodeMap> {
 public:
  explicit NamedNodeMap(NodeHandle element) : m_element(std::move(element)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  HRESULT STDMETHODCALLTYPE getNamedItem(BSTR name, IXMLDOMNode** node) override;

 private:
  const DocumentPtr& Document() const override { return m_element.document; }
  std::uint32_t Count() const override {
    return m_element.document->tree->AttributeCount(m_element.node);
  }
  NodeId At(std::uint32_t index) const override { return m_element.node + 1 + index; }

  const NodeHandle m_element;
};

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_NAMED_NODE_MAP_H_
