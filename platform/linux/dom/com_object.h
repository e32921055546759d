// What every COM object of the DOM needs: its reference count and interfaces, and a wall that no
// exception passes.
#ifndef CORVANE_PLATFORM_LINUX_DOM_COM_OBJECT_H_
#define CORVANE_PLATFORM_LINUX_DOM_COM_OBJECT_H_

#include <atomic>
#include <type_traits>

#include "base/exception_wall.h"
#include "corvane/linux/dom.h"

namespace Corvane::Dom {

// Runs `action`; what it throws becomes a result code.
template <class Action>
HRESULT Guard(Action action) {
  return CatchAll(action, [](Thrown why) -> HRESULT {
    return why == Thrown::kNoMemory ? E_OUTOFMEMORY : E_FAIL;
  });
}

// An output of the interface, a BSTR or an object: what `make` returns. S_FALSE when that is null.
template <class Out, class Make>
HRESULT Give(Out** out, Make make) {
  if (out == nullptr) return E_INVALIDARG;
  *out = nullptr;
  return Guard([&] {
    *out = make();
    return *out != nullptr ? S_OK : S_FALSE;
  });
}

// Born with one reference, its maker's. `Interface`, whose identifier is *iid, is derived from
// IDispatch, and perhaps from IXMLDOMNode.
template <class Interface, const IID* iid>
class ComObject : public Interface {
 public:
  ComObject() = default;
  ComObject(const ComObject&) = delete;
  ComObject& operator=(const ComObject&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** object) override {
    if (object == nullptr) return E_INVALIDARG;
    *object = nullptr;
    const bool isNode = std::is_base_of_v<IXMLDOMNode, Interface> && wanted == IID_IXMLDOMNode;
    if (!isNode && wanted != *iid && wanted != IID_IUnknown && wanted != IID_IDispatch) {
      return E_NOINTERFACE;
    }
    AddRef();
    *object = static_cast<Interface*>(this);
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override {
    return m_references.fetch_add(1, std::memory_order_relaxed) + 1;
  }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = m_references.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) delete this;
    return left;
  }

 protected:
  virtual ~ComObject() = default;

 private:
  std::atomic<ULONG> m_references{1};
};

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_COM_OBJECT_H_
