#include "ipp/ipp_operations.h"

#include "core/trace.h"

namespace Corvane {
namespace {

HRESULT SetText(OwnedChars* field, const char* text) {
  if (!text || !*text) return E_FAIL;
  field->Set(text);
  return S_OK;
}

}  // namespace

IPPOperations::IPPOperations(Address* address) : m_address(RefPtr<Address>::Share(address)) {
  TraceScope trace(L"Corvane::IPPOperations::IPPOperations");
}

IPPOperations::~IPPOperations() { TraceScope trace(L"Corvane::IPPOperations::~IPPOperations"); }

HRESULT IPPOperations::SetJobURI(const char* uri) { return SetText(&m_jobUri, uri); }
HRESULT IPPOperations::SetResourceURI(const char* uri) { return SetText(&m_resourceUri, uri); }
HRESULT IPPOperations::SetAttributeName(const char* name) {
  return SetText(&m_attributeName, name);
}
HRESULT IPPOperations::SetRequestedUserName(const char* name) {
  return SetText(&m_requestedUserName, name);
}

}  // namespace Corvane
