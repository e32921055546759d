// Owners of what the exported interface and the system hand out: references, strings, variants,
// registry keys, printers. Header only; a program may use them or its own. They are moved, never
// copied, and belong to one thread at a time.
#ifndef CORVANE_HANDLES_H_
#define CORVANE_HANDLES_H_

#include <string_view>
#include <utility>

#include "corvane/platform.h"

namespace Corvane {

// Owns one thing that `GiveBack` gives back, once; null holds nothing.
template <typename Handle, typename GiveBack>
class UniqueHandleOf {
 public:
  UniqueHandleOf() = default;
  // Takes over what the caller owns.
  explicit UniqueHandleOf(Handle handle) : m_handle(handle) {}
  UniqueHandleOf(UniqueHandleOf&& other) noexcept : m_handle(other.Release()) {}
  UniqueHandleOf& operator=(UniqueHandleOf&& other) noexcept {
    if (this != &other) Reset(other.Release());
    return *this;
  }
  ~UniqueHandleOf() { Reset(); }

  Handle Get() const { return m_handle; }
  explicit operator bool() const { return m_handle != nullptr; }
  // Gives back what is held, and takes over `handle`.
  void Reset(Handle handle = nullptr) {
    if (Handle const old = std::exchange(m_handle, handle)) GiveBack()(old);
  }
  // Hands over to the caller, who gives it back.
  [[nodiscard]] Handle Release() { return std::exchange(m_handle, nullptr); }
  // For an output argument: gives back what is held first.
  Handle* Receive() {
    Reset();
    return &m_handle;
  }

 private:
  Handle m_handle = nullptr;
};

// How each kind is given back. A reference goes with Dispose to a disposable object, with Release
// to a COM object.
struct GiveBackReference {
  template <typename T>
  void operator()(T* object) const {
    if constexpr (requires { object->Dispose(); }) {
      object->Dispose();
    } else {
      object->Release();
    }
  }
};
struct FreeBstr {
  void operator()(BSTR text) const { SysFreeString(text); }
};
struct CloseKey {
  void operator()(HKEY key) const { RegCloseKey(key); }
};
struct ClosePrinterHandle {
  void operator()(HANDLE printer) const { ClosePrinter(printer); }
};

using UniqueHkey = UniqueHandleOf<HKEY, CloseKey>;
using UniquePrinter = UniqueHandleOf<HANDLE, ClosePrinterHandle>;

// One reference to a disposable or COM object.
template <typename T>
class RefPtr : public UniqueHandleOf<T*, GiveBackReference> {
 public:
  using UniqueHandleOf<T*, GiveBackReference>::UniqueHandleOf;
  // Takes over a reference that the caller owns.
  static RefPtr Adopt(T* object) { return RefPtr(object); }
  // Takes a reference of its own, if there is an object.
  static RefPtr Share(T* object) {
    if (object) object->AddRef();
    return RefPtr(object);
  }

  T* operator->() const { return this->Get(); }
  // Receive, for COM's untyped outputs.
  void** ReceiveVoid() { return reinterpret_cast<void**>(this->Receive()); }
};

class UniqueBstr : public UniqueHandleOf<BSTR, FreeBstr> {
 public:
  using UniqueHandleOf::UniqueHandleOf;
  // A copy of `text`; a null pointer gives null. Out of memory throws _com_error with
  // E_OUTOFMEMORY.
  static UniqueBstr Make(const wchar_t* text) {
    return text ? Make(std::wstring_view(text)) : UniqueBstr();
  }
  static UniqueBstr Make(std::wstring_view text) {
    return Allocated(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
  }
  // `chars` characters to be filled in, and a terminator.
  static UniqueBstr MakeLength(UINT chars) { return Allocated(SysAllocStringLen(nullptr, chars)); }

  // Empty for null.
  std::wstring_view View() const {
    return Get() ? std::wstring_view(Get(), SysStringLen(Get())) : std::wstring_view();
  }

 private:
  static UniqueBstr Allocated(BSTR text) {
    if (!text) _com_issue_error(E_OUTOFMEMORY);
    return UniqueBstr(text);
  }
};

// A variant, empty at first.
class UniqueVariant {
 public:
  UniqueVariant() { VariantInit(&m_value); }
  // A text, copied.
  explicit UniqueVariant(std::wstring_view text) : UniqueVariant() {
    m_value.bstrVal = UniqueBstr::Make(text).Release();
    m_value.vt = VT_BSTR;
  }
  UniqueVariant(UniqueVariant&& other) noexcept : m_value(other.Release()) {}
  UniqueVariant& operator=(UniqueVariant&& other) noexcept {
    if (this != &other) *Receive() = other.Release();
    return *this;
  }
  ~UniqueVariant() { VariantClear(&m_value); }

  const VARIANT& Get() const { return m_value; }
  // Hands the value over to the caller, who clears it.
  [[nodiscard]] VARIANT Release() {
    const VARIANT value = m_value;
    VariantInit(&m_value);
    return value;
  }
  // For an output argument: clears what is held first.
  VARIANT* Receive() {
    VariantClear(&m_value);
    return &m_value;
  }

 private:
  VARIANT m_value;
};

}  // namespace Corvane

#endif  // CORVANE_HANDLES_H_
