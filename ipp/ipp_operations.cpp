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
HRESULT IPPOperations::SetCharset(const char* charset) { return SetText(&m_charset, charset); }
HRESULT IPPOperations::SetLanguage(const char* language) { return SetText(&m_language, language); }

HRESULT IPPOperations::SetPrinterURI(const wchar_t* uri) {
  if (!uri || !*uri) return E_FAIL;
  m_printerUri = uri;
  return S_OK;
}

void IPPOperations::EndExchange() {
  m_chunked = nullptr;
  m_httpRequest.Reset();
}

}  // namespace Corvane
