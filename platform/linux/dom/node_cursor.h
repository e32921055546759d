// Access by index and in turn, which lists and maps of nodes share.
#ifndef CORVANE_PLATFORM_LINUX_DOM_NODE_CURSOR_H_
#define CORVANE_PLATFORM_LINUX_DOM_NODE_CURSOR_H_

#include "platform/linux/dom/com_object.h"
#include "platform/linux/dom/dom_node.h"

namespace Corvane::Dom {

// `Interface` is IXMLDOMNodeList or IXMLDOMNamedNodeMap.
template <class Interface>
class NodeCursor : public ComObject<Interface> {
 public:
  HRESULT STDMETHODCALLTYPE get_item(LONG index, IXMLDOMNode** node) override {
    if (node == nullptr) return E_INVALIDARG;
    *node = nullptr;
    if (index < 0 || static_cast<std::uint32_t>(index) >= Count()) return S_FALSE;
    return Guard([&] { return MakeNode(Document(), At(static_cast<std::uint32_t>(index)), node); });
  }
  HRESULT STDMETHODCALLTYPE get_length(LONG* length) override {
    if (length == nullptr) return E_INVALIDARG;
    *length = static_cast<LONG>(Count());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode** node) override {
    const HRESULT result = get_item(m_next, node);
    if (result == S_OK) ++m_next;
    return result;
  }
  HRESULT STDMETHODCALLTYPE reset() override {
    m_next = 0;
    return S_OK;
  }

 protected:
  virtual const DocumentPtr& Document() const = 0;
  virtual std::uint32_t Count() const = 0;
  virtual NodeId At(std::uint32_t index) const = 0;

 private:
  LONG m_next = 0;
};

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_NODE_CURSOR_H_
