// What the library asks of COM: its initialisation, the DOM's class, variants at the boundary.
#ifndef CORVANE_CORE_COM_H_
#define CORVANE_CORE_COM_H_

#include "core/trace.h"
#include "corvane/platform.h"

namespace Corvane {

// The DOM document class that specifications and device documents are parsed with.
inline constexpr CLSID kDomDocumentClass = {
    0xF5078F32, 0xC551, 0x11D3, {0x89, 0xB9, 0x00, 0x00, 0xF8, 0x1F, 0xE2, 0x21}};

// Moves a value into an output argument, whose earlier content is cleared. What cannot be cleared
// was never a variant, or is a locked array: there is nothing of it to free here.
inline void MoveTo(_variant_t&& from, VARIANT* to) {
  if (FAILED(VariantClear(to))) VariantInit(to);
  *to = from.Detach();
}

// The COM initialisation that an object holds on the thread that made it.
class ComInitialization {
 public:
  ComInitialization() = default;
  ComInitialization(const ComInitialization&) = delete;
  ComInitialization& operator=(const ComInitialization&) = delete;
  ~ComInitialization() { End(); }

  void Begin() { m_result = CoInitialize(nullptr); }
  // The same, telling the result in the caller's scope.
  void Begin(const TraceScope& trace) {
    Begin();
    if (m_result == S_OK) {
      trace.Message(kTraceSevere, L"CoInitialize Passed");
    } else {
      trace.Message(kTraceSevere, L"CoInitialize returned %x", static_cast<unsigned>(m_result));
    }
  }
  // Balances a Begin that counted, once.
  void End() {
    if (m_result == S_OK || m_result == S_FALSE) CoUninitialize();
    m_result = E_FAIL;
  }

 private:
  HRESULT m_result = E_FAIL;
};

}  // namespace Corvane

#endif  // CORVANE_CORE_COM_H_
