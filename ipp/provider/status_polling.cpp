// The threads that watch the printer and the job while a document is on its way.
#include <mutex>

#include "core/trace.h"
#include "ipp/ipp_codes.h"
#include "ipp/provider/ipp_provider_impl.h"
#include "ipp/provider/value_text.h"
#include "platform/system.h"

namespace Corvane {
namespace {

constexpr wchar_t kPrintStatusName[] = L"PrintJobStatus";
constexpr wchar_t kSpoolFull[] = L"spool-area-full";
constexpr DWORD kJobPollMs = 1000;
constexpr DWORD kPrinterPollMs = 5000;

bool Contains(const std::wstring& text, const wchar_t* part) {
  return text.find(part) != std::wstring::npos;
}

UniqueHandle Start(unsigned(__stdcall* thread)(void*), IPPProviderImpl* provider) {
  const std::uintptr_t handle = _beginthreadex(nullptr, 0, thread, provider, 0, nullptr);
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the system's own type for a handle
  return UniqueHandle(reinterpret_cast<HANDLE>(handle));
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
    if (Contains(state, L"5") && Contains(reasons, kSpoolFull)) {
      ResetEvent(ready);
    } else {
      SetEvent(ready);
    }
    trace.Message(kTraceInfo, L"Printer state = %ls and Printer-State-Reasons = %ls", state.c_str(),
                  reasons.c_str());
    provider->PauseBetweenPolls(kPrinterPollMs);
  }
}

}  // namespace

unsigned __stdcall GetJobsPollingThread(void* argument) {
  TraceScope trace(L"Corvane::GetJobsPollingThread");
  auto* const provider = static_cast<IPPProviderImpl*>(argument);
  const HANDLE ended = provider ? provider->GetPrintStatusEventHandle() : nullptr;
  if (!ended) return 1;
  try {
    PollJobs(provider, ended, trace);
  } catch (...) {
    // No memory: the job goes on unwatched, and its answer tells how it ended.
  }
  return 0;
}

unsigned __stdcall GetPrinterStatusPollingThread(void* argument) {
  TraceScope trace(L"Corvane::GetPrinterStatusPollingThread");
  auto* const provider = static_cast<IPPProviderImpl*>(argument);
  const HANDLE ready = provider ? provider->GetPrintReadyStatusEventHandle() : nullptr;
  if (!ready) return 1;
  try {
    PollPrinter(provider, ready, trace);
  } catch (...) {
    // As above.
  }
  return 0;
}

void IPPProviderImpl::SetPrintStatus() {
  TraceScope trace(L"Corvane::IPPProviderImpl::SetPrintStatus");
  const std::lock_guard lock(m_printStatusLock);
  m_printStatus = 1;
}

std::uint32_t IPPProviderImpl::GetPrintStatus() {
  const std::lock_guard lock(m_printStatusLock);
  return m_printStatus;
}

void IPPProviderImpl::MarkJobEnded(DeviceEnd end) {
  SetPrintStatus();
  {
    const std::lock_guard lock(m_printStatusLock);
    m_deviceEnd = end;
  }
  if (m_printStatusEvent) SetEvent(m_printStatusEvent.Get());
}

IPPProviderImpl::DeviceEnd IPPProviderImpl::EndAtDevice() {
  const std::lock_guard lock(m_printStatusLock);
  return m_deviceEnd;
}

std::uint32_t IPPProviderImpl::GetbPrinteStatusThreadPoll() {
  TraceScope trace(L"Corvane::IPPProviderImpl::GetbPrinteStatusThreadPoll");
  const std::lock_guard lock(m_printerStatusLock);
  return m_pollPrinterStatus;
}

void IPPProviderImpl::SetPrintReadyStatus() {
  TraceScope trace(L"Corvane::IPPProviderImpl::SetPrintReadyStatus");
  {
    const std::lock_guard lock(m_printerStatusLock);
    m_pollPrinterStatus = 0;
  }
  if (m_pollingEndEvent) SetEvent(m_pollingEndEvent.Get());
}

HANDLE IPPProviderImpl::GetPrintStatusEventHandle() const {
  TraceScope trace(L"Corvane::IPPProviderImpl::GetPrintStatusEventHandle");
  return m_printStatusEvent.Get();
}

HANDLE IPPProviderImpl::GetPrintReadyStatusEventHandle() const {
  TraceScope trace(L"Corvane::IPPProviderImpl::GetPrintReadyStatusEventHandle");
  return m_printReadyEvent.Get();
}

void IPPProviderImpl::PauseBetweenPolls(std::uint32_t milliseconds) const {
  if (WaitForSingleObject(m_pollingEndEvent.Get(), milliseconds) == WAIT_FAILED) {
    Sleep(milliseconds);
  }
}

HRESULT IPPProviderImpl::GetPrinterState(std::wstring* state, std::wstring* reasons) {
  TraceScope trace(L"Corvane::IPPProviderImpl::GetPrinterState");
  const std::unique_ptr<IPPOperations> exchange = NewExchange();
  exchange->SetAttributeName("printer-state,printer-state-reasons");
  exchange->SetConnectionFlags(m_operations->ConnectionFlags());
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
  if (state == L"3" && !Contains(reasons, kSpoolFull)) return 1;
  trace.Message(kTraceInfo, L"Printer State: %ls", state.c_str());
  return 0;
}

// The ready event is there already: the first piece went with it.
void IPPProviderImpl::StartPolling() {
  m_printStatusEvent = UniqueHandle(CreateEventW(nullptr, TRUE, FALSE, kPrintStatusName));
  if (m_printStatusEvent) ResetEvent(m_printStatusEvent.Get());
  StartJobsThread();
  if (!m_printReadyEvent) {
    Trace(kTraceSevere, L"Corvane::IPPProviderImpl::StartPolling",
          L"Unable to create PrintJobSignaled event (%d)", GetLastError());
    return;
  }
  m_printerStatusThread = Start(GetPrinterStatusPollingThread, this);
}

void IPPProviderImpl::StartJobsThread() {
  Trace(kTraceInfo, L"Corvane::IPPProviderImpl::StartJobsThread", L"_beginthreadex starts");
  m_jobsThread = Start(GetJobsPollingThread, this);
}

// The event is of all jobs of the system: when another one ends, this one's thread ends, too.
void IPPProviderImpl::ResumeJobsThread() {
  if (!m_jobsThread || !m_printStatusEvent || GetPrintStatus() != 0) return;
  if (WaitForSingleObject(m_jobsThread.Get(), 0) != WAIT_OBJECT_0) return;
  ResetEvent(m_printStatusEvent.Get());
  StartJobsThread();
}

// Without threads nothing is stopped for good: the next job has both.
void IPPProviderImpl::StopPolling() {
  if (m_jobsThread || m_printerStatusThread) StopAllThreadsRunning();
  m_printReadyEvent.Reset();
  m_printStatusEvent.Reset();
}

void IPPProviderImpl::StopAllThreadsRunning() {
  TraceScope trace(L"Corvane::IPPProviderImpl::StopAllThreadsRunning");
  SetPrintReadyStatus();
  SetPrintStatus();
  if (m_printStatusEvent) SetEvent(m_printStatusEvent.Get());
  for (UniqueHandle* const thread : {&m_jobsThread, &m_printerStatusThread}) {
    if (*thread) WaitForSingleObject(thread->Get(), INFINITE);
    thread->Reset();
  }
  m_printReadyEvent.Reset();
  m_printStatusEvent.Reset();
}

}  // namespace Corvane
