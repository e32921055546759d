#include "corvane/disposable.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>

#include "corvane/data_map_spec.h"
#include "tests/support/trace_recorder.h"

namespace Corvane::Test {
namespace {

class Thing : public Corvane::IDisposable, public IDisposableImpl {
 public:
  explicit Thing(bool* destroyed) : m_destroyed(destroyed) {}
  ~Thing() override { *m_destroyed = true; }

  std::uint32_t AddRef() override { return AddRefImpl(); }
  std::uint32_t AddRefConst() override { return AddRefImpl(); }
  std::uint32_t Dispose() override { return DisposeImpl(); }
  std::uint32_t Release() override { return DisposeImpl(); }
  const char* GetTypeName() override { return "Thing"; }

 private:
  bool* m_destroyed;
};

TEST(Disposable, BothEntriesOfEachPairCount) {
  bool destroyed = false;
  auto* const thing = new Thing(&destroyed);
  Corvane::IDisposable* const client = thing;
  ::IDisposable* const utility = thing;
  EXPECT_EQ(1u, client->AddRef());
  EXPECT_EQ(2u, client->AddRefConst());
  EXPECT_EQ(3u, utility->AddRef());
  EXPECT_EQ(4u, utility->AddRefConst());
  EXPECT_EQ(3u, utility->Release());
  EXPECT_EQ(2u, utility->Dispose());
  EXPECT_EQ(1u, client->Release());
  EXPECT_FALSE(destroyed);
  EXPECT_EQ(0u, client->Dispose());
  EXPECT_TRUE(destroyed);
}

TEST(Disposable, KeepAliveFlagOutlivesTheLastReference) {
  bool destroyed = false;
  auto* const thing = new Thing(&destroyed);
  thing->AddRef();
  thing->SetNoDelete(true);
  EXPECT_TRUE(thing->IsNoDelete());
  EXPECT_EQ(0u, thing->Release());
  EXPECT_FALSE(destroyed);
  EXPECT_EQ(0xFFFFFFFFu, thing->Release()) << "the count goes below 0 unguarded";
  EXPECT_FALSE(destroyed);
  delete thing;
  EXPECT_TRUE(destroyed);
}

TEST(Disposable, TracesEveryCountUnderTheTypeName) {
  bool destroyed = false;
  auto* const thing = new Thing(&destroyed);
  wchar_t expected[128];
  std::swprintf(expected, 128, L"Thing (%p) ref is %d",
                static_cast<void*>(static_cast<TqUtils::CDisposable*>(thing)), 1);
  const TraceRecorder recorder(kTraceInfo);
  thing->AddRef();
  EXPECT_TRUE(recorder.HasMessage(16, L"TqUtils::CDisposable::AddRefImpl", expected));
  thing->Dispose();
  ASSERT_EQ(2u, recorder.Lines().size());
  EXPECT_EQ(L"TqUtils::CDisposable::DisposeImpl", recorder.Lines()[1].function);
  EXPECT_EQ(L'0', recorder.Lines()[1].message.back());
}

TEST(Disposable, CountsAndRegistersFromManyThreads) {
  bool destroyed = false;
  auto* const shared = new Thing(&destroyed);
  shared->AddRef();
  std::array<std::thread, 4> threads;
  for (std::thread& thread : threads) {
    thread = std::thread([shared] {
      for (int n = 0; n < 2000; ++n) {
        shared->AddRef();
        DataMapSpec::CreateDataMapSpec()->Dispose();
        shared->Release();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_FALSE(destroyed);
  EXPECT_EQ(0u, shared->Release());
}

}  // namespace
}  // namespace Corvane::Test
