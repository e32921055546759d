// Owners of what the exported interface and the system hand out: references, strings, variants,
// keys, printers, the COM initialisation of a thread.
#ifndef CORVANE_TOOLS_OUTPUT_HANDLES_H_
#define CORVANE_TOOLS_OUTPUT_HANDLES_H_

#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "corvane/platform.h"

namespace Corvane::Tool {

// One reference, given back with Dispose to a disposable object, with Release to a COM object.
template <typename T>
class Ref {
 public:
  Ref() = default;
  // Takes over a reference.
  explicit Ref(T* object) : m_object(object) {}
  Ref(Ref&& other) noexcept : m_object(other.Release()) {}
  Ref& operator=(Ref&& other) noexcept {
    if (this != &other) Reset(other.Release());
    return *this;
  }
  ~Ref() { Reset(); }

  T* Get() const { return m_object; }
  T* operator->() const { return m_object; }
  explicit operator bool() const { return m_object != nullptr; }
  [[nodiscard]] T* Release() { return std::exchange(m_object, nullptr); }
  void Reset(T* object = nullptr) {
    T* const old = std::exchange(m_object, object);
    if (!old) return;
    if constexpr (requires { old->Dispose(); }) {
      old->Dispose();
    } else {
      old->Release();
    }
  }
  // For an output argument: gives back what is held first.
  T** Receive() {
    Reset();
    return &m_object;
  }
  void** ReceiveVoid() { return reinterpret_cast<void**>(Receive()); }

 private:
  T* m_object = nullptr;
};

class Bstr {
 public:
  Bstr() = default;
  // A copy. Out of memory throws std::bad_alloc.
  explicit Bstr(const std::wstring& text)
      : m_text(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {
    if (!m_text) throw std::bad_alloc();
  }
  Bstr(const Bstr&) = delete;
  Bstr& operator=(const Bstr&) = delete;
  ~Bstr() { SysFreeString(m_text); }

  BSTR Get() const { return m_text; }
  std::wstring_view View() const {
    return m_text ? std::wstring_view(m_text, SysStringLen(m_text)) : std::wstring_view();
  }
  [[nodiscard]] BSTR Release() { return std::exchange(m_text, nullptr); }
  BSTR* Receive() {
    SysFreeString(Release());
    return &m_text;
  }

 private:
  BSTR m_text = nullptr;
};

class Variant {
 public:
  Variant() { VariantInit(&m_value); }
  explicit Variant(const std::wstring& text) : Variant() {
    m_value.bstrVal = Bstr(text).Release();
    m_value.vt = VT_BSTR;
  }
  Variant(Variant&& other) noexcept : m_value(other.m_value) { VariantInit(&other.m_value); }
  Variant& operator=(Variant&&) = delete;
  ~Variant() { VariantClear(&m_value); }

  const VARIANT& Get() const { return m_value; }
  VARIANT* Receive() {
    VariantClear(&m_value);
    return &m_value;
  }

 private:
  VARIANT m_value;
};

// A handle that a call of its own closes; null is none.
template <typename Handle, typename Close>
class SystemHandle {
 public:
  SystemHandle() = default;
  SystemHandle(const SystemHandle&) = delete;
  SystemHandle& operator=(const SystemHandle&) = delete;
  ~SystemHandle() { Reset(); }

  Handle Get() const { return m_handle; }
  void Reset() {
    if (m_handle) Close()(m_handle);
    m_handle = nullptr;
  }
  // For an output argument: closes what is held first.
  Handle* Receive() {
    Reset();
    return &m_handle;
  }

 private:
  Handle m_handle = nullptr;
};

struct CloseKey {
  void operator()(HKEY key) const { RegCloseKey(key); }
};
struct ClosePrinterHandle {
  void operator()(HANDLE printer) const { ClosePrinter(printer); }
};
using KeyHandle = SystemHandle<HKEY, CloseKey>;
using PrinterHandle = SystemHandle<HANDLE, ClosePrinterHandle>;

// Holds COM for the calling thread; every COM object must go before it.
class ComInitialization {
 public:
  ComInitialization() : m_result(CoInitialize(nullptr)) {}
  ComInitialization(const ComInitialization&) = delete;
  ComInitialization& operator=(const ComInitialization&) = delete;
  ~ComInitialization() {
    if (SUCCEEDED(m_result)) CoUninitialize();
  }

 private:
  HRESULT m_result;
};

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_OUTPUT_HANDLES_H_
