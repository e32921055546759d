#include "tools/print/print_watch.h"

#include <cstdlib>
#include <exception>
#include <utility>

#include "tools/output/failure.h"

namespace Corvane::Tool {
namespace {

using Clock = Progress::Clock;
using std::chrono::milliseconds;

constexpr milliseconds kPollPause{50};
constexpr milliseconds kListPause{500};
// From Ctrl-C on. The library needs a second to see a job's end, and one exchange to stop.
constexpr milliseconds kPatience{5'000};
// Where the sender waits for something that a cancelled job does not end.
constexpr milliseconds kShortPatience{500};

const char* NameOf(PrintStep step) {
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

PrintWatch::PrintWatch(Interruption& interruption, OwnJob& job, Progress& progress)
    : m_interruption(interruption),
      m_job(job),
      m_progress(progress),
      m_thread(&PrintWatch::Run, this) {}

void PrintWatch::StopSending() {
  std::unique_lock lock(m_mutex);
  m_hasStopped = true;
  m_changed.notify_all();
  if (m_isCancelled) m_changed.wait(lock, [this] { return m_cancellation.has_value(); });
}

std::optional<Cancellation> PrintWatch::Finish() {
  {
    const std::lock_guard lock(m_mutex);
    m_hasStopped = m_hasFinished = true;
    m_changed.notify_all();
  }
  if (m_thread.joinable()) m_thread.join();
  return m_cancellation;
}

void PrintWatch::Run() {
  for (bool isPressed = false; !isPressed && !m_isCancelled;) {
    isPressed = m_interruption.Wait(kPollPause);
    m_progress.Tell(m_sentBytes, NameOf(m_step));
    const std::lock_guard lock(m_mutex);
    if (m_hasFinished) return;
    if (isPressed) m_isCancelled = true;
  }
  const Clock::time_point deadline = Clock::now() + kPatience;
  m_progress.Say("cancelling the job; press Ctrl-C again to leave at once");
  CancelJob(deadline);
  std::unique_lock lock(m_mutex);
  const bool willEnd = m_hasStopped || (m_cancellation->result == CancelResult::kCancelled &&
                                        m_step != PrintStep::kReading);
  m_changed.wait_until(lock, willEnd ? deadline : Clock::now() + kShortPatience,
                       [this] { return m_hasFinished; });
  if (!m_hasFinished) Leave();
}

// A document that is complete may become a job a moment later.
void PrintWatch::CancelJob(Clock::time_point deadline) {
  Cancellation cancellation;
  for (bool again = true; again;) {
    try {
      cancellation.result = m_job.Cancel(&cancellation.text);
    } catch (const std::exception&) {
      cancellation = {CancelResult::kUnknown, "out of memory"};
    }
    std::unique_lock lock(m_mutex);
    again = cancellation.result == CancelResult::kNoJob && m_step == PrintStep::kFinishing &&
            Clock::now() + kListPause < deadline &&
            !m_changed.wait_for(lock, kListPause, [this] { return m_hasStopped; });
  }
  const std::lock_guard lock(m_mutex);
  m_cancellation = std::move(cancellation);
  m_changed.notify_all();
}

// Nothing is to be given back: the connection goes with the process, and with it the document.
void PrintWatch::Leave() {
  const bool mayPrint =
      m_step == PrintStep::kFinishing && m_cancellation->result != CancelResult::kCancelled;
  m_progress.Say(mayPrint ? PerhapsPrintedText(*m_cancellation) : CancelledText(*m_cancellation));
  std::_Exit(mayPrint ? kPerhapsPrinted : kCancelled);
}

}  // namespace Corvane::Tool
