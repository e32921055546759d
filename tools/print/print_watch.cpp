#include "tools/print/print_watch.h"

#include <cstdlib>

#include "tools/output/failure.h"

namespace Corvane::Tool {
namespace {

using Clock = Progress::Clock;
using std::chrono::milliseconds;

constexpr milliseconds kPollPause{50};
// From Ctrl-C on. The library needs a second to see a job's end, and one exchange to stop.
constexpr milliseconds kPatience{5'000};
// Where the sender waits for something that a cancelled job does not end.
constexpr milliseconds kShortPatience{500};

const char* WatchedJobName(PrintStep step) {
  switch (step) {
    case PrintStep::kBeginning:
      return "waiting for the printer";
    case PrintStep::kReading:
      return "reading";
    case PrintStep::kFinishing:
      return "waiting for the printer's answer";
    default:
      return "sending";
  }
}

}  // namespace

PrintWatch::PrintWatch(Interruption& interruption, IPPProvider& provider, Address& address,
                       Progress& progress)
    : m_interruption(interruption),
      m_provider(provider),
      m_address(address),
      m_progress(progress),
      m_thread(&PrintWatch::Run, this) {}

std::optional<Cancellation> PrintWatch::Finish() {
  {
    const std::lock_guard lock(m_mutex);
    m_hasFinished = true;
    m_changed.notify_all();
  }
  if (m_thread.joinable()) m_thread.join();
  return m_cancellation;
}

void PrintWatch::Run() {
  for (bool isPressed = false; !isPressed;) {
    isPressed = m_interruption.Wait(kPollPause);
    m_progress.Tell(m_sentBytes, WatchedJobName(m_step));
    const std::lock_guard lock(m_mutex);
    if (m_hasFinished) return;
  }
  CancelJob();
}

void PrintWatch::CancelJob() {
  const Clock::time_point deadline = Clock::now() + kPatience;
  m_progress.Say("cancelling the job; press Ctrl-C again to leave at once");
  m_cancellation = Cancel(m_provider, m_address);
  std::unique_lock lock(m_mutex);
  const bool willEnd =
      m_cancellation->result != CancelResult::kUnknown && m_step != PrintStep::kReading;
  m_changed.wait_until(lock, willEnd ? deadline : Clock::now() + kShortPatience,
                       [this] { return m_hasFinished; });
  if (!m_hasFinished) Leave(*m_cancellation);
}

// Nothing is to be given back: the connection goes with the process, and with it the document.
void PrintWatch::Leave(const Cancellation& cancellation) {
  const bool mayPrint =
      m_step == PrintStep::kFinishing && cancellation.result != CancelResult::kCancelled;
  m_progress.Say(mayPrint ? PerhapsPrintedText(cancellation) : CancelledText(cancellation));
  std::_Exit(mayPrint ? kPerhapsPrinted : kCancelled);
}

}  // namespace Corvane::Tool
