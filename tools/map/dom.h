// The platform's DOM, as far as the tool needs it. The calling thread must hold COM.
#ifndef CORVANE_TOOLS_MAP_DOM_H_
#define CORVANE_TOOLS_MAP_DOM_H_

#include <string>

#include "corvane/handles.h"

namespace Corvane::Tool {

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

// An empty document. Throws Failure with kSystemFailure when the system has no DOM.
RefPtr<IXMLDOMDocument> CreateDocument();

// Whether the DOM can evaluate `pattern` at all, whatever the document.
bool IsPattern(const std::wstring& pattern);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_MAP_DOM_H_
