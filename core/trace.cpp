#include "core/trace.h"

#include <cstdarg>
#include <cwchar>
#include <mutex>
#include <shared_mutex>

namespace Corvane {
namespace {

// Constant-initialised and never destroyed before the last trace: leaks are reported when statics
// go.
constinit struct {
  std::shared_mutex mutex;
  TraceSink sink = nullptr;
  void* context = nullptr;
} g_sink;

// Set while this thread is inside the sink: what the sink does is not traced, and takes no lock
// twice.
thread_local bool t_insideSink = false;

constexpr std::size_t kMaxMessageChars = 1024;

}  // namespace

constinit std::atomic<std::uint32_t> g_traceMask{0};

void WriteTrace(const TraceEvent& event) {
  if (t_insideSink) return;
  const std::shared_lock lock(g_sink.mutex);
  // Asked again under the lock: the sink may have changed since the trace point looked.
  if (!g_sink.sink || !TraceEnabled(event.level)) return;
  t_insideSink = true;
  g_sink.sink(g_sink.context, &event);
  t_insideSink = false;
}

void WriteTraceMessage(std::uint32_t level, const wchar_t* function, const wchar_t* format, ...) {
  wchar_t text[kMaxMessageChars];
  va_list arguments;
  va_start(arguments, format);
  const int written = std::vswprintf(text, kMaxMessageChars, format, arguments);
  va_end(arguments);
  if (written < 0) text[kMaxMessageChars - 1] = L'\0';  // cut: the buffer holds what fitted
  WriteTrace({TraceKind::kMessage, level, function, text, 0});
}

void TraceScope::Enter() {
  m_entered = true;
  WriteTrace({TraceKind::kEnter, kTraceScope, m_function, nullptr, 0});
  m_start = std::chrono::steady_clock::now();
}

void TraceScope::Exit() {
  const auto elapsed = std::chrono::steady_clock::now() - m_start;
  const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(elapsed).count();
  WriteTrace({TraceKind::kExit, kTraceScope, m_function, nullptr,
              static_cast<std::uint64_t>(microseconds)});
}

}  // namespace Corvane

void SetTraceSink(Corvane::TraceSink sink, void* context, std::uint32_t mask) {
  using namespace Corvane;
  const std::unique_lock lock(g_sink.mutex);
  g_sink.sink = sink;
  g_sink.context = context;
  g_traceMask.store(sink ? mask : 0, std::memory_order_relaxed);
}
