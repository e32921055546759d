// Owned references: to COM objects, and to disposable objects.
#ifndef CORVANE_CORE_REF_PTR_H_
#define CORVANE_CORE_REF_PTR_H_

#include <utility>

namespace Corvane {

// One reference to an object; it goes back with Dispose to a disposable object, with Release to a
// COM object.
template <typename T>
class RefPtr {
 public:
  RefPtr() = default;
  RefPtr(RefPtr&& other) noexcept : m_object(other.Release()) {}
  RefPtr& operator=(RefPtr&& other) noexcept {
    if (this != &other) Reset(other.Release());
    return *this;
  }
  ~RefPtr() { Reset(); }

  // Takes over a reference that the caller owns.
  static RefPtr Adopt(T* object) {
    RefPtr pointer;
    pointer.m_object = object;
    return pointer;
  }
  // Takes a reference of its own, if there is an object.
  static RefPtr Share(T* object) {
    if (object) object->AddRef();
    return Adopt(object);
  }

  T* Get() const { return m_object; }
  T* operator->() const { return m_object; }
  explicit operator bool() const { return m_object != nullptr; }
  void Reset(T* object = nullptr) {
    T* const old = std::exchange(m_object, object);
    if (!old) return;
    if constexpr (requires { old->Dispose(); }) {
      old->Dispose();
    } else {
      old->Release();
    }
  }
  [[nodiscard]] T* Release() { return std::exchange(m_object, nullptr); }
  // For an output argument: gives back what is held first.
  T** Receive() {
    Reset();
    return &m_object;
  }
  // The same for COM's untyped outputs.
  void** ReceiveVoid() { return reinterpret_cast<void**>(Receive()); }

 private:
  T* m_object = nullptr;
};

}  // namespace Corvane

#endif  // CORVANE_CORE_REF_PTR_H_
