// Caches written by processes that are killed, or that write at once (Linux).
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <random>
#include <string>

#include "corvane/cache_provider.h"
#include "corvane/handles.h"
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
    values[prefix + std::to_wstring(i)] = {_variant_t(std::to_wstring(version).c_str()), version,
                                           0};
  }
  return values;
}

// A counter that parent and children share.
class SharedCounter {
 public:
  SharedCounter()
      : m_value(static_cast<volatile std::uint64_t*>(mmap(nullptr, sizeof(std::uint64_t),
                                                          PROT_READ | PROT_WRITE,
                                                          MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {}
  SharedCounter(const SharedCounter&) = delete;
  SharedCounter& operator=(const SharedCounter&) = delete;
  ~SharedCounter() { munmap(const_cast<std::uint64_t*>(m_value), sizeof(std::uint64_t)); }
  std::uint64_t Get() const { return *m_value; }
  void Set(std::uint64_t value) { *m_value = value; }

 private:
  volatile std::uint64_t* m_value;
};

// A child process that ends with what `work` gives.
pid_t Start(const std::function<int()>& work) {
  const pid_t child = fork();
  if (child == 0) _exit(work());
  return child;
}

using MakeCache = std::function<RefPtr<ICacheProvider>()>;

// Kills a process that writes version after version, `kills` times; `read` gives what is kept.
void KillWriters(int kills, const MakeCache& make,
                 const std::function<std::map<std::wstring, std::wstring>()>& read) {
  std::mt19937 random(20261121);
  std::uniform_int_distribution<useconds_t> delay(0, 3000);
  SharedCounter begun;     // the last version that a writer has begun to write
  SharedCounter reported;  // the last one that it was told to be written
  int killedWhileWriting = 0;
  for (int kill = 0; kill < kills; ++kill) {
    int ready[2];
    ASSERT_EQ(0, pipe(ready));
    const pid_t child = Start([&] {
      const auto cache = make();
      const char byte = 0;
      if (write(ready[1], &byte, 1) != 1) return 1;
      for (std::uint64_t version = reported.Get() + 1;; ++version) {
        const CachedValueMap values = ValuesOf(L"item", version);
        begun.Set(version);
        if (cache->SetDataValues(&values) == 0) reported.Set(version);
      }
    });
    char byte = 0;
    ASSERT_EQ(1, ::read(ready[0], &byte, 1));
    close(ready[0]);
    close(ready[1]);
    usleep(delay(random));
    ASSERT_EQ(0, ::kill(child, SIGKILL));
    ASSERT_EQ(child, waitpid(child, nullptr, 0));
    if (begun.Get() > reported.Get()) ++killedWhileWriting;

    const auto kept = read();
    if (kept.empty()) {
      ASSERT_EQ(0u, reported.Get()) << "kill " << kill;
      continue;
    }
    ASSERT_EQ(2u * kItems, kept.size()) << "kill " << kill;
    const std::wstring version = kept.begin()->second;
    for (const auto& [name, text] : kept) ASSERT_EQ(version, text) << name;
    const std::uint64_t written = std::stoull(version);
    ASSERT_GE(written, reported.Get()) << "kill " << kill;
    ASSERT_LE(written, reported.Get() + 1);
    reported.Set(written);
  }
  EXPECT_GT(killedWhileWriting, kills / 2) << "or the kills prove little";
}

std::wstring TextOfBytes(const RegistryKey::Value& value) {
  return reinterpret_cast<const wchar_t*>(value.data.data());
}

TEST(KilledWriterTest, LeavesTheOldOrTheNewValuesInTheRegistry) {
  const TestStore store;
  const RegistryKey registry;
  const auto make = [&registry] {
    return RefPtr<ICacheProvider>::Adopt(CreateRegCacheProvider(registry.Path().c_str()));
  };
  KillWriters(500, make, [&registry] {
    std::map<std::wstring, std::wstring> kept;
    for (const auto& [name, value] : registry.Values(L"")) kept[name] = TextOfBytes(value);
    return kept;
  });
}

TEST(KilledWriterTest, LeavesTheOldOrTheNewValuesInThePrinter) {
  const TestStore store;
  const TestPrinter printer;
  const auto make = [&printer] {
    return RefPtr<ICacheProvider>::Adopt(CreatePrintDataCacheProvider(printer.Handle()));
  };
  KillWriters(100, make, [&make] {
    std::map<std::wstring, std::wstring> kept;
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

TEST(ConcurrentWritersTest, LoseNothingThatWasReportedWritten) {
  constexpr int kProcesses = 4;
  constexpr std::uint64_t kVersions = 50;
  const TestStore store;
  const RegistryKey registry;
  const auto own = [](int process) { return L"of" + std::to_wstring(process) + L"-"; };
  std::vector<pid_t> children;
  for (int process = 0; process < kProcesses; ++process) {
    children.push_back(Start([&registry, prefix = own(process)] {
      const auto cache =
          RefPtr<ICacheProvider>::Adopt(CreateRegCacheProvider(registry.Path().c_str()));
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
  const auto kept = registry.Values(L"");
  EXPECT_EQ(2u * kItems * (kProcesses + 1), kept.size());
  for (const auto& [name, value] : kept) {
    const bool isShared = name.starts_with(L"shared-");
    // Of the shared items some process's value, with the companion that came with it.
    const std::wstring partner = name.ends_with(L".Expires") ? name : name + L".Expires";
    const auto expected =
        isShared ? kept.at(partner) : RegistryKey::Text(std::to_wstring(kVersions));
    EXPECT_EQ(expected, value) << name;
  }
}

}  // namespace
}  // namespace Corvane::Test
