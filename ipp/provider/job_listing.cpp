// Which jobs the printer has, and how the one being printed fares.
#include "core/com.h"
#include "core/text.h"
#include "core/trace.h"
#include "ipp/provider/ipp_provider_impl.h"
#include "ipp/wire/codes.h"
#include "platform/system.h"

namespace Corvane {
namespace {

// The list is read into `exchange`; `value` is what was asked for. `overload` is for the traces of
// a failure.
bool ReadJobs(IPPOperations* exchange, IPPRequestBase* request, bool selectState, bool secure,
              VARIANT* value, const wchar_t* overload, const TraceScope& trace) {
  exchange->SetAttributeName(selectState ? "job-state" : "job-state-reasons");
  HTTPResponse* answer = nullptr;
  if (FAILED(exchange->SendIPPRequest(IPPOperation::kGetJobs, &answer, request, secure))) {
    trace.Message(kTraceSevere, L"%ls..SendIPPRequest() failed", overload);
    return false;
  }
  if (FAILED(exchange->ParseIPPResponse(answer, value))) {
    trace.Message(kTraceSevere, L"%ls..ParseIPPResponse() failed", overload);
    return false;
  }
  return true;
}

}  // namespace

HRESULT IPPProviderImpl::GetJobs(IPPRequestBase* request, IPPResponseBase* response,
                                 bool selectState) {
  const char* const uri = request ? request->GetJobURI() : nullptr;
  return FindJob(request, response, selectState, uri ? uri : "");
}

HRESULT IPPProviderImpl::FindJob(IPPRequestBase* request, IPPResponseBase* response,
                                 bool selectState, std::string_view uri, std::uint32_t limitMs) {
  TraceScope trace(L"Corvane::IPPProviderImpl::GetJobs");
  if (!request || !request->GetRequestingUserName()) return E_FAIL;
  const std::unique_ptr<IPPOperations> exchange = NewExchange(limitMs);
  exchange->SetRequestedUserName(request->GetRequestingUserName());
  _variant_t value;
  if (!ReadJobs(exchange.get(), request, selectState, IsSecure(), &value, L"GetJobs(struct)",
                trace)) {
    return E_FAIL;
  }
  const std::vector<IPPJob> jobs = exchange->Jobs();
  const IPPJob* const job = m_watch.Job().FindIn(jobs, uri);
  if (value.vt == VT_EMPTY || (!jobs.empty() && !job)) {
    trace.Message(kTraceInfo,
                  L"May be we ask for which-jobs=completed but job is still in process else may be "
                  L"reverse condition");
    return S_FALSE;
  }
  if (exchange->FormResponseStructure(response) != S_OK) return S_FALSE;
  if (jobs.size() > 1) FillFromJob(*job, response);
  return S_OK;
}

HRESULT IPPProviderImpl::GetJobs(bool selectState) {
  TraceScope trace(L"Corvane::IPPProviderImpl::GetJobs");
  const std::unique_ptr<IPPOperations> exchange = NewExchange();
  exchange->SetRequestedUserName(m_operations->RequestedUserName());
  _variant_t asked;
  if (!ReadJobs(exchange.get(), nullptr, selectState, IsSecure(), &asked, L"GetJobs()", trace)) {
    return S_FALSE;
  }
  const std::vector<IPPJob> jobs = exchange->Jobs();
  std::wstring state;
  std::wstring reasons;
  if (jobs.empty()) {
    state = JoinedValue(*exchange, "job-state");
    reasons = JoinedValue(*exchange, "job-state-reasons");
  } else if (const IPPJob* const job = m_watch.Job().FindIn(jobs, {})) {
    state = BstrFromUtf8(job->state).Get();
    reasons = BstrFromUtf8(job->reasons).Get();
  }
  if (state.empty()) {
    trace.Message(kTraceInfo, L"value is empty");
    // One being printed that does not go on may have ended: that is to be seen at once, not with
    // the next poll.
    return !selectState && m_watch.Job().HasBegun() ? GetJobs(true) : S_FALSE;
  }
  trace.Message(kTraceInfo, L"Print Job state=%ls and JobstateReasons=%ls", state.c_str(),
                reasons.c_str());
  if (HasEnded(state)) {
    trace.Message(kTraceInfo, L"Job is canceled or completed");
    m_watch.MarkEnded(state == L"7"   ? JobWatch::DeviceEnd::kCancelled
                      : state == L"8" ? JobWatch::DeviceEnd::kAborted
                                      : JobWatch::DeviceEnd::kNone);
    return S_OK;
  }
  if (reasons.find(L"canceled") != std::wstring::npos) {
    trace.Message(kTraceInfo,
                  L"job-state-reasons can be job-canceled-at-device, canceled-by-user, "
                  L"canceled-by-operator,printer-stopped");
    m_watch.MarkEnded(JobWatch::DeviceEnd::kCancelled);
    return S_OK;
  }
  trace.Message(kTraceInfo, L"Job is continuing..Print Job state=%ls and JobstateReasons=%ls",
                state.c_str(), reasons.c_str());
  return S_FALSE;
}

}  // namespace Corvane
