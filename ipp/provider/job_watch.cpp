#include "ipp/provider/job_watch.h"

#include "core/trace.h"
#include "platform/system.h"

namespace Corvane {
namespace {

constexpr wchar_t kPrintStatusName[] = L"PrintJobStatus";
constexpr DWORD kRoomSliceMs = 200;
constexpr DWORD kCancelSliceMs = 20;

UniqueHandle MakeWatchEvent(const wchar_t* name = nullptr) {
  return UniqueHandle(CreateEventW(nullptr, TRUE, FALSE, name));
}

UniqueHandle StartWatchThread(unsigned(__stdcall* thread)(void*), IPPProviderImpl* provider) {
  const std::uintptr_t handle = _beginthreadex(nullptr, 0, thread, provider, 0, nullptr);
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the system's own type for a handle
  return UniqueHandle(reinterpret_cast<HANDLE>(handle));
}

void SignalWatch(const UniqueHandle& event) {
  if (event) SetEvent(event.Get());
}

void WaitForWatch(const UniqueHandle& event, DWORD milliseconds) {
  if (WaitForSingleObject(event.Get(), milliseconds) == WAIT_FAILED) Sleep(milliseconds);
}

}  // namespace

JobWatch::JobWatch(IPPProviderImpl* provider)
    : m_provider(provider), m_pollingEndEvent(MakeWatchEvent()), m_cancelEvent(MakeWatchEvent()) {}

void JobWatch::Begin(IPPRequestBase* request) {
  m_job.Begin(request->GetRequestingUserName(), request->GetUsername(), request->GetJobName());
  const std::lock_guard lock(m_statusLock);
  m_headers = request->GetExtraHTTPHeader();
  m_phase = Phase::kBeginning;
  m_printStatus = 0;
  m_deviceEnd = DeviceEnd::kNone;
  m_isCancelled = false;
  if (m_cancelEvent) ResetEvent(m_cancelEvent.Get());
}

bool JobWatch::BeginSending() {
  {
    const std::lock_guard lock(m_statusLock);
    if (!m_isCancelled) {
      m_phase = Phase::kSending;
      return true;
    }
  }
  AwaitCancelling();
  return false;
}

void JobWatch::OpenReadyEvent() {
  m_readyEvent = MakeWatchEvent();
  SignalWatch(m_readyEvent);
}

void JobWatch::StartThreads() {
  m_statusEvent = MakeWatchEvent(kPrintStatusName);
  if (m_statusEvent) ResetEvent(m_statusEvent.Get());
  StartJobsThread();
  if (!m_readyEvent) {
    Trace(kTraceSevere, L"Corvane::IPPProviderImpl::StartPolling",
          L"Unable to create PrintJobSignaled event (%d)", GetLastError());
    return;
  }
  m_printerThread = StartWatchThread(GetPrinterStatusPollingThread, m_provider);
}

void JobWatch::StartJobsThread() {
  Trace(kTraceInfo, L"Corvane::IPPProviderImpl::StartJobsThread", L"_beginthreadex starts");
  m_jobsThread = StartWatchThread(GetJobsPollingThread, m_provider);
}

// The event is of all jobs of the system: when another one ends, this one's thread ends, too.
void JobWatch::ResumeJobsThread() {
  if (!m_jobsThread || !m_statusEvent || GetPrintStatus() != 0) return;
  if (WaitForSingleObject(m_jobsThread.Get(), 0) != WAIT_OBJECT_0) return;
  ResetEvent(m_statusEvent.Get());
  StartJobsThread();
}

bool JobWatch::AwaitRoom(std::uint32_t limitMs) {
  if (!m_readyEvent || !m_printerThread) return true;
  const HANDLE objects[] = {m_readyEvent.Get(), m_printerThread.Get()};
  for (DWORD waited = 0; EndAtDevice() == DeviceEnd::kNone && !IsCancelled();
       waited += kRoomSliceMs) {
    ResumeJobsThread();
    if (WaitForMultipleObjects(2, objects, FALSE, kRoomSliceMs) != WAIT_TIMEOUT) break;
    if (waited >= limitMs) return false;
  }
  return true;
}

void JobWatch::Pause(std::uint32_t milliseconds) const {
  WaitForWatch(m_cancelEvent, milliseconds);
}

void JobWatch::End() {
  {
    const std::lock_guard lock(m_statusLock);
    m_phase = Phase::kNone;
    m_headers.clear();
  }
  StopThreads();
  AwaitCancelling();
}

void JobWatch::AwaitCancelling() const {
  while (Read(m_cancelling) > 0) Sleep(kCancelSliceMs);
}

// Without threads nothing is stopped for good: the next job has both.
void JobWatch::StopThreads() {
  if (m_jobsThread || m_printerThread) StopAllThreadsRunning();
  m_readyEvent.Reset();
  m_statusEvent.Reset();
}

bool JobWatch::BeginCancelling(IPPRequestBase* request) {
  request->SetRequestingUserName(m_job.User().c_str());
  const std::lock_guard lock(m_statusLock);
  if (m_phase == Phase::kNone) return false;
  request->GetExtraHTTPHeader() = m_headers;
  m_isCancelled = true;
  ++m_cancelling;
  SignalWatch(m_cancelEvent);
  return true;
}

void JobWatch::EndCancelling(bool atPrinter) {
  const std::lock_guard lock(m_statusLock);
  if (atPrinter) m_deviceEnd = DeviceEnd::kCancelled;
  --m_cancelling;
}

void JobWatch::MarkEnded(DeviceEnd end) {
  SetPrintStatus();
  {
    const std::lock_guard lock(m_statusLock);
    m_deviceEnd = end;
  }
  SignalWatch(m_statusEvent);
}

void JobWatch::SetPrintStatus() {
  TraceScope trace(L"Corvane::IPPProviderImpl::SetPrintStatus");
  const std::lock_guard lock(m_statusLock);
  m_printStatus = 1;
}

std::uint32_t JobWatch::GetbPrinteStatusThreadPoll() const {
  TraceScope trace(L"Corvane::IPPProviderImpl::GetbPrinteStatusThreadPoll");
  const std::lock_guard lock(m_pollLock);
  return m_pollPrinter;
}

void JobWatch::SetPrintReadyStatus() {
  TraceScope trace(L"Corvane::IPPProviderImpl::SetPrintReadyStatus");
  {
    const std::lock_guard lock(m_pollLock);
    m_pollPrinter = 0;
  }
  SignalWatch(m_pollingEndEvent);
}

HANDLE JobWatch::GetPrintStatusEventHandle() const {
  TraceScope trace(L"Corvane::IPPProviderImpl::GetPrintStatusEventHandle");
  return m_statusEvent.Get();
}

HANDLE JobWatch::GetPrintReadyStatusEventHandle() const {
  TraceScope trace(L"Corvane::IPPProviderImpl::GetPrintReadyStatusEventHandle");
  return m_readyEvent.Get();
}

void JobWatch::PauseBetweenPolls(std::uint32_t milliseconds) const {
  WaitForWatch(m_pollingEndEvent, milliseconds);
}

void JobWatch::StopAllThreadsRunning() {
  TraceScope trace(L"Corvane::IPPProviderImpl::StopAllThreadsRunning");
  SetPrintReadyStatus();
  SetPrintStatus();
  SignalWatch(m_statusEvent);
  for (UniqueHandle* const thread : {&m_jobsThread, &m_printerThread}) {
    if (*thread) WaitForSingleObject(thread->Get(), INFINITE);
    thread->Reset();
  }
  m_readyEvent.Reset();
  m_statusEvent.Reset();
}

}  // namespace Corvane
