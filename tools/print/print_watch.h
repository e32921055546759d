// What goes on beside the thread that sends a document: its progress, and Ctrl-C.
#ifndef CORVANE_TOOLS_PRINT_PRINT_WATCH_H_
#define CORVANE_TOOLS_PRINT_PRINT_WATCH_H_

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>

#include "corvane/ipp_provider.h"
#include "tools/output/console.h"
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

// Cancels the job, and ends the process when the sender does not come to its end in time: a call of
// it may wait for the printer for long.
class PrintWatch {
 public:
  // Of the document that `provider`, over `address`, is about to print.
  PrintWatch(Interruption& interruption, IPPProvider& provider, Address& address,
             Progress& progress);
  PrintWatch(const PrintWatch&) = delete;
  PrintWatch& operator=(const PrintWatch&) = delete;
  ~PrintWatch() { Finish(); }

  // Of the sender.
  void Enter(PrintStep step) { m_step = step; }
  void AddSent(std::uint64_t bytes) { m_sentBytes += bytes; }
  // The sender has ended. Ends the watch: nothing without a Ctrl-C.
  std::optional<Cancellation> Finish();

 private:
  void Run();
  void CancelJob();
  [[noreturn]] void Leave(const Cancellation& cancellation);

  Interruption& m_interruption;
  IPPProvider& m_provider;
  Address& m_address;
  Progress& m_progress;
  std::atomic<PrintStep> m_step{PrintStep::kBeginning};
  std::atomic<std::uint64_t> m_sentBytes{0};
  std::optional<Cancellation> m_cancellation;  // of the thread, until that has ended

  std::mutex m_mutex;  // guards the next one
  std::condition_variable m_changed;
  bool m_hasFinished = false;

  std::thread m_thread;
};

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_PRINT_PRINT_WATCH_H_
