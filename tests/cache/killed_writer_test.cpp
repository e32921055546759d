// Caches written by processes that are killed, or that write at once (Linux).
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <random>

#include "corvane/cache_provider.h"
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

// The versions that a writer has begun to write, and was told to be written; parent and children
// share them.
struct Progress {
  volatile std::uint64_t begun;
  volatile std::uint64_t reported;
};

// A child process that ends with what `work` gives.
pid_t Start(const std::function<int()>& work) {
  const pid_t child = fork();
  if (child == 0) _exit(work());
  return child;
}

using Texts = std::map<std::wstring, std::wstring>;

class KilledWriterTest : public testing::Test {
 protected:
  KilledWriterTest()
      : m_progress(static_cast<Progress*>(mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE,
                                               MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {}
  ~KilledWriterTest() override { munmap(m_progress, sizeof(Progress)); }

  RefPtr<ICacheProvider> Registry() const {
    return RefPtr<ICacheProvider>::Adopt(CreateRegCacheProvider(m_registry.Path().c_str()));
  }
  Texts RegistryTexts() const {
    Texts texts;
    for (const auto& [name, value] : m_registry.Values(L"")) {
      texts[name] = reinterpret_cast<const wchar_t*>(value.data.data());
    }
    return texts;
  }

  // Starts a process that writes version after version, and kills it while it does.
  void KillWriter(const std::function<RefPtr<ICacheProvider>()>& make, useconds_t delay) {
    int ready[2];
    ASSERT_EQ(0, pipe(ready));
    const pid_t child = Start([&] {
      const auto cache = make();
      if (write(ready[1], "", 1) != 1) return 1;
      for (std::uint64_t version = m_progress->reported + 1;; ++version) {
        const CachedValueMap values = ValuesOf(L"item", version);
        m_progress->begun = version;
        if (cache->SetDataValues(&values) == 0) m_progress->reported = version;
      }
    });
    char byte = 0;
    ASSERT_EQ(1, read(ready[0], &byte, 1));
    close(ready[0]);
    close(ready[1]);
    usleep(delay);
    ASSERT_EQ(0, kill(child, SIGKILL));
    ASSERT_EQ(child, waitpid(child, nullptr, 0));
  }

  // Kills `kills` of them; `kept` gives what each leaves.
  void KillWriters(int kills, const std::function<RefPtr<ICacheProvider>()>& make,
                   const std::function<Texts()>& kept) {
    std::mt19937 random(20261121);
    std::uniform_int_distribution<useconds_t> delay(0, 3000);
    int killedWhileWriting = 0;
    for (int n = 0; n < kills; ++n) {
      SCOPED_TRACE(n);
      ASSERT_NO_FATAL_FAILURE(KillWriter(make, delay(random)));
      if (m_progress->begun > m_progress->reported) ++killedWhileWriting;
      const Texts texts = kept();
      if (texts.empty() && m_progress->reported == 0) continue;
      ASSERT_EQ(2u * kItems, texts.size());
      const std::wstring version = texts.begin()->second;
      for (const auto& [name, text] : texts) ASSERT_EQ(version, text) << name;
      const std::uint64_t written = std::stoull(version);
      ASSERT_GE(written, m_progress->reported);
      ASSERT_LE(written, m_progress->reported + 1);
      m_progress->reported = written;
    }
    EXPECT_GT(killedWhileWriting, kills / 2) << "or the kills prove little";
  }

  const TestStore m_store;
  const RegistryKey m_registry;
  Progress* const m_progress;
};

TEST_F(KilledWriterTest, LeavesTheOldOrTheNewValuesInTheRegistry) {
  KillWriters(
      500, [this] { return Registry(); }, [this] { return RegistryTexts(); });
}

TEST_F(KilledWriterTest, LeavesTheOldOrTheNewValuesInThePrinter) {
  const TestPrinter printer;
  const auto make = [&printer] {
    return RefPtr<ICacheProvider>::Adopt(CreatePrintDataCacheProvider(printer.Handle()));
  };
  KillWriters(100, make, [&make] {
    Texts kept;
    const auto cache = make();
    for (int i = 0; i < kItems; ++i) {
      for (const wchar_t* const ending : {L"", L".Expires"}) {
        const std::wstring name = L"item" + std::to_wstring(i) + ending;
        _variant_t value;
        if (cache->GetDataValue(name.c_str(), &value) == 0) kept[name] = TextOf(value);
      }
    }
    return kept;
  });
}

TEST_F(KilledWriterTest, WritersAtOnceLoseNothingThatWasReportedWritten) {
  constexpr int kProcesses = 4;
  constexpr std::uint64_t kVersions = 50;
  std::vector<pid_t> children;
  for (int process = 0; process < kProcesses; ++process) {
    children.push_back(Start([this, prefix = L"of" + std::to_wstring(process) + L"-"] {
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
  const Texts kept = RegistryTexts();
  EXPECT_EQ(2u * kItems * (kProcesses + 1), kept.size());
  for (const auto& [name, text] : kept) {
    // Of the shared items some process's value, with the companion that came with it.
    const std::wstring companion = name.ends_with(L".Expires") ? name : name + L".Expires";
    const bool isShared = name.starts_with(L"shared-");
    EXPECT_EQ(isShared ? kept.at(companion) : std::to_wstring(kVersions), text) << name;
  }
}

}  // namespace
}  // namespace Corvane::Test
