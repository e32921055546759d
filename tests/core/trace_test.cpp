#include "core/trace.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/trace_recorder.h"

namespace Corvane::Test {
namespace {

TEST(Trace, ScopeWritesEntryAndExitAlsoWhenAnExceptionPasses) {
  const TraceRecorder recorder(kTraceScope);
  try {
    TraceScope trace(L"Operation");
    trace.Message(kTraceInfo, L"not in the mask");
    throw std::runtime_error("passes");
  } catch (const std::runtime_error&) {
  }
  EXPECT_EQ(L"> Operation\n< Operation\n", recorder.Text());
}

TEST(Trace, LevelsAreBitsOfTheMask) {
  for (const std::uint32_t mask : {0u, 16u, 32u, 128u, 16u | 128u}) {
    const TraceRecorder recorder(mask);
    for (const std::uint32_t level : {16u, 32u, 128u}) Trace(level, L"f", L"%d", level);
    std::uint32_t seen = 0;
    for (const auto& line : recorder.Lines()) seen |= line.level;
    EXPECT_EQ(mask, seen);
  }
}

TEST(Trace, CutsLongMessages) {
  const TraceRecorder recorder(kTraceAll);
  Trace(kTraceInfo, L"f", L"%ls", std::wstring(5000, L'x').c_str());
  EXPECT_EQ(L"16 f: " + std::wstring(1023, L'x') + L'\n', recorder.Text());
}

TEST(Trace, DropsWhatTheSinkItselfCauses) {
  int calls = 0;
  SetTraceSink(
      [](void* context, const TraceEvent*) {
        ++*static_cast<int*>(context);
        Trace(kTraceInfo, L"f", L"from inside");
      },
      &calls, kTraceAll);
  Trace(kTraceInfo, L"f", L"once");
  SetTraceSink(nullptr, nullptr, 0);
  EXPECT_EQ(1, calls);
}

}  // namespace
}  // namespace Corvane::Test
