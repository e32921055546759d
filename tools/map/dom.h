// The platform's DOM, as far as the tool needs it. The calling thread must hold COM.
#ifndef CORVANE_TOOLS_MAP_DOM_H_
#define CORVANE_TOOLS_MAP_DOM_H_

#include <string>

#include "tools/output/handles.h"

namespace Corvane::Tool {

// An empty document. Throws Failure with kSystemFailure when the system has no DOM.
Ref<IXMLDOMDocument> CreateDocument();

// Whether the DOM can evaluate `pattern` at all, whatever the document.
bool IsPattern(const std::wstring& pattern);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_MAP_DOM_H_
