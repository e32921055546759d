// The threads that watch the printer and the job while a document is on its way, and what the
// printer tells of its state.
#include "base/exception_wall.h"
#include "core/trace.h"
#include "ipp/provider/ipp_provider_impl.h"
#include "ipp/wire/codes.h"
#include "platform/system.h"

namespace Corvane {
namespace {

constexpr wchar_t kSpoolFull[] = L"spool-area-full";
constexpr DWORD kJobPollMs = 1000;
constexpr DWORD kPrinterPollMs = 5000;

bool ReasonsContain(const std::wstring& text, const wchar_t* part) {
  return text.find(part) != std::wstring::npos;
}

void PollJobs(IPPProviderImpl* provider, HANDLE ended, const TraceScope& trace) {
  for (bool selectState = false; WaitForSingleObject(ended, kJobPollMs) == WAIT_TIMEOUT;
       selectState = !selectState) {
    // Another job's beginning resets the event, which all jobs of the system share.
    if (provider->GetPrintStatus() != 0) return;
    if (provider->GetJobs(selectState) != S_FALSE) {
      trace.Message(kTraceInfo, L"GetJobs return some kind of Cancellation/Completion status");
      return;
    }
  }
}

void PollPrinter(IPPProviderImpl* provider, HANDLE ready, const TraceScope& trace) {
  while (provider->GetbPrinteStatusThreadPoll() != 0) {
    std::wstring state;
    std::wstring reasons;
    if (provider->GetPrinterState(&state, &reasons) != S_OK) return;
    if (ReasonsContain(state, L"5") && ReasonsContain(reasons, kSpoolFull)) {
      ResetEvent(ready);
    } else {
      SetEvent(ready);
    }
    trace.Message(kTraceInfo, L"Printer state = %ls and Printer-State-Reasons = %ls", state.c_str(),
                  reasons.c_str());
    provider->Watch().PauseBetweenPolls(kPrinterPollMs);
  }
}

using Poll = void (*)(IPPProviderImpl*, HANDLE, const TraceScope&);

// Without memory the job goes on unwatched, and its answer tells how it ended.
unsigned RunThread(void* argument, HANDLE (IPPProviderImpl::*event)() const, Poll poll,
                   const TraceScope& trace) {
  auto* const provider = static_cast<IPPProviderImpl*>(argument);
  const HANDLE handle = provider ? (provider->*event)() : nullptr;
  if (!handle) return 1;
  return BehindWall(0u, [&] {
    poll(provider, handle, trace);
    return 0u;
  });
}

}  // namespace

unsigned __stdcall GetJobsPollingThread(void* provider) {
  TraceScope trace(L"Corvane::GetJobsPollingThread");
  return RunThread(provider, &IPPProviderImpl::GetPrintStatusEventHandle, PollJobs, trace);
}

unsigned __stdcall GetPrinterStatusPollingThread(void* provider) {
  TraceScope trace(L"Corvane::GetPrinterStatusPollingThread");
  return RunThread(provider, &IPPProviderImpl::GetPrintReadyStatusEventHandle, PollPrinter, trace);
}

HRESULT IPPProviderImpl::GetPrinterState(std::wstring* state, std::wstring* reasons) {
  TraceScope trace(L"Corvane::IPPProviderImpl::GetPrinterState");
  const std::unique_ptr<IPPOperations> exchange = NewExchange();
  exchange->SetAttributeName("printer-state,printer-state-reasons");
  HTTPResponse* answer = nullptr;
  if (FAILED(exchange->SendIPPRequest(IPPOperation::kGetPrinterAttributes, &answer, nullptr,
                                      IsSecure())) ||
      FAILED(exchange->ParseIPPResponse(answer, nullptr))) {
    return E_FAIL;
  }
  *state = JoinedValue(*exchange, "printer-state");
  *reasons = JoinedValue(*exchange, "printer-state-reasons");
  return state->empty() ? E_FAIL : S_OK;
}

int IPPProviderImpl::CheckForPrinterReadyState() {
  TraceScope trace(L"Corvane::IPPProviderImpl::CheckForPrinterReadyState");
  std::wstring state;
  std::wstring reasons;
  if (GetPrinterState(&state, &reasons) != S_OK) {
    trace.Message(kTraceInfo, L"RetrievePrinterState fails with %d", GetLastError());
    return 2;
  }
  if (state == L"3" && !ReasonsContain(reasons, kSpoolFull)) return 1;
  trace.Message(kTraceInfo, L"Printer State: %ls", state.c_str());
  return 0;
}

}  // namespace Corvane
