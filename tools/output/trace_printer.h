// The library's trace, as indented lines.
#ifndef CORVANE_TOOLS_OUTPUT_TRACE_PRINTER_H_
#define CORVANE_TOOLS_OUTPUT_TRACE_PRINTER_H_

#include <cstddef>
#include <map>
#include <mutex>
#include <ostream>
#include <string>
#include <thread>

#include "corvane/trace.h"

namespace Corvane::Tool {

// Prints every event to `out` while it lives, two blanks deeper for each operation that the thread
// is in:
//   trace: > Corvane::CreateQUARNProvider
//   trace:   severe: CoInitialize Passed [Corvane::XMLProvider::XMLProvider]
//   trace: < Corvane::CreateQUARNProvider 0.412 ms
class TracePrinter {
 public:
  explicit TracePrinter(std::ostream& out);
  TracePrinter(const TracePrinter&) = delete;
  TracePrinter& operator=(const TracePrinter&) = delete;
  ~TracePrinter();

 private:
  static void Receive(void* context, const TraceEvent* event);
  void Print(const TraceEvent& event);

  std::ostream& m_out;
  std::mutex m_mutex;
  std::map<std::thread::id, std::size_t> m_depths;  // guarded by m_mutex
};

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_OUTPUT_TRACE_PRINTER_H_
