// How far a document is, told on the error stream.
#ifndef CORVANE_TOOLS_PRINT_PROGRESS_H_
#define CORVANE_TOOLS_PRINT_PROGRESS_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <ostream>
#include <string>

namespace Corvane::Tool {

// "1.2 MB", in powers of 1000, as is usual for files and rates.
std::string FormatBytes(std::uint64_t bytes);

// On a terminal one line that is drawn again and again, elsewhere a line now and then. Any thread.
class Progress {
 public:
  using Clock = std::chrono::steady_clock;

  // `total` bytes, where that is known. `isTerminal`: `out` understands a carriage return.
  Progress(std::ostream& out, bool isTerminal, std::optional<std::uint64_t> total)
      : m_out(out), m_isTerminal(isTerminal), m_total(total) {}
  // Takes the drawn line away.
  ~Progress();

  // A line that stays: "corvane: " and `text`, which is escaped already.
  void Say(const std::string& text);
  // Draws what is due by now: every 200 ms on a terminal, else every 10 s. `doing` is "sending".
  void Tell(std::uint64_t sentBytes, const char* doing);

 private:
  std::string LineLocked(std::uint64_t sentBytes, const char* doing) const;
  void DrawLocked(const std::string& line);

  std::ostream& m_out;
  const bool m_isTerminal;
  const std::optional<std::uint64_t> m_total;

  std::mutex m_mutex;                        // guards everything below, and m_out
  Clock::time_point m_begin = Clock::now();  // when nothing had been sent yet
  Clock::time_point m_told = m_begin;
  std::size_t m_drawn = 0;  // columns of the line that stands on the terminal
};

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_PRINT_PROGRESS_H_
