// Trace points: the scope of an operation, and message lines.
#ifndef CORVANE_CORE_TRACE_H_
#define CORVANE_CORE_TRACE_H_

#include <atomic>
#include <chrono>

#include "corvane/trace.h"

namespace Corvane {

// The type name that every object of the library reports.
inline constexpr char kClassIdentification[] =
    "<GetTypeName(): class identification disabled, refer to IDisposableImpl>";

extern std::atomic<std::uint32_t> g_traceMask;

inline bool TraceEnabled(std::uint32_t level) {
  return (g_traceMask.load(std::memory_order_relaxed) & level) != 0;
}

// Writes one event to the sink if the level is on. Messages are formatted as by vswprintf, with %ls
// for wide text, and cut after 1023 characters.
void WriteTrace(const TraceEvent& event);
void WriteTraceMessage(std::uint32_t level, const wchar_t* function, const wchar_t* format, ...);

template <typename... Arguments>
void Trace(std::uint32_t level, const wchar_t* function, const wchar_t* format,
           Arguments... arguments) {
  if (TraceEnabled(level)) WriteTraceMessage(level, function, format, arguments...);
}

// The first statement of a public operation: writes its entry, and its exit with the elapsed time,
// also when an exception passes. `function` must be a literal.
class TraceScope {
 public:
  explicit TraceScope(const wchar_t* function) : m_function(function) {
    if (TraceEnabled(kTraceScope)) Enter();
  }
  TraceScope(const TraceScope&) = delete;
  TraceScope& operator=(const TraceScope&) = delete;
  ~TraceScope() {
    if (m_entered) Exit();
  }

  template <typename... Arguments>
  void Message(std::uint32_t level, const wchar_t* format, Arguments... arguments) const {
    Trace(level, m_function, format, arguments...);
  }

 private:
  void Enter();
  void Exit();

  const wchar_t* m_function;
  bool m_entered = false;
  std::chrono::steady_clock::time_point m_start;
};

}  // namespace Corvane

#endif  // CORVANE_CORE_TRACE_H_
