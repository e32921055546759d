#include "core/trace.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/trace_recorder.h"

namespace Corvane::Test {
namespace {

TEST(Trace, ScopeWritesEntryAndExitAlsoWhenAnExceptionPasses) {
  const TraceRecorder recorder(kTraceScope);
  try {
    TraceScope trace(L"Corvane::Test::Operation");
    trace.Message(kTraceInfo, L"not in the mask");
    throw std::runtime_error("passes");
  } catch (const std::runtime_error&) {
  }
  const auto lines = recorder.Lines();
  ASSERT_EQ(2u, lines.size());
  EXPECT_EQ(TraceKind::kEnter, lines[0].kind);
  EXPECT_EQ(TraceKind::kExit, lines[1].kind);
  EXPECT_EQ(L"Corvane::Test::Operation", lines[1].function);
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

TEST(Trace, CutsLongMessagesAndSurvivesUnprintableOnes) {
  const TraceRecorder recorder(kTraceAll);
  const std::wstring text(5000, L'x');
  Trace(kTraceInfo, L"f", L"%ls", text.c_str());
  ASSERT_EQ(1u, recorder.Lines().size());
  EXPECT_EQ(1023u, recorder.Lines()[0].message.size());
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
