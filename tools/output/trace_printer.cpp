#include "tools/output/trace_printer.h"

#include <cstdio>
#include <exception>

#include "tools/output/text.h"

namespace Corvane::Tool {
namespace {

std::string LevelName(std::uint32_t level) {
  switch (level) {
    case kTraceInfo:
      return "info";
    case kTraceError:
      return "error";
    case kTraceSevere:
      return "severe";
    default:
      return "level " + std::to_string(level);
  }
}

std::string EscapedTrace(const wchar_t* text) {
  return text ? EscapeText(std::wstring_view(text)) : std::string();
}

}  // namespace

TracePrinter::TracePrinter(std::ostream& out) : m_out(out) {
  SetTraceSink(&TracePrinter::Receive, this, kTraceAll);
}

TracePrinter::~TracePrinter() { SetTraceSink(nullptr, nullptr, 0); }

void TracePrinter::Receive(void* context, const TraceEvent* event) {
  try {
    static_cast<TracePrinter*>(context)->Print(*event);
  } catch (const std::exception&) {
    // No memory for the line: the trace loses it, the run goes on.
  }
}

void TracePrinter::Print(const TraceEvent& event) {
  const std::lock_guard lock(m_mutex);
  std::size_t& depth = m_depths[std::this_thread::get_id()];
  if (event.kind == TraceKind::kExit && depth > 0) --depth;
  std::string line = "trace: " + std::string(2 * depth, ' ');
  switch (event.kind) {
    case TraceKind::kEnter:
      line += "> " + EscapedTrace(event.function);
      ++depth;
      break;
    case TraceKind::kExit: {
      char elapsed[40];
      std::snprintf(elapsed, sizeof elapsed, " %.3f ms",
                    static_cast<double>(event.elapsedMicroseconds) / 1000);
      line += "< " + EscapedTrace(event.function) + elapsed;
      break;
    }
    case TraceKind::kMessage:
      line += LevelName(event.level) + ": " + EscapedTrace(event.message);
      if (event.function) line += " [" + EscapedTrace(event.function) + "]";
      break;
  }
  m_out << line << '\n' << std::flush;
}

}  // namespace Corvane::Tool
