// Jobs that are made and cancelled by one exchange.
#include <chrono>

#include "base/decimal.h"
#include "base/exception_wall.h"
#include "base/letter_case.h"
#include "core/text.h"
#include "core/trace.h"
#include "ipp/provider/ipp_provider_impl.h"
#include "ipp/wire/codes.h"

namespace Corvane {
namespace {

constexpr DWORD kListPauseMs = 500;

// Takes the authorization out of the headers of a set for as long as it lives: what was given for
// an ipps URI does not go over a connection that anybody can read.
class WithoutAuthorization {
 public:
  explicit WithoutAuthorization(IPPRequestBase* request)
      : m_headers(request->GetExtraHTTPHeader()), m_kept(m_headers) {
    std::erase_if(m_headers, [](const auto& header) {
      return EqualsIgnoreAsciiCase(header.first, L"Authorization");
    });
  }
  WithoutAuthorization(const WithoutAuthorization&) = delete;
  WithoutAuthorization& operator=(const WithoutAuthorization&) = delete;
  ~WithoutAuthorization() { m_headers.swap(m_kept); }

 private:
  IPPHeaderMap& m_headers;
  IPPHeaderMap m_kept;
};

}  // namespace

HRESULT IPPProviderImpl::RunJobOperation(int operation, IPPRequestBase* request,
                                         IPPResponseBase* response, bool secure,
                                         std::uint32_t limitMs) {
  const std::unique_ptr<IPPOperations> exchange = NewExchange(limitMs);
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
  m_watch.End();
  m_jobOperations.reset();  // the rest of a half-sent document is not wanted any more
  return found;
}

HRESULT IPPProviderImpl::CancelPrintJob(IPPResponseBase* response, std::uint32_t timeoutMs) {
  TraceScope trace(L"Corvane::IPPProviderImpl::CancelPrintJob");
  const auto request = RefPtr<IPPRequestBase>::Adopt(CreateIPPRequest());
  const auto told = response ? RefPtr<IPPResponseBase>::Share(response)
                             : RefPtr<IPPResponseBase>::Adopt(CreateIPPResponse());
  if (!request || !told) return E_OUTOFMEMORY;
  if (!m_watch.BeginCancelling(request.Get())) return S_FALSE;
  // The sender waits for what follows, whatever happens.
  const HRESULT result = BehindWall<HRESULT>(
      E_OUTOFMEMORY, [&] { return CancelAtPrinter(request.Get(), told.Get(), timeoutMs); });
  m_watch.EndCancelling(result == S_OK);
  return result;
}

// A printer may list the job only when it has the whole document.
HRESULT IPPProviderImpl::CancelAtPrinter(IPPRequestBase* request, IPPResponseBase* response,
                                         std::uint32_t timeoutMs) {
  using Clock = std::chrono::steady_clock;
  if (m_watch.EndAtDevice() == JobWatch::DeviceEnd::kCancelled) return S_OK;
  const Clock::time_point end = Clock::now() + std::chrono::milliseconds(timeoutMs);
  HRESULT found = S_FALSE;
  while (m_watch.IsSending()) {
    found = FindJob(request, response, false, {}, timeoutMs);
    if (found != S_FALSE || Clock::now() >= end) break;
    Sleep(kListPauseMs);
  }
  if (FAILED(found)) return E_FAIL;
  if (found == S_FALSE || !response->GetJobURI() || !m_watch.Job().IsCertain()) {
    SetLastError(kIPPJobNotListed);
    return E_FAIL;
  }
  if (IsCancelled(response)) return S_OK;
  request->SetJobURI(response->GetJobURI());
  const HRESULT sent =
      RunJobOperation(IPPOperation::kCancelJob, request, response, IsSecure(), timeoutMs);
  const std::int32_t status = LeadingInt32(std::string_view(response->GetSuccessStatus()));
  if (status <= IPPStatus::kLastSuccess) return sent;
  SetLastError(static_cast<DWORD>(status));
  return E_FAIL;
}

}  // namespace Corvane

HRESULT CancelPrintJob(Corvane::IPPProvider* provider, Corvane::IPPResponseBase* response,
                       std::uint32_t timeoutMs) {
  Corvane::TraceScope trace(L"Corvane::CancelPrintJob");
  auto* const own = dynamic_cast<Corvane::IPPProviderImpl*>(provider);
  return own ? own->CancelPrintJob(response, timeoutMs) : E_FAIL;
}
