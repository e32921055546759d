// The file under the registry and the printer data (Linux): damage, permissions, full disks.
#include <sys/mman.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <string>

#include "platform/write_group.h"
#include "tests/platform/store_fixture.h"
#include "tests/support/test_printer.h"

namespace Corvane::Test {
namespace {

namespace fs = std::filesystem;

std::string ReadFile(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}
void WriteFile(const std::string& file, const std::string& content) {
  std::ofstream(file, std::ios::binary) << content;
}

mode_t ModeOf(const fs::path& file) {
  struct stat status = {};
  stat(file.c_str(), &status);
  return status.st_mode & 0777;
}

void RemoveLog(const std::string& file) {
  for (const char* part : {"-wal", "-shm"}) fs::remove(file + part);
}

// MakeStore with all of it in the file itself: that much written copies the log.
void MakeStoreWithoutLog(const std::string& file) {
  MakeStore();
  for (const wchar_t* name : {L"large", L"larger"}) {
    ASSERT_EQ(ERROR_SUCCESS, Set(Opened(), name, std::string(kMebibyte, 'x')));
  }
  RemoveLog(file);
}

TEST_F(StoreTest, IsMadeByTheFirstWriteForItsOwnerAlone) {
  UniqueHkey none;
  EXPECT_EQ(ERROR_FILE_NOT_FOUND, Open(KEY_ALL_ACCESS, none.Receive()));
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
  const auto made = [&root](const std::string& state, const std::string& home, const char* file) {
    return InChild([&] {
      unsetenv("CORVANE_STORE");
      setenv("XDG_STATE_HOME", state.c_str(), 1);
      setenv("HOME", home.c_str(), 1);
      UniqueHkey key;
      return Create(KEY_READ, key.Receive()) == ERROR_SUCCESS && fs::exists(root + file) ? 0 : 1;
    });
  };
  EXPECT_EQ(0, made(root + "/s", "", "/s/corvane/store.db"));
  EXPECT_EQ(0, made("", root + "/h", "/h/.local/state/corvane/store.db"));
  EXPECT_EQ(0, made("relative", root + "/i", "/i/.local/state/corvane/store.db"));
  // A folder on the way may be a symbolic link.
  fs::create_directory_symlink(root + "/h", root + "/link");
  EXPECT_EQ(0, made("", root + "/link", "/h/.local/state/corvane/store.db"));
}

TEST_F(StoreTest, RefusesAndKeepsOtherFiles) {
  MakeStoreWithoutLog(File());
  const std::string good = ReadFile(File());
  const auto check = [this](const char* name, LSTATUS expected, const std::string& content) {
    SCOPED_TRACE(name);
    WriteFile(File(), content);
    UniqueHkey key;
    EXPECT_EQ(expected, Open(KEY_READ, key.Receive()));
    EXPECT_EQ(expected, Create(KEY_ALL_ACCESS, key.Receive()));
    EXPECT_EQ(content, ReadFile(File()));
    RemoveLog(File());
  };
  const auto patched = [&good](std::size_t offset, const std::string& bytes) {
    return std::string(good).replace(offset, bytes.size(), bytes);
  };
  constexpr std::size_t kUserVersion = 60;  // offsets in SQLite's header, as are the next two
  constexpr std::size_t kApplicationId = 68;
  constexpr std::size_t kRootPage = 100;
  constexpr std::size_t kPage = 4096;
  check("no database", ERROR_NOT_REGISTRY_FILE, std::string(9000, 'x'));
  check("empty", ERROR_NOT_REGISTRY_FILE, "");
  check("another program's", ERROR_NOT_REGISTRY_FILE, patched(kApplicationId, "MINE"));
  check("newer", ERROR_NOT_REGISTRY_FILE, patched(kUserVersion, std::string("\0\0\0\3", 4)));
  check("damaged tables", ERROR_REGISTRY_CORRUPT,
        patched(kRootPage, std::string(kPage - kRootPage, '\xFF')));
  check("damaged pages", ERROR_REGISTRY_CORRUPT, patched(kPage, std::string(8 * kPage, '\xFF')));
  check("cut off", ERROR_REGISTRY_CORRUPT, good.substr(0, kPage));
  WriteFile(File(), good);
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
  if (Set(key, L"v", "new") != ERROR_ACCESS_DENIED) return 5;
  return Create(KEY_READ, key.Receive()) == ERROR_SUCCESS ? 0 : 6;
}

TEST_F(StoreTest, IsReadWhereItCannotBeWritten) {
  for (const bool withLog : {true, false}) {
    withLog ? MakeStore() : MakeStoreWithoutLog(File());
    MakeReadOnly(true);
    EXPECT_EQ(0, InChild(&ReadOnlyUse, User::kNobody)) << "log: " << withLog;
    MakeReadOnly(false);
  }
  chmod(File().c_str(), 0);
  EXPECT_EQ(0, InChild([] { return Value(L"v") == "<5>" ? 0 : 1; }, User::kNobody));
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
    const auto write = [&] {
      const UniqueHkey key = Opened();
      LimitFiles(fs::file_size(File() + "-wal") + 100'000);
      WriteGroup group(key.Get());
      if (Set(key, L"v", "new") != ERROR_SUCCESS) return 2;
      LSTATUS result = ERROR_SUCCESS;
      for (int i = 0; i < values; ++i) {
        result = Set(key, std::to_wstring(i), std::string(kMebibyte, 'x'));
      }
      if (values > 1 && result != ERROR_DISK_FULL) return 3;
      if (values > 1 && Set(key, L"late", "new") != ERROR_DISK_FULL) return 4;
      if (group.Commit() != ERROR_DISK_FULL) return 5;
      if (Get(key, L"v") != "old") return 6;
      LimitFiles(RLIM_INFINITY);
      return Set(key, L"after", "new") == ERROR_SUCCESS ? 0 : 7;
    };
    EXPECT_EQ(0, InChild(write)) << values;
    EXPECT_EQ("old", Value(L"v"));
    EXPECT_EQ("<2>", Value(L"late"));
    EXPECT_EQ("new", Value(L"after"));
  }
}

TEST_F(StoreTest, KeepsAGroupAsAWhole) {
  MakeStore();
  UniqueHkey key = Opened();
  {
    const WriteGroup undone(key.Get());
    EXPECT_EQ(ERROR_SUCCESS, Set(key, L"v", "new"));
    EXPECT_EQ("new", Get(key, L"v"));
    EXPECT_EQ("old", Value(L"v")) << "seen by others before its end";
  }
  EXPECT_EQ("old", Get(key, L"v"));
  const auto killed = [] {
    const UniqueHkey own = Opened();
    const WriteGroup group(own.Get());
    _exit(Set(own, L"v", "new") == ERROR_SUCCESS ? 0 : 2);
    return 3;
  };
  EXPECT_EQ(0, InChild(killed));
  EXPECT_EQ("old", Get(key, L"v"));

  WriteGroup group(key.Get());
  EXPECT_EQ(ERROR_SUCCESS, Set(key, L"v", "new"));
  EXPECT_EQ(ERROR_NOACCESS,
            RegSetValueExW(key.Get(), L"w", 0, REG_SZ, reinterpret_cast<const BYTE*>(42), 4));
  EXPECT_EQ(ERROR_SUCCESS, Set(key, L"x", "new"));
  key.Reset();
  EXPECT_EQ(ERROR_SUCCESS, group.Commit());
  EXPECT_EQ("new", Value(L"v"));
  EXPECT_EQ("<2>", Value(L"w"));
  EXPECT_EQ("new", Value(L"x"));
}

TEST_F(StoreTest, GroupsPrinterData) {
  const TestPrinter printer;
  const auto set = [&](const wchar_t* key, BYTE data) {
    EXPECT_EQ(0u, SetPrinterDataExW(printer.Handle(), key, L"v", REG_BINARY, &data, 1));
  };
  const auto get = [&](const wchar_t* key) {
    BYTE data = 0;
    DWORD needed = 0;
    GetPrinterDataExW(printer.Handle(), key, L"v", nullptr, &data, 1, &needed);
    return data;
  };
  {
    const WriteGroup undone(printer.Handle());
    for (const wchar_t* key : {L"a", L"b", L"a"}) set(key, 1);
  }
  EXPECT_EQ(0, get(L"a"));
  WriteGroup group(printer.Handle());
  for (const wchar_t* key : {L"a", L"b", L"a\\sub"}) set(key, 2);
  EXPECT_EQ(ERROR_SUCCESS, group.Commit());
  for (const wchar_t* key : {L"a", L"b", L"a\\sub"}) EXPECT_EQ(2, get(key));
}

TEST_F(StoreTest, KeysStayInTheirStore) {
  MakeStore();
  const UniqueHkey key = Opened();
  const TestStore other;
  MakeStore();
  UniqueHkey below;
  EXPECT_EQ(ERROR_KEY_DELETED, RegOpenKeyExW(key.Get(), L"", 0, KEY_READ, below.Receive()));
  EXPECT_EQ(ERROR_SUCCESS, Set(key, L"v", "of the first"));
  EXPECT_EQ("old", Value(L"v"));
  EXPECT_EQ(0, InChild([&key] { return Get(key, L"v") == "<1018>" ? 0 : 1; }))
      << "the child would open the other file";
}

// The library keeps the file open between uses.
TEST_F(StoreTest, NoticesWhatBecameOfTheFileSinceItsLastUse) {
  using Change = void (*)(const std::string& file);
  const auto check = [](const char* name, const std::string& value, Change change) {
    SCOPED_TRACE(name);
    const TestStore store;
    MakeStore();
    ASSERT_EQ("old", Value(L"v"));
    change(store.File().string());
    const std::string now = Value(L"v");
    UniqueHkey key;
    const LSTATUS written = Create(KEY_ALL_ACCESS, key.Receive());
    if (written == ERROR_SUCCESS) Set(key, L"w", "new");
    EXPECT_EQ(value, now);
    const std::string expected = written == ERROR_SUCCESS ? "new" : "<1017>";
    EXPECT_EQ(0, InChild([&] { return Value(L"w") == expected ? 0 : 1; }))
        << "another process sees what was written";
  };
  check("removed", "<2>", [](const std::string& file) {
    fs::remove(file);
    RemoveLog(file);
  });
  check("its log removed", "<2>", &RemoveLog);
  check("damaged", "<1017>",
        [](const std::string& file) { WriteFile(file, std::string(9000, 'x')); });
  check("another put in its place", "old", [](const std::string& file) {
    fs::copy_file(file, file + "2");
    fs::rename(file + "2", file);
  });
}

TEST_F(StoreTest, ValuesOfHandlesComeBackLate) {
  MakeStore();
  const HKEY first = Opened().Get();
  EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(first) % 4);
  for (int i = 0; i < 500; ++i) ASSERT_NE(first, Opened().Get());
}

TEST_F(StoreTest, TakesDataUpToTheEndOfMemoryAndOfItsLimit) {
  MakeStore();
  const UniqueHkey key = Opened();
  constexpr DWORD kPage = 4096;
  void* pages = mmap(nullptr, 3 * kPage, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(MAP_FAILED, pages);
  mprotect(static_cast<BYTE*>(pages) + 2 * kPage, kPage, PROT_NONE);
  const auto set = [&](DWORD offset, DWORD size) {
    return RegSetValueExW(key.Get(), L"w", 0, REG_BINARY, static_cast<BYTE*>(pages) + offset, size);
  };
  EXPECT_EQ(ERROR_SUCCESS, set(0, 2 * kPage));
  EXPECT_EQ(ERROR_SUCCESS, set(2 * kPage - 1, 1));
  EXPECT_EQ(ERROR_NOACCESS, set(2 * kPage - 1, 2));
  EXPECT_EQ(ERROR_NOACCESS, set(1, 2 * kPage));
  EXPECT_EQ(ERROR_NOACCESS, set(2 * kPage, 1));
  munmap(pages, 3 * kPage);
  EXPECT_EQ(ERROR_SUCCESS, Set(key, L"w", std::string(kMebibyte, 'x')));
  EXPECT_EQ(ERROR_NO_SYSTEM_RESOURCES, Set(key, L"w", std::string(kMebibyte + 1, 'y')));
  EXPECT_EQ(std::string(kMebibyte, 'x'), Get(key, L"w"));
}

}  // namespace
}  // namespace Corvane::Test
