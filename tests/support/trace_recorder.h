// Records trace lines while it lives.
#ifndef CORVANE_TESTS_SUPPORT_TRACE_RECORDER_H_
#define CORVANE_TESTS_SUPPORT_TRACE_RECORDER_H_

#include <mutex>
#include <string>
#include <vector>

#include "corvane/trace.h"

namespace Corvane::Test {

class TraceRecorder {
 public:
  struct Line {
    TraceKind kind;
    std::uint32_t level;
    std::wstring function;
    std::wstring message;
  };

  explicit TraceRecorder(std::uint32_t mask) { SetTraceSink(&TraceRecorder::Receive, this, mask); }
  TraceRecorder(const TraceRecorder&) = delete;
  TraceRecorder& operator=(const TraceRecorder&) = delete;
  ~TraceRecorder() { SetTraceSink(nullptr, nullptr, 0); }

  std::vector<Line> Lines() const {
    const std::lock_guard lock(m_mutex);
    return m_lines;
  }
  // One line an event: "> function" for its entry, "< function" for its exit, and messages as
  // "level function: message".
  std::wstring Text() const {
    std::wstring text;
    for (const Line& line : Lines()) {
      if (line.kind == TraceKind::kMessage) {
        text += std::to_wstring(line.level) + L' ' + line.function + L": " + line.message + L'\n';
      } else {
        text += (line.kind == TraceKind::kEnter ? L"> " : L"< ") + line.function + L'\n';
      }
    }
    return text;
  }
  bool HasMessage(std::uint32_t level, const wchar_t* function, const wchar_t* message) const {
    return Text().find(std::to_wstring(level) + L' ' + function + L": " + message + L'\n') !=
           std::wstring::npos;
  }

 private:
  static void Receive(void* context, const TraceEvent* event) {
    auto* const recorder = static_cast<TraceRecorder*>(context);
    const std::lock_guard lock(recorder->m_mutex);
    recorder->m_lines.push_back(
        {event->kind, event->level, event->function, event->message ? event->message : L""});
  }

  mutable std::mutex m_mutex;
  std::vector<Line> m_lines;
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_TRACE_RECORDER_H_
