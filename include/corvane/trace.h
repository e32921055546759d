// The trace facility: where the library says what it does. Off by default; a trace point that is
// off costs one test of a mask and formats nothing.
#ifndef CORVANE_TRACE_H_
#define CORVANE_TRACE_H_

#include <cstdint>

#include "corvane/platform.h"

namespace Corvane {

// Bits of the trace mask.
constexpr std::uint32_t kTraceScope = 1;     // entry and exit of every public operation
constexpr std::uint32_t kTraceInfo = 16;     // ordinary failures and progress
constexpr std::uint32_t kTraceError = 32;    // failures of exchanges and threads
constexpr std::uint32_t kTraceSevere = 128;  // graver ones, COM initialisation, objects left behind
constexpr std::uint32_t kTraceAll = 0xFFFFFFFF;

enum class TraceKind : std::uint32_t {
  kEnter = 0,    // an operation begins
  kExit = 1,     // it ends, also by an exception; elapsedMicroseconds is set
  kMessage = 2,  // a line of text; message is set
};

// One trace line. The texts belong to the library and end with the sink's call. Messages never hold
// document bodies or credentials.
struct TraceEvent {
  TraceKind kind;
  std::uint32_t level;                // one bit of the mask
  const wchar_t* function;            // "Corvane::XMLProvider::GetValue"
  const wchar_t* message;             // null but for kMessage; no line end
  std::uint64_t elapsedMicroseconds;  // 0 but for kExit
};

// Called on the thread that traces, possibly on several at once. What the sink itself causes to be
// traced is dropped. It must not throw.
using TraceSink = void (*)(void* context, const TraceEvent* event);

}  // namespace Corvane

// Installs `sink` for the events whose level is a bit of `mask`; a null sink or a mask of 0
// switches tracing off. When it returns, no call of the earlier sink is under way any more; so it
// must not be called from inside a sink. Any thread may call it. A sink stays installed until the
// module unloads, and then receives the events about leaked objects.
extern "C" CORVANE_API void SetTraceSink(Corvane::TraceSink sink, void* context,
                                         std::uint32_t mask);

namespace Corvane {
using ::SetTraceSink;
}

#endif  // CORVANE_TRACE_H_
