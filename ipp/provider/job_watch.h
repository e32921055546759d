// The watch over the job being printed.
#ifndef CORVANE_IPP_PROVIDER_JOB_WATCH_H_
#define CORVANE_IPP_PROVIDER_JOB_WATCH_H_

#include <cstdint>
#include <mutex>

#include "core/system_handles.h"
#include "corvane/ipp_request.h"
#include "ipp/provider/current_job.h"

namespace Corvane {

class IPPProviderImpl;

// What the sender of a document, the two polling threads and whoever cancels the job tell each
// other. The sender is the thread that the provider belongs to; its operations are its own, all
// others are for any thread.
//
// Lock order: there is none to keep. m_statusLock, m_pollLock and the lock of the job's identity
// are never held together, nor during an exchange or a wait.
class JobWatch {
 public:
  // How the printer has ended the job before its time.
  enum class DeviceEnd { kNone, kAborted, kCancelled };

  // `provider` holds the watch, and the threads ask through it.
  explicit JobWatch(IPPProviderImpl* provider);

  // --- The sender.

  // A job begins, for the user and with the name of `request`.
  void Begin(IPPRequestBase* request);
  // Bytes of the document are about to go out. False when the job has been cancelled: then none
  // may, and those who are cancelling it, who look for it as long as it is being sent, are done.
  bool BeginSending();
  // The event that chunks go with is there from the first one on, the threads only behind it.
  void OpenReadyEvent();
  void StartThreads();
  HANDLE ReadyEvent() const { return m_readyEvent.Get(); }
  // Waits while the printer's spool is full, until somebody ends the job or nobody can tell any
  // more; false after `limitMs`.
  bool AwaitRoom(std::uint32_t limitMs);
  // Less long when the job is cancelled.
  void Pause(std::uint32_t milliseconds) const;
  // Joins the threads, if there are any.
  void StopThreads();
  // The job is over, however it went: does that, and waits for those who are cancelling it.
  void End();

  // --- Cancelling.

  // Marks the job, and gives `request` its user and headers. False when there is none that could
  // still be cancelled; else End waits for EndCancelling, to which `atPrinter` tells whether the
  // printer has done so.
  bool BeginCancelling(IPPRequestBase* request);
  void EndCancelling(bool atPrinter);
  bool IsCancelled() const { return Read(m_isCancelled); }
  // Whether the printer may have some of the document, and its outcome is open.
  bool IsSending() const { return Read(m_phase) == Phase::kSending; }

  // --- How the job fares. The names are those of the provider, under which they are traced.

  CurrentJob& Job() { return m_job; }
  DeviceEnd EndAtDevice() const { return Read(m_deviceEnd); }
  void MarkEnded(DeviceEnd end);
  void SetPrintStatus();
  std::uint32_t GetPrintStatus() const { return Read(m_printStatus); }
  std::uint32_t GetbPrinteStatusThreadPoll() const;
  void SetPrintReadyStatus();
  HANDLE GetPrintStatusEventHandle() const;
  HANDLE GetPrintReadyStatusEventHandle() const;
  // Less long when the polling of the printer is to end.
  void PauseBetweenPolls(std::uint32_t milliseconds) const;
  void StopAllThreadsRunning();

 private:
  enum class Phase { kNone, kBeginning, kSending };

  void AwaitCancelling() const;
  void StartJobsThread();
  void ResumeJobsThread();
  template <typename T>
  T Read(const T& guarded) const {
    const std::lock_guard lock(m_statusLock);
    return guarded;
  }

  IPPProviderImpl* const m_provider;
  CurrentJob m_job;
  const UniqueHandle m_pollingEndEvent;  // set when m_pollPrinter is not
  const UniqueHandle m_cancelEvent;      // set when m_isCancelled is

  // Of the sender, but that the threads use the events while they run.
  UniqueHandle m_jobsThread;
  UniqueHandle m_printerThread;
  UniqueHandle m_statusEvent;  // the job has ended, or the threads must stop
  UniqueHandle m_readyEvent;   // the printer's spool has room

  mutable SystemLock m_statusLock;  // guards the next ones
  Phase m_phase = Phase::kNone;
  std::uint32_t m_printStatus = 0;  // the job has ended, or the threads must stop
  DeviceEnd m_deviceEnd = DeviceEnd::kNone;
  bool m_isCancelled = false;
  int m_cancelling = 0;    // threads between BeginCancelling and EndCancelling
  IPPHeaderMap m_headers;  // of the job's request

  mutable SystemLock m_pollLock;  // guards the next one
  std::uint32_t m_pollPrinter = 1;
};

// The polling threads, whose argument is the provider. 0; 1 without a provider or its event.
unsigned __stdcall GetJobsPollingThread(void* provider);
unsigned __stdcall GetPrinterStatusPollingThread(void* provider);

}  // namespace Corvane

#endif  // CORVANE_IPP_PROVIDER_JOB_WATCH_H_
