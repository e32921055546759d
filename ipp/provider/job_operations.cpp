// Jobs that are made and cancelled by one exchange.
#include <vector>

#include "base/letter_case.h"
#include "core/text.h"
#include "core/trace.h"
#include "ipp/ipp_codes.h"
#include "ipp/provider/ipp_provider_impl.h"

namespace Corvane {
namespace {

bool HasText(const char* text) { return text && *text; }

// Takes the authorization out of the headers of a set for as long as it lives: what was given for
// an ipps URI does not go over a connection that anybody can read.
class WithoutAuthorization {
 public:
  explicit WithoutAuthorization(IPPRequestBase* request)
      : m_headers(request->GetExtraHTTPHeader()) {
    for (auto header = m_headers.begin(); header != m_headers.end();) {
      const auto next = std::next(header);
      if (EqualsIgnoreAsciiCase(header->first, L"Authorization")) {
        m_taken.push_back(m_headers.extract(header));
      }
      header = next;
    }
  }
  WithoutAuthorization(const WithoutAuthorization&) = delete;
  WithoutAuthorization& operator=(const WithoutAuthorization&) = delete;
  ~WithoutAuthorization() {
    for (auto& header : m_taken) m_headers.insert(std::move(header));
  }

 private:
  IPPHeaderMap& m_headers;
  std::vector<IPPHeaderMap::node_type> m_taken;
};

}  // namespace

HRESULT IPPProviderImpl::RunJobOperation(int operation, IPPRequestBase* request,
                                         IPPResponseBase* response, bool secure) {
  const std::unique_ptr<IPPOperations> exchange = NewExchange();
  HTTPResponse* answer = nullptr;
  if (FAILED(exchange->SendIPPRequest(operation, &answer, request, secure))) return E_FAIL;
  const HRESULT parsed = exchange->ParseIPPResponse(answer, nullptr);
  // A refusal is for the caller to see, too.
  const HRESULT filled = FAILED(parsed) && exchange->ValuesOf("status-code").empty()
                             ? E_FAIL
                             : exchange->FormResponseStructure(response);
  return FAILED(parsed) || FAILED(filled) ? E_FAIL : S_OK;
}

HRESULT IPPProviderImpl::PrintUri(IPPRequestBase* request, IPPResponseBase* response) {
  TraceScope trace(L"Corvane::IPPProviderImpl::PrintUri");
  if (!request || !HasText(request->GetDocumentUri())) return E_FAIL;
  return RunJobOperation(IPPOperation::kPrintUri, request, response, IsSecure());
}

HRESULT IPPProviderImpl::SendURI(IPPRequestBase* request, IPPResponseBase* response) {
  TraceScope trace(L"Corvane::IPPProviderImpl::SendURI");
  if (!request || !HasText(request->GetDocumentUri())) return E_FAIL;
  return RunJobOperation(IPPOperation::kSendUri, request, response, IsSecure());
}

HRESULT IPPProviderImpl::CreateJob(IPPRequestBase* request, IPPResponseBase* response) {
  TraceScope trace(L"Corvane::IPPProviderImpl::CreateJob");
  if (!request || !HasText(request->GetJobName())) return E_FAIL;
  return RunJobOperation(IPPOperation::kCreateJob, request, response, IsSecure());
}

HRESULT IPPProviderImpl::CancelJob(IPPRequestBase* request, IPPResponseBase* response) {
  TraceScope trace(L"Corvane::IPPProviderImpl::CancelJob");
  StopAllThreadsRunning();
  if (!request || !request->GetRequestingUserName()) {
    trace.Message(kTraceSevere, L"RequestingUserName is not present");
    return E_FAIL;
  }
  const HRESULT found = GetJobs(request, response, false);
  if (found == S_OK) {
    if (response->GetJobURI()) request->SetJobURI(response->GetJobURI());
    if (HasText(request->GetJobURI())) {
      const WithoutAuthorization plain(request);
      // What the printer says to it is not the caller's business.
      RunJobOperation(IPPOperation::kCancelJob, request, response, false);
    }
  } else {
    trace.Message(kTraceSevere, L"GetJobs failed");
  }
  m_jobOperations.reset();  // the rest of a half-sent document is not wanted any more
  return found;
}

}  // namespace Corvane
