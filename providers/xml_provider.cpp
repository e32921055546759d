#include "providers/xml_provider.h"

#include "core/com.h"
#include "core/file_time.h"
#include "core/text.h"
#include "core/trace.h"
#include "corvane/http_response.h"

namespace Corvane {

XMLProvider::XMLProvider(Address* address, std::uint32_t port)
    : m_address(RefPtr<Address>::Share(address)), m_port(port) {
  TraceScope trace(L"Corvane::XMLProvider::XMLProvider");
  m_com.Begin();
}

XMLProvider::~XMLProvider() {
  TraceScope trace(L"Corvane::XMLProvider::~XMLProvider");
  m_documents.clear();
  m_com.End();
  m_address.Reset();
}

const char* XMLProvider::GetTypeName() { return kClassIdentification; }

HRESULT XMLProvider::GetValue(const wchar_t* uri, const wchar_t* xpath, wchar_t* buffer,
                              std::uint32_t bufferSize, std::uint32_t* requiredLength, int useCache,
                              std::uint32_t lifeSpan) {
  TraceScope trace(L"Corvane::XMLProvider::GetValue");
  if (!requiredLength) return E_FAIL;
  IXMLDOMDocument* document = nullptr;
  HRESULT result = GetDOM(uri, &document, useCache, lifeSpan);
  *requiredLength = 0;
  if (result != S_OK || !document) return result;

  const UniqueBstr expression = UniqueBstr::Make(xpath);
  RefPtr<IXMLDOMNode> node;
  result = document->selectSingleNode(expression.Get(), node.Receive());
  if (result != S_OK || !node) return result;

  UniqueBstr text;
  result = node->get_text(text.Receive());
  if (FAILED(result)) return result;
  return CopyToBuffer(text.View(), buffer, bufferSize, requiredLength);
}

HRESULT XMLProvider::GetContent(const wchar_t* uri, std::string* content) {
  TraceScope trace(L"Corvane::XMLProvider::GetContent");
  if (!m_address || !uri || !content) return E_FAIL;
  RefPtr<HTTPRequest> request;
  if (const HRESULT result = CreateRequest(&request); result != S_OK) return result;
  request->SetURI(uri);
  if (!m_password.empty()) {
    request->SetPassword(m_password.c_str());
    request->SetUserName(m_userName.empty() ? L"admin" : m_userName.c_str());
  }
  return ReadResponse(request.Get(), content);
}

HRESULT XMLProvider::GetDOM(const wchar_t* uri, IXMLDOMDocument** document, int useCache,
                            std::uint32_t lifeSpan) {
  TraceScope trace(L"Corvane::XMLProvider::GetDOM");
  if (!document) return E_FAIL;
  *document = nullptr;
  if (!uri) return E_FAIL;
  if (useCache) {
    *document = FindFresh(uri, lifeSpan);
    if (*document) return S_OK;
  }

  std::string content;
  if (const HRESULT result = GetContent(uri, &content); result != S_OK) return result;
  RefPtr<IXMLDOMDocument> parsed = Parse(content);
  if (!parsed) return S_OK;
  *document = parsed.Get();

  std::uint64_t now = 0;
  if (!GetCurrentFileTime(&now)) {
    // Handed out but not kept: the caller has a document that nobody releases, which no clock has
    // ever asked for.
    *document = parsed.Release();
    return S_OK;
  }
  m_documents.insert_or_assign(uri, CachedDocument{std::move(parsed), now});
  return S_OK;
}

bool XMLProvider::HasNode(const wchar_t* uri, const wchar_t* xpath) {
  std::uint32_t length = 0;
  return GetValue(uri, xpath, nullptr, 0, &length, 1, 0) == E_OUTOFMEMORY;
}

HRESULT XMLProvider::CreateRequest(RefPtr<HTTPRequest>* request) {
  HTTPRequest* created = nullptr;
  const HRESULT result = m_address->CreateHTTPRequest(&created, m_port);
  if (result != S_OK) return result;  // whatever is in `created` is not ours
  *request = RefPtr<HTTPRequest>::Adopt(created);
  return created ? S_OK : E_FAIL;
}

HRESULT XMLProvider::ReadResponse(HTTPRequest* request, std::string* content) {
  HTTPResponse* response = nullptr;
  if (request->GetResponse(&response) != S_OK || !response) return E_FAIL;
  if (response->GetStatusCode() != kHttpOk) return E_FAIL;
  const char* const body = response->GetContent();
  *content = body ? body : "";
  return S_OK;
}

IXMLDOMDocument* XMLProvider::FindFresh(const wchar_t* uri, std::uint32_t lifeSpan) {
  const auto entry = m_documents.find(std::wstring_view(uri));
  if (entry == m_documents.end() || IsExpired(entry->second.loadTime, lifeSpan)) return nullptr;
  return entry->second.document.Get();
}

// Null when the parser cannot be had. What is not well-formed leaves an empty document.
RefPtr<IXMLDOMDocument> XMLProvider::Parse(const std::string& content) {
  RefPtr<IXMLDOMDocument> document;
  RefPtr<IClassFactory> factory;
  if (FAILED(CoGetClassObject(kDomDocumentClass, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                              factory.ReceiveVoid())) ||
      FAILED(factory->CreateInstance(nullptr, IID_IXMLDOMDocument, document.ReceiveVoid()))) {
    return {};
  }
  const UniqueBstr text = BstrFromNarrow(content);
  VARIANT_BOOL wellFormed = VARIANT_FALSE;
  if (FAILED(document->loadXML(text.Get(), &wellFormed))) return {};
  return document;
}

}  // namespace Corvane
