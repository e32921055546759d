// Which jobs the printer has, and how the one being printed fares.
#include "core/text.h"
#include "core/trace.h"
#include "core/variant.h"
#include "ipp/ipp_codes.h"
#include "ipp/provider/ipp_provider_impl.h"
#include "ipp/provider/value_text.h"
#include "platform/system.h"

namespace Corvane {
namespace {

const char* StateAttribute(bool selectState) {
  return selectState ? "job-state" : "job-state-reasons";
}

}  // namespace

HRESULT IPPProviderImpl::GetJobs(IPPRequestBase* request, IPPResponseBase* response,
                                 bool selectState) {
  const char* const uri = request ? request->GetJobURI() : nullptr;
  return FindJob(request, response, selectState, uri ? uri : "");
}

HRESULT IPPProviderImpl::FindJob(IPPRequestBase* request, IPPResponseBase* response,
                                 bool selectState, std::string_view uri) {
  TraceScope trace(L"Corvane::IPPProviderImpl::GetJobs");
  if (!request || !request->GetRequestingUserName()) return E_FAIL;
  const std::unique_ptr<IPPOperations> exchange = NewExchange();
  exchange->SetAttributeName(StateAttribute(selectState));
  exchange->SetRequestedUserName(request->GetRequestingUserName());
  exchange->SetConnectionFlags(m_operations->ConnectionFlags());
  HTTPResponse* answer = nullptr;
  if (FAILED(exchange->SendIPPRequest(IPPOperation::kGetJobs, &answer, request, IsSecure()))) {
    trace.Message(kTraceSevere, L"GetJobs(struct)..SendIPPRequest() failed");
    return E_FAIL;
  }
  _variant_t value;
  if (FAILED(exchange->ParseIPPResponse(answer, &value))) {
    trace.Message(kTraceSevere, L"GetJobs(struct)..ParseIPPResponse() failed");
    return E_FAIL;
  }
  const std::vector<IPPJob> jobs = exchange->Jobs();
  const IPPJob* const job = m_currentJob.FindIn(jobs, uri);
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
  exchange->SetAttributeName(StateAttribute(selectState));
  exchange->SetRequestedUserName(m_operations->RequestedUserName());
  HTTPResponse* answer = nullptr;
  if (FAILED(exchange->SendIPPRequest(IPPOperation::kGetJobs, &answer, nullptr, IsSecure()))) {
    trace.Message(kTraceSevere, L"GetJobs()..SendIPPRequest() failed");
    return S_FALSE;
  }
  _variant_t asked;
  if (FAILED(exchange->ParseIPPResponse(answer, &asked))) {
    trace.Message(kTraceSevere, L"GetJobs()..ParseIPPResponse() failed");
    return S_FALSE;
  }
  const std::vector<IPPJob> jobs = exchange->Jobs();
  std::wstring state;
  std::wstring reasons;
  if (jobs.empty()) {
    state = JoinedValue(*exchange, "job-state");
    reasons = JoinedValue(*exchange, "job-state-reasons");
  } else if (const IPPJob* const job = m_currentJob.FindIn(jobs, {})) {
    state = BstrFromUtf8(job->state).Get();
    reasons = BstrFromUtf8(job->reasons).Get();
  }
  if (state.empty()) {
    trace.Message(kTraceInfo, L"value is empty");
    // One being printed that does not go on may have ended: that is to be seen at once, not with
    // the next poll.
    return !selectState && m_currentJob.HasBegun() ? GetJobs(true) : S_FALSE;
  }
  trace.Message(kTraceInfo, L"Print Job state=%ls and JobstateReasons=%ls", state.c_str(),
                reasons.c_str());
  if (HasEnded(state)) {
    trace.Message(kTraceInfo, L"Job is canceled or completed");
    MarkJobEnded(state == L"7"   ? DeviceEnd::kCancelled
                 : state == L"8" ? DeviceEnd::kAborted
                                 : DeviceEnd::kNone);
    return S_OK;
  }
  if (reasons.find(L"canceled") != std::wstring::npos) {
    trace.Message(kTraceInfo,
                  L"job-state-reasons can be job-canceled-at-device, canceled-by-user, "
                  L"canceled-by-operator,printer-stopped");
    MarkJobEnded(DeviceEnd::kCancelled);
    return S_OK;
  }
  trace.Message(kTraceInfo, L"Job is continuing..Print Job state=%ls and JobstateReasons=%ls",
                state.c_str(), reasons.c_str());
  return S_FALSE;
}

}  // namespace Corvane
