// Caches written by processes that are killed, or that write at once (Linux).
#include <sched.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <functional>
#include <random>
#include <set>

#include "cache/reg_cache_provider.h"
#include "tests/support/dom.h"
#include "tests/support/registry_key.h"
#include "tests/support/test_printer.h"
#include "tests/support/test_store.h"

namespace Corvane::Test {
namespace {

constexpr int kItems = 30;

// Version `version` of every item: its text and its time tell it.
CachedValueMap ValuesOf(const std::wstring& prefix, std::uint64_t version) {
  CachedValueMap values;
  for (int i = 0; i < kItems; ++i) {
    const _variant_t text(std::to_wstring(version).c_str());
    values[prefix + std::to_wstring(i)] = {text, version, 0};
  }
  return values;
}

// The one version that a cache has read of all items and companions; 0 of none.
std::uint64_t VersionIn(const RefPtr<ICacheProvider>& cache, const std::wstring& prefix) {
  std::set<std::wstring> texts;
  for (int i = 0; i < kItems; ++i) {
    for (const wchar_t* const ending : {L"", L".Expires"}) {
      _variant_t value(L"0");
      cache->GetDataValue((prefix + std::to_wstring(i) + ending).c_str(), &value);
      texts.insert(TextOf(value));
    }
  }
  EXPECT_EQ(1u, texts.size());
  return std::stoull(*texts.begin());
}

// A child process that ends with what `work` gives.
pid_t Start(const std::function<int()>& work) {
  const pid_t child = fork();
  if (child == 0) _exit(work());
  return child;
}

// What a writer has begun to write, and was told to be written; parent and children share it.
struct Progress {
  std::atomic<std::uint64_t> begun;
  std::atomic<std::uint64_t> reported;
};

class KilledWriterTest : public testing::Test {
 protected:
  RefPtr<ICacheProvider> Registry() const {
    auto cache = RefPtr<RegCacheProvider>::Share(new RegCacheProvider(m_registry.Path().c_str()));
    cache->PopulateFromRegistry(nullptr, nullptr);
    return RefPtr<ICacheProvider>::Adopt(cache.Release());
  }

  // Kills a process that writes version after version, `delay` microseconds after its first one.
  static void KillWriter(const RefPtr<ICacheProvider>& cache, Progress* progress,
                         useconds_t delay) {
    const std::uint64_t before = progress->reported;
    const pid_t child = Start([&] {
      for (std::uint64_t version = progress->reported + 1;; ++version) {
        const CachedValueMap values = ValuesOf(L"item", version);
        progress->begun = version;
        if (cache->SetDataValues(&values) == 0) progress->reported = version;
      }
      return 0;
    });
    while (progress->reported == before) sched_yield();
    usleep(delay);
    EXPECT_EQ(0, kill(child, SIGKILL));
    EXPECT_EQ(child, waitpid(child, nullptr, 0));
  }

  static void KillWriters(int kills, const std::function<RefPtr<ICacheProvider>()>& make) {
    auto* const progress = static_cast<Progress*>(
        mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    std::mt19937 random(20261121);
    std::uniform_int_distribution<useconds_t> delay(0, 3000);
    int killedWhileWriting = 0;
    for (int n = 0; n < kills && !HasFailure(); ++n) {
      KillWriter(make(), progress, delay(random));
      if (progress->begun > progress->reported) ++killedWhileWriting;
      const std::uint64_t kept = VersionIn(make(), L"item");
      EXPECT_GE(kept, progress->reported);
      EXPECT_LE(kept, progress->reported + 1);
      progress->reported = kept;
    }
    EXPECT_GT(killedWhileWriting, kills / 2) << "or the kills prove little";
    munmap(progress, sizeof(Progress));
  }

  const TestStore m_store;
  const RegistryKey m_registry;
};

TEST_F(KilledWriterTest, LeavesTheOldOrTheNewValuesInTheRegistry) {
  KillWriters(500, [this] { return Registry(); });
}

TEST_F(KilledWriterTest, LeavesTheOldOrTheNewValuesInThePrinter) {
  const TestPrinter printer;
  KillWriters(100, [&printer] {
    return RefPtr<ICacheProvider>::Adopt(CreatePrintDataCacheProvider(printer.Handle()));
  });
}

TEST_F(KilledWriterTest, WritersAtOnceLoseNothingThatWasReportedWritten) {
  constexpr std::uint64_t kVersions = 50;
  const std::wstring kPrefixes[] = {L"a-", L"b-", L"c-", L"d-"};
  std::vector<pid_t> children;
  for (const std::wstring& prefix : kPrefixes) {
    children.push_back(Start([this, &prefix] {
      const auto cache = Registry();
      for (std::uint64_t version = 1; version <= kVersions; ++version) {
        CachedValueMap values = ValuesOf(prefix, version);
        values.merge(ValuesOf(L"shared-", version));
        if (cache->SetDataValues(&values) != 0) return 1;
      }
      return 0;
    }));
  }
  for (const pid_t child : children) {
    int status = -1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
  }
  for (const std::wstring& prefix : kPrefixes) EXPECT_EQ(kVersions, VersionIn(Registry(), prefix));
  EXPECT_EQ(kVersions, VersionIn(Registry(), L"shared-")) << "the last that any has written";
}

}  // namespace
}  // namespace Corvane::Test
