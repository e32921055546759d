// What every COM object of the DOM needs: a reference count, and a wall that no exception passes.
#ifndef CORVANE_PLATFORM_LINUX_DOM_COM_OBJECT_H_
#define CORVANE_PLATFORM_LINUX_DOM_COM_OBJECT_H_

#include <atomic>
#include <initializer_list>
#include <new>

#include "corvane/linux/com.h"
#include "corvane/linux/dom.h"

namespace Corvane::Dom {

// Born with one reference, its maker's. `Interface` is derived from IDispatch.
template <class Interface>
class ComObject : public Interface {
 public:
  ComObject() = default;
  ComObject(const ComObject&) = delete;
  ComObject& operator=(const ComObject&) = delete;

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

  // Answers QueryInterface for IUnknown, IDispatch and `interfaces`.
  HRESULT Query(REFIID iid, std::initializer_list<const IID*> interfaces, void** object) {
    if (object == nullptr) return E_INVALIDARG;
    *object = nullptr;
    bool offered = iid == IID_IUnknown || iid == IID_IDispatch;
    for (const IID* each : interfaces) offered = offered || iid == *each;
    if (!offered) return E_NOINTERFACE;
    AddRef();
    *object = static_cast<Interface*>(this);
    return S_OK;
  }

 private:
  std::atomic<ULONG> m_references{1};
};

// Runs `action`; what it throws becomes a result code.
template <class Action>
HRESULT Guard(Action action) {
  try {
    return action();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_FAIL;
  }
}

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_COM_OBJECT_H_
