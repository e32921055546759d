// The file under the registry and the printer data (Linux): damage, permissions, full disks,
// several processes and threads.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/write_group.h"
#include "tests/platform/store_fixture.h"
#include "tests/support/test_printer.h"

namespace Corvane::Test {
namespace {

namespace fs = std::filesystem;

std::string ReadFile(const fs::path& file) {
  std::ostringstream content;
  content << std::ifstream(file, std::ios::binary).rdbuf();
  return content.str();
}

mode_t ModeOf(const fs::path& file) {
  struct stat status = {};
  stat(file.c_str(), &status);
  return status.st_mode & 0777;
}

// A store with the value "v" = "old", nothing open.
void MakeStore() {
  UniqueHkey key;
  ASSERT_EQ(ERROR_SUCCESS, Create(KEY_ALL_ACCESS, key.Receive()));
  ASSERT_EQ(ERROR_SUCCESS, Set(key.Get(), L"v", "old"));
}
// The same with all of it in the file itself: that much written copies the log.
void MakeStoreWithoutLog(const std::string& file) {
  MakeStore();
  UniqueHkey key;
  ASSERT_EQ(ERROR_SUCCESS, Open(KEY_ALL_ACCESS, key.Receive()));
  for (const wchar_t* name : {L"large", L"larger"}) {
    ASSERT_EQ(ERROR_SUCCESS, Set(key.Get(), name, std::string(kMebibyte, 'x')));
  }
  key.Reset();
  fs::remove(file + "-wal");
  fs::remove(file + "-shm");
}

TEST_F(StoreTest, IsMadeByTheFirstWriteForItsOwnerAlone) {
  HKEY none = nullptr;
  EXPECT_EQ(ERROR_FILE_NOT_FOUND, Open(KEY_ALL_ACCESS, &none));
  wchar_t name[8];
  DWORD chars = 8;
  EXPECT_EQ(ERROR_NO_MORE_ITEMS,
            RegEnumKeyExW(HKEY_LOCAL_MACHINE, 0, name, &chars, nullptr, nullptr, nullptr, nullptr));
  EXPECT_FALSE(fs::exists(Folder()));
  const mode_t mask = umask(0);
  MakeStore();
  umask(mask);
  EXPECT_EQ(0700u, ModeOf(Folder()));
  for (const char* part : {"", "-wal", "-shm"}) EXPECT_EQ(0600u, ModeOf(File() + part)) << part;
  EXPECT_EQ(3, std::distance(fs::directory_iterator(Folder()), {}));
}

TEST_F(StoreTest, LiesWhereTheEnvironmentSays) {
  const TempFolder folder;
  const std::string root = folder.Path().string();
  const auto made = [](const char* state, const char* home, const fs::path& expected) {
    return Wait(Start([&] {
      unsetenv("CORVANE_STORE");
      setenv("XDG_STATE_HOME", state, 1);
      setenv("HOME", home, 1);
      UniqueHkey key;
      return Create(KEY_READ, key.Receive()) == ERROR_SUCCESS && fs::exists(expected) ? 0 : 1;
    }));
  };
  EXPECT_EQ(0, made((root + "/s").c_str(), "", root + "/s/corvane/store.db"));
  EXPECT_EQ(0, made("", (root + "/h").c_str(), root + "/h/.local/state/corvane/store.db"));
  EXPECT_EQ(0, made("relative", (root + "/i").c_str(), root + "/i/.local/state/corvane/store.db"));
  // A folder on the way may be a symbolic link.
  fs::create_directory_symlink(root + "/h", root + "/link");
  EXPECT_EQ(0, made("", (root + "/link").c_str(), root + "/h/.local/state/corvane/store.db"));
}

TEST_F(StoreTest, RefusesAndKeepsOtherFiles) {
  MakeStoreWithoutLog(File());
  const std::string good = ReadFile(File());
  const auto patched = [&good](std::size_t offset, const std::string& bytes) {
    return std::string(good).replace(offset, bytes.size(), bytes);
  };
  constexpr std::size_t kUserVersion = 60;  // offsets in SQLite's header, as are the next two
  constexpr std::size_t kApplicationId = 68;
  constexpr std::size_t kRootPage = 100;
  constexpr std::size_t kPage = 4096;
  const struct {
    const char* name;
    std::string content;
    LSTATUS expected;
  } cases[] = {
      {"no database", std::string(9000, 'x'), ERROR_NOT_REGISTRY_FILE},
      {"empty", "", ERROR_NOT_REGISTRY_FILE},
      {"another program's", patched(kApplicationId, "MINE"), ERROR_NOT_REGISTRY_FILE},
      {"of a newer version", patched(kUserVersion, std::string("\0\0\0\3", 4)),
       ERROR_NOT_REGISTRY_FILE},
      {"damaged tables", patched(kRootPage, std::string(kPage - kRootPage, '\xFF')),
       ERROR_REGISTRY_CORRUPT},
      {"damaged pages", patched(kPage, std::string(8 * kPage, '\xFF')), ERROR_REGISTRY_CORRUPT},
      {"cut off", good.substr(0, kPage), ERROR_REGISTRY_CORRUPT}};
  for (const auto& c : cases) {
    std::ofstream(File(), std::ios::binary) << c.content;
    UniqueHkey key;
    EXPECT_EQ(c.expected, Open(KEY_READ, key.Receive())) << c.name;
    EXPECT_EQ(c.expected, Create(KEY_ALL_ACCESS, key.Receive())) << c.name;
    EXPECT_EQ(c.content, ReadFile(File())) << c.name;
    fs::remove(File() + "-wal");
    fs::remove(File() + "-shm");
  }
  std::ofstream(File(), std::ios::binary) << good;
  EXPECT_EQ("old", Value(L"v"));
}

TEST_F(StoreTest, FollowsNoSymbolicLinkAndOpensNoFolder) {
  MakeStore();
  fs::rename(File(), File() + ".real");
  fs::create_symlink(File() + ".real", File());
  EXPECT_EQ("<1017>", Value(L"v"));
  fs::remove(File());
  fs::create_directory(File());
  EXPECT_EQ("<1017>", Value(L"v"));
  fs::remove(File());
  fs::create_symlink(File() + ".missing", File());
  UniqueHkey key;
  EXPECT_EQ(ERROR_NOT_REGISTRY_FILE, Create(KEY_ALL_ACCESS, key.Receive()));
}

// What a user can do who may read the store and not write it.
int ReadOnlyUse() {
  UniqueHkey key;
  if (Value(L"v") != "old") return 1;
  if (Open(KEY_ALL_ACCESS, key.Receive()) != ERROR_ACCESS_DENIED) return 2;
  if (Create(KEY_ALL_ACCESS, key.Receive()) != ERROR_ACCESS_DENIED) return 3;
  if (Open(MAXIMUM_ALLOWED, key.Receive()) != ERROR_SUCCESS) return 4;
  if (Set(key.Get(), L"v", "new") != ERROR_ACCESS_DENIED) return 5;
  if (Create(KEY_READ, key.Receive()) != ERROR_SUCCESS) return 6;
  return 0;
}

TEST_F(StoreTest, IsReadWhereItCannotBeWritten) {
  for (const bool withLog : {true, false}) {
    if (withLog) {
      MakeStore();
    } else {
      MakeStoreWithoutLog(File());
    }
    for (const auto& file : fs::directory_iterator(Folder())) chmod(file.path().c_str(), 0444);
    chmod(Folder().c_str(), 0555);
    EXPECT_EQ(0, Wait(Start(&ReadOnlyUse, User::kNobody))) << "log: " << withLog;
    chmod(Folder().c_str(), 0700);
    chmod(File().c_str(), 0600);
  }
  chmod(File().c_str(), 0);
  EXPECT_EQ(0, Wait(Start([] { return Value(L"v") == "<5>" ? 0 : 1; }, User::kNobody)));
}

// The files may grow by `bytes` at most, in this process.
void LimitFiles(std::uintmax_t bytes) {
  std::signal(SIGXFSZ, SIG_IGN);
  const rlimit limit = {bytes, RLIM_INFINITY};
  setrlimit(RLIMIT_FSIZE, &limit);
}

TEST_F(StoreTest, LosesAGroupAsAWholeWhenTheDiskIsFull) {
  // The first fails when it is committed, the second with one of its writes.
  for (const int values : {1, 8}) {
    MakeStore();
    EXPECT_EQ(0, Wait(Start([&] {
                UniqueHkey key;
                if (Open(KEY_ALL_ACCESS, key.Receive()) != ERROR_SUCCESS) return 1;
                LimitFiles(fs::file_size(File() + "-wal") + 100'000);
                WriteGroup group(key.Get());
                if (Set(key.Get(), L"v", "new") != ERROR_SUCCESS) return 2;
                LSTATUS result = ERROR_SUCCESS;
                for (int i = 0; i < values; ++i) {
                  result = Set(key.Get(), std::to_wstring(i), std::string(kMebibyte, 'x'));
                }
                if (values > 1 && result != ERROR_DISK_FULL) return 3;
                if (values > 1 && Set(key.Get(), L"late", "new") != ERROR_DISK_FULL) return 4;
                if (group.Commit() != ERROR_DISK_FULL) return 5;
                if (Get(key.Get(), L"v") != "old") return 6;
                LimitFiles(RLIM_INFINITY);
                return Set(key.Get(), L"after", "new") == ERROR_SUCCESS ? 0 : 7;
              })))
        << values;
    EXPECT_EQ("old", Value(L"v"));
    EXPECT_EQ("<2>", Value(L"late"));
    EXPECT_EQ("new", Value(L"after"));
  }
}

TEST_F(StoreTest, KeepsAGroupAsAWhole) {
  MakeStore();
  UniqueHkey key;
  ASSERT_EQ(ERROR_SUCCESS, Open(KEY_ALL_ACCESS, key.Receive()));
  {
    const WriteGroup undone(key.Get());
    EXPECT_EQ(ERROR_SUCCESS, Set(key.Get(), L"v", "new"));
    EXPECT_EQ("new", Get(key.Get(), L"v"));
    EXPECT_EQ("old", Value(L"v")) << "seen by others before its end";
  }
  EXPECT_EQ("old", Get(key.Get(), L"v"));
  EXPECT_EQ(0, Wait(Start([] {
              UniqueHkey own;
              if (Open(KEY_ALL_ACCESS, own.Receive()) != ERROR_SUCCESS) return 1;
              const WriteGroup killed(own.Get());
              return Set(own.Get(), L"v", "new") == ERROR_SUCCESS ? 0 : 2;  // and _exit
            })));
  EXPECT_EQ("old", Get(key.Get(), L"v"));

  WriteGroup group(key.Get());
  EXPECT_EQ(ERROR_SUCCESS, Set(key.Get(), L"v", "new"));
  EXPECT_EQ(ERROR_NOACCESS,
            RegSetValueExW(key.Get(), L"w", 0, REG_SZ, reinterpret_cast<const BYTE*>(42), 4));
  EXPECT_EQ(ERROR_SUCCESS, Set(key.Get(), L"x", "new"));
  key.Reset();
  EXPECT_EQ(ERROR_SUCCESS, group.Commit());
  EXPECT_EQ("new", Value(L"v"));
  EXPECT_EQ("<2>", Value(L"w"));
  EXPECT_EQ("new", Value(L"x"));
}

TEST_F(StoreTest, GroupsPrinterData) {
  const TestPrinter printer;
  const auto set = [&](const wchar_t* key, BYTE data) {
    return SetPrinterDataExW(printer.Handle(), key, L"v", REG_BINARY, &data, 1);
  };
  const auto get = [&](const wchar_t* key) {
    BYTE data = 0;
    DWORD needed = 0;
    GetPrinterDataExW(printer.Handle(), key, L"v", nullptr, &data, 1, &needed);
    return data;
  };
  {
    const WriteGroup undone(printer.Handle());
    for (const wchar_t* key : {L"a", L"b", L"a"}) EXPECT_EQ(0u, set(key, 1));
  }
  EXPECT_EQ(0, get(L"a"));
  WriteGroup group(printer.Handle());
  for (const wchar_t* key : {L"a", L"b", L"a\\sub"}) EXPECT_EQ(0u, set(key, 2));
  EXPECT_EQ(ERROR_SUCCESS, group.Commit());
  for (const wchar_t* key : {L"a", L"b", L"a\\sub"}) EXPECT_EQ(2, get(key));
}

TEST_F(StoreTest, WaitsForAnotherWriterOnlySoLong) {
  MakeStore();
  UniqueHkey holder;
  UniqueHkey key;
  ASSERT_EQ(ERROR_SUCCESS, Open(KEY_ALL_ACCESS, holder.Receive()));
  ASSERT_EQ(ERROR_SUCCESS, Open(KEY_ALL_ACCESS, key.Receive()));
  const WriteGroup holding(holder.Get());
  ASSERT_EQ(ERROR_SUCCESS, Set(holder.Get(), L"v", "new"));
  const auto start = std::chrono::steady_clock::now();
  WriteGroup group(key.Get());
  EXPECT_EQ(ERROR_BUSY, Set(key.Get(), L"w", "new"));
  EXPECT_EQ(ERROR_BUSY, Set(key.Get(), L"x", "new")) << "and did not wait again";
  EXPECT_EQ(ERROR_BUSY, group.Commit());
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(9));
  EXPECT_EQ("old", Get(key.Get(), L"v"));
}

TEST_F(StoreTest, ChildrenOpenItForThemselves) {
  MakeStore();
  UniqueHkey key;
  ASSERT_EQ(ERROR_SUCCESS, Open(KEY_ALL_ACCESS, key.Receive()));
  EXPECT_EQ("old", Get(key.Get(), L"v"));
  EXPECT_EQ(0, Wait(Start([&] { return Set(key.Get(), L"v", "new"); })));
  EXPECT_EQ("new", Get(key.Get(), L"v"));
  // A transaction stays with the parent, and its child waits for it like everybody else.
  WriteGroup group(key.Get());
  ASSERT_EQ(ERROR_SUCCESS, Set(key.Get(), L"v", "newer"));
  int ready[2];
  ASSERT_EQ(0, pipe(ready));
  char byte = 0;
  const pid_t child = Start([&] {
    if (Set(key.Get(), L"v", "child") != ERROR_NOT_SUPPORTED) return 1;
    if (group.Commit() != ERROR_NOT_SUPPORTED) return 2;
    if (Value(L"v") != "new" || write(ready[1], &byte, 1) != 1) return 3;
    return Set(key.Get(), L"w", "child") == ERROR_SUCCESS ? 0 : 4;
  });
  close(ready[1]);
  EXPECT_EQ(1, read(ready[0], &byte, 1));
  close(ready[0]);
  EXPECT_EQ(ERROR_SUCCESS, group.Commit());
  EXPECT_EQ(0, Wait(child));
  EXPECT_EQ("newer", Value(L"v"));
  EXPECT_EQ("child", Value(L"w"));
}

// SQLite in the child took the parent's locks for its own: after the parent's end the next to open
// the file found nobody there, and made the index anew under the child's transaction.
TEST_F(StoreTest, ChildrenOutliveTheirParent) {
  int go[2];
  int result[2];
  ASSERT_EQ(0, pipe(go) | pipe(result));
  EXPECT_EQ(0, Wait(Start([&] {
              MakeStore();
              int ready[2];
              if (pipe(ready) != 0) return 1;
              char byte = 0;
              if (fork() != 0) return read(ready[0], &byte, 1) == 1 ? 0 : 2;
              UniqueHkey key;
              bool good = Open(KEY_ALL_ACCESS, key.Receive()) == ERROR_SUCCESS;
              WriteGroup group(key.Get());
              good = Set(key.Get(), L"w", "child") == ERROR_SUCCESS && good;
              good = write(ready[1], &byte, 1) == 1 && read(go[0], &byte, 1) == 1 && good;
              good = group.Commit() == ERROR_SUCCESS && good;
              byte = good && Get(key.Get(), L"v") == "old" ? 'y' : 'n';
              return write(result[1], &byte, 1) == 1 ? 0 : 3;
            })));
  close(result[1]);
  EXPECT_EQ("old", Value(L"v"));
  char byte = 0;
  ASSERT_EQ(1, write(go[1], &byte, 1));
  EXPECT_EQ(1, read(result[0], &byte, 1)) << "it crashed";
  EXPECT_EQ('y', byte);
  EXPECT_EQ("child", Value(L"w"));
  for (const int end : {go[0], go[1], result[0]}) close(end);
}

// A fork that waited for one thread's group while it kept another from ending lasted until the busy
// time-out.
TEST_F(StoreTest, ForksWhileThreadsWriteGroups) {
  MakeStore();
  std::atomic<bool> stop = false;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 2; ++thread) {
    threads.emplace_back([&, thread] {
      UniqueHkey key;
      EXPECT_EQ(ERROR_SUCCESS, Open(KEY_ALL_ACCESS, key.Receive()));
      for (int round = 0; !stop; ++round) {
        WriteGroup group(key.Get());
        for (int i = 0; i < 20; ++i) {
          const std::wstring name = std::to_wstring(thread) + L"." + std::to_wstring(i);
          EXPECT_EQ(ERROR_SUCCESS, Set(key.Get(), name, std::to_string(round)));
        }
        EXPECT_EQ(ERROR_SUCCESS, group.Commit());
      }
    });
  }
  for (int i = 0; i < 10; ++i) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(0, Wait(Start([] { return Value(L"v") == "old" ? 0 : 1; })));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
  }
  stop = true;
  for (std::thread& thread : threads) thread.join();
}

TEST_F(StoreTest, KeysStayInTheirStore) {
  MakeStore();
  UniqueHkey key;
  ASSERT_EQ(ERROR_SUCCESS, Open(KEY_ALL_ACCESS, key.Receive()));
  const TestStore other;
  MakeStore();
  UniqueHkey below;
  EXPECT_EQ(ERROR_KEY_DELETED, RegOpenKeyExW(key.Get(), L"", 0, KEY_READ, below.Receive()));
  EXPECT_EQ(ERROR_SUCCESS, Set(key.Get(), L"v", "of the first"));
  EXPECT_EQ("old", Value(L"v"));
  EXPECT_EQ(0, Wait(Start([&key] { return Get(key.Get(), L"v") == "<1018>" ? 0 : 1; })))
      << "the child would open the other file";
}

// The library keeps the file open between uses.
TEST_F(StoreTest, NoticesWhatBecameOfTheFileSinceItsLastUse) {
  const auto remove = [](const fs::path& file, std::vector<const char*> parts) {
    for (const char* part : parts) fs::remove(file.string() + part);
  };
  const struct {
    const char* name;
    std::function<void(const fs::path& file)> action;
    std::string value;  // read afterwards, once something has been written
  } kCases[] = {
      {"removed",
       [&](const auto& file) {
         remove(file, {"", "-wal", "-shm"});
       },
       "<2>"},
      {"damaged",
       [](const auto& file) { std::ofstream(file, std::ios::binary) << std::string(9000, 'x'); },
       "<1017>"},
      {"its log removed",
       [&](const auto& file) {
         remove(file, {"-wal", "-shm"});
       },
       "<2>"},
      {"another put in its place",
       [&](const auto& file) {
         fs::copy_file(file, file.string() + "2");
         fs::rename(file.string() + "2", file);
       },
       "old"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    const TestStore store;
    MakeStore();
    ASSERT_EQ("old", Value(L"v"));
    c.action(store.File());
    const std::string now = Value(L"v");
    UniqueHkey key;
    const LSTATUS written = Create(KEY_ALL_ACCESS, key.Receive());
    if (written == ERROR_SUCCESS) Set(key.Get(), L"w", "new");
    EXPECT_EQ(now, c.value);
    const std::string expected = written == ERROR_SUCCESS ? "new" : "<1017>";
    EXPECT_EQ(0, Wait(Start([&] { return Value(L"w") == expected ? 0 : 1; })))
        << "another process sees what was written";
  }
}

TEST_F(StoreTest, ThreadsShareHandles) {
  MakeStore();
  constexpr int kThreads = 4;
  constexpr int kRounds = 100;
  HKEY shared = nullptr;
  ASSERT_EQ(ERROR_SUCCESS, Open(KEY_ALL_ACCESS, &shared));
  std::atomic<HKEY> passed = nullptr;  // closed by whichever thread gets it
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      for (int i = 0; i < kRounds; ++i) {
        const std::wstring name = std::to_wstring(thread) + L"." + std::to_wstring(i);
        EXPECT_EQ(ERROR_SUCCESS, Set(shared, name, "new"));
        wchar_t found[64];
        DWORD chars = 64;
        EXPECT_EQ(ERROR_SUCCESS, RegEnumValueW(shared, static_cast<DWORD>(i), found, &chars,
                                               nullptr, nullptr, nullptr, nullptr));
        HKEY own = nullptr;
        EXPECT_EQ(ERROR_SUCCESS, Open(KEY_READ, &own));
        const HKEY other = passed.exchange(own);
        const std::string value = Get(own, L"v");  // it may be closed by now
        EXPECT_TRUE(value == "old" || value == "<6>") << value;
        EXPECT_TRUE(other == nullptr || RegCloseKey(other) == ERROR_SUCCESS);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(ERROR_SUCCESS, RegCloseKey(passed));
  EXPECT_EQ(ERROR_SUCCESS, RegCloseKey(shared));
  EXPECT_EQ("new", Value(std::to_wstring(kThreads - 1) + L"." + std::to_wstring(kRounds - 1)));
}

TEST_F(StoreTest, ValuesOfHandlesComeBackLate) {
  MakeStore();
  HKEY first = nullptr;
  ASSERT_EQ(ERROR_SUCCESS, Open(KEY_READ, &first));
  EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(first) % 4);
  RegCloseKey(first);
  for (int i = 0; i < 500; ++i) {
    UniqueHkey key;
    ASSERT_EQ(ERROR_SUCCESS, Open(KEY_READ, key.Receive()));
    ASSERT_NE(first, key.Get());
  }
}

TEST_F(StoreTest, TakesDataUpToTheEndOfMemoryAndOfItsLimit) {
  MakeStore();
  UniqueHkey key;
  ASSERT_EQ(ERROR_SUCCESS, Open(KEY_ALL_ACCESS, key.Receive()));
  constexpr DWORD kPage = 4096;
  void* pages = mmap(nullptr, 3 * kPage, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(MAP_FAILED, pages);
  mprotect(static_cast<BYTE*>(pages) + 2 * kPage, kPage, PROT_NONE);
  const struct {
    DWORD offset;
    DWORD size;
    LSTATUS expected;
  } kCases[] = {{0, 2 * kPage, ERROR_SUCCESS},
                {2 * kPage - 1, 1, ERROR_SUCCESS},
                {2 * kPage - 1, 2, ERROR_NOACCESS},
                {1, 2 * kPage, ERROR_NOACCESS},
                {2 * kPage, 1, ERROR_NOACCESS}};
  for (const auto& c : kCases) {
    EXPECT_EQ(c.expected, RegSetValueExW(key.Get(), L"w", 0, REG_BINARY,
                                         static_cast<const BYTE*>(pages) + c.offset, c.size))
        << c.offset << " " << c.size;
  }
  munmap(pages, 3 * kPage);
  EXPECT_EQ(ERROR_SUCCESS, Set(key.Get(), L"w", std::string(kMebibyte, 'x')));
  EXPECT_EQ(ERROR_NO_SYSTEM_RESOURCES, Set(key.Get(), L"w", std::string(kMebibyte + 1, 'y')));
  EXPECT_EQ(std::string(kMebibyte, 'x'), Get(key.Get(), L"w"));
}

}  // namespace
}  // namespace Corvane::Test
