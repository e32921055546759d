// Whether a secure printer takes the caller's credentials.
#include "base/utf8.h"
#include "core/trace.h"
#include "ipp/provider/ipp_provider_impl.h"
#include "ipp/wire/codes.h"
#include "platform/system.h"

namespace Corvane {
namespace {

HRESULT RefuseAuthorization(DWORD error) {
  SetLastError(error);
  return E_FAIL;
}

}  // namespace

HRESULT IPPProviderImpl::CheckAuthorization(HTTPRequest* httpRequest, IPPRequestBase* request) {
  TraceScope trace(L"Corvane::IPPProviderImpl::CheckAuthorization");
  m_watch.End();  // a half-sent document goes
  m_jobOperations = std::make_unique<IPPOperations>(m_address.Get());
  if (m_jobOperations->SetResourceURI(ToUtf8(m_resourceUri).c_str()) != S_OK) {
    return RefuseAuthorization(kIPPPathTooShort);
  }
  m_jobOperations->SetPrinterURI(m_printerUri.c_str());
  if (m_jobOperations->PrinterUri().find(L"ipps") == std::wstring::npos)
    return RefuseAuthorization(kIPPNoSecureUri);

  HTTPResponse* response = nullptr;
  const HRESULT sent = m_jobOperations->SendIPPRequest(
      httpRequest, request, IPPOperation::kPrintJobWithCredentials, &response);
  if (FAILED(sent)) return sent;
  if (FAILED(m_jobOperations->ParseIPPResponse(response, nullptr)))
    return RefuseAuthorization(kIPPUnexpectedAnswer);
  const std::wstring authorization = request->GetAuthorizationHeader();
  if (!authorization.empty()) httpRequest->AddHeader(L"Authorization", authorization.c_str());
  switch (response->GetStatusCode()) {
    case kHttpOk:
      return S_OK;
    case kHttpUnauthorized:
      return RefuseAuthorization(kIPPNotAuthorized);
    default:
      return RefuseAuthorization(kIPPUnexpectedAnswer);
  }
}

}  // namespace Corvane
