#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <thread>

#include "corvane/data_map_spec.h"
#include "tests/support/counted.h"
#include "tests/support/trace_recorder.h"

namespace Corvane::Test {
namespace {

class Thing : public Counted<Corvane::IDisposable> {
 public:
  ~Thing() override { ++destroyed; }
  const char* GetTypeName() override { return "Thing"; }

  static inline int destroyed = 0;
};

class DisposableTest : public testing::Test {
 protected:
  DisposableTest() { Thing::destroyed = 0; }

  Thing* const m_thing = new Thing;  // counts for itself
};

TEST_F(DisposableTest, BothEntriesOfEachPairCount) {
  Corvane::IDisposable* const client = m_thing;
  ::IDisposable* const utility = m_thing;
  EXPECT_EQ(1u, client->AddRef());
  EXPECT_EQ(2u, client->AddRefConst());
  EXPECT_EQ(3u, utility->AddRef());
  EXPECT_EQ(4u, utility->AddRefConst());
  EXPECT_EQ(3u, utility->Release());
  EXPECT_EQ(2u, utility->Dispose());
  EXPECT_EQ(1u, client->Release());
  EXPECT_EQ(0, Thing::destroyed);
  EXPECT_EQ(0u, client->Dispose());
  EXPECT_EQ(1, Thing::destroyed);
}

TEST_F(DisposableTest, KeepAliveFlagOutlivesTheLastReference) {
  m_thing->AddRef();
  m_thing->SetNoDelete(true);
  EXPECT_TRUE(m_thing->IsNoDelete());
  EXPECT_EQ(0u, m_thing->Release());
  EXPECT_EQ(0xFFFFFFFFu, m_thing->Release()) << "the count goes below 0 unguarded";
  EXPECT_EQ(0, Thing::destroyed);
  delete m_thing;
}

TEST_F(DisposableTest, TracesEveryCountUnderTheTypeName) {
  wchar_t line[128];
  std::swprintf(line, 128, L"Thing (%p) ref is ",
                static_cast<void*>(static_cast<TqUtils::CDisposable*>(m_thing)));
  const TraceRecorder recorder(kTraceInfo);
  m_thing->AddRef();
  m_thing->Dispose();
  EXPECT_EQ(L"16 TqUtils::CDisposable::AddRefImpl: " + std::wstring(line) +
                L"1\n16 TqUtils::CDisposable::DisposeImpl: " + line + L"0\n",
            recorder.Text());
}

TEST_F(DisposableTest, CountsAndRegistersFromManyThreads) {
  m_thing->AddRef();
  std::array<std::thread, 4> threads;
  for (std::thread& thread : threads) {
    thread = std::thread([this] {
      for (int n = 0; n < 2000; ++n) {
        m_thing->AddRef();
        DataMapSpec::CreateDataMapSpec()->Dispose();
        m_thing->Release();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, Thing::destroyed);
  EXPECT_EQ(0u, m_thing->Release());
}

}  // namespace
}  // namespace Corvane::Test
