// The COM initialisation that an object holds on the thread that made it.
#ifndef CORVANE_CORE_COM_INITIALIZATION_H_
#define CORVANE_CORE_COM_INITIALIZATION_H_

#include "core/trace.h"
#include "corvane/platform.h"

namespace Corvane {

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

#endif  // CORVANE_CORE_COM_INITIALIZATION_H_
