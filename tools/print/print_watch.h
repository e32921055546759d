// What goes on beside the thread that sends a document: its progress, and Ctrl-C.
#ifndef CORVANE_TOOLS_PRINT_PRINT_WATCH_H_
#define CORVANE_TOOLS_PRINT_PRINT_WATCH_H_

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>

#include "tools/output/console.h"
#include "tools/print/own_job.h"
#include "tools/print/print_report.h"
#include "tools/print/progress.h"

namespace Corvane::Tool {

// What the sender does.
enum class PrintStep {
  kBeginning,  // waits until the printer is idle, and sends the first piece of several
  kSending,    // a document that is not complete yet
  kReading,    // waits for its next piece
  kFinishing,  // every byte may be out: it waits for the answer
};

// Cancels the job at the printer, and ends the process when the sender does not come to its end in
// time: a call of it may wait for the printer for long.
class PrintWatch {
 public:
  PrintWatch(Interruption& interruption, OwnJob& job, Progress& progress);
  PrintWatch(const PrintWatch&) = delete;
  PrintWatch& operator=(const PrintWatch&) = delete;
  ~PrintWatch() { Finish(); }

  // Of the sender.
  void Enter(PrintStep step) { m_step = step; }
  void AddSent(std::uint64_t bytes) { m_sentBytes += bytes; }
  // The sender is to stop: what it has begun is not to be finished.
  bool IsCancelled() const { return m_isCancelled; }
  // The job as if Ctrl-C had been pressed, for a document that cannot be read on.
  void Cancel() { m_isCancelled = true; }
  // The sender sends no more. Waits until the job is cancelled, if that is under way.
  void StopSending();
  // The sender holds nothing more of the document. Ends the watch: nothing without a Ctrl-C.
  std::optional<Cancellation> Finish();

 private:
  void Run();
  void CancelJob(Progress::Clock::time_point deadline);
  [[noreturn]] void Leave();

  Interruption& m_interruption;
  OwnJob& m_job;
  Progress& m_progress;
  std::atomic<PrintStep> m_step{PrintStep::kBeginning};
  std::atomic<std::uint64_t> m_sentBytes{0};
  std::atomic<bool> m_isCancelled{false};

  std::mutex m_mutex;  // guards everything below but the thread
  std::condition_variable m_changed;
  bool m_hasStopped = false;
  bool m_hasFinished = false;
  std::optional<Cancellation> m_cancellation;  // once the job has been cancelled, or not

  std::thread m_thread;
};

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_PRINT_PRINT_WATCH_H_
