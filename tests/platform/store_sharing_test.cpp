// A store that several processes and threads use at once (Linux).
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "platform/write_group.h"
#include "tests/platform/store_fixture.h"

namespace Corvane::Test {
namespace {

using std::chrono::seconds;
using std::chrono::steady_clock;

class StoreSharingTest : public StoreTest {
 protected:
  StoreSharingTest() { MakeStore(); }
};

// What one process tells another, a byte at a time.
struct Pipe {
  Pipe() { EXPECT_EQ(0, pipe(ends)); }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  ~Pipe() {
    for (const int end : ends) close(end);
  }
  bool Tell(char what = '.') const { return write(ends[1], &what, 1) == 1; }
  // For the reader: how the end of the writing process is noticed.
  void OnlyRead() { close(std::exchange(ends[1], -1)); }
  char Hear() const {
    char heard = '\0';
    return read(ends[0], &heard, 1) == 1 ? heard : '\0';
  }
  int ends[2] = {-1, -1};
};

TEST_F(StoreSharingTest, AWriterWaitsForAnotherOnlySoLong) {
  const UniqueHkey holder = Opened(), key = Opened();
  const WriteGroup holding(holder.Get());
  ASSERT_EQ(ERROR_SUCCESS, Set(holder, L"v", "new"));
  const auto start = steady_clock::now();
  WriteGroup group(key.Get());
  EXPECT_EQ(ERROR_BUSY, Set(key, L"w", "new"));
  EXPECT_EQ(ERROR_BUSY, Set(key, L"x", "new")) << "and did not wait again";
  EXPECT_EQ(ERROR_BUSY, group.Commit());
  EXPECT_LT(steady_clock::now() - start, seconds(9));
  EXPECT_EQ("old", Get(key, L"v"));
}

TEST_F(StoreSharingTest, ChildrenOpenItForThemselves) {
  const UniqueHkey key = Opened();
  EXPECT_EQ("old", Get(key, L"v"));
  EXPECT_EQ(0, InChild([&] { return Set(key, L"v", "new"); }));
  EXPECT_EQ("new", Get(key, L"v"));
  // A transaction stays with the parent, and its child waits for it like everybody else.
  WriteGroup group(key.Get());
  ASSERT_EQ(ERROR_SUCCESS, Set(key, L"v", "newer"));
  Pipe ready;
  const pid_t child = Start([&] {
    if (Set(key, L"v", "child") != ERROR_NOT_SUPPORTED) return 1;
    if (group.Commit() != ERROR_NOT_SUPPORTED) return 2;
    if (Value(L"v") != "new" || !ready.Tell()) return 3;
    return Set(key, L"w", "child") == ERROR_SUCCESS ? 0 : 4;
  });
  ready.OnlyRead();
  EXPECT_EQ('.', ready.Hear());
  EXPECT_EQ(ERROR_SUCCESS, group.Commit());
  EXPECT_EQ(0, Wait(child));
  EXPECT_EQ("newer", Value(L"v"));
  EXPECT_EQ("child", Value(L"w"));
}

// SQLite in the child took the parent's locks for its own: after the parent's end the next to open
// the file found nobody there, and made the index anew under the child's transaction.
TEST_F(StoreTest, ChildrenOutliveTheirParent) {
  Pipe go, result;
  const auto grandchild = [&](const Pipe& ready) {
    const UniqueHkey key = Opened();
    WriteGroup group(key.Get());
    bool good = Set(key, L"w", "child") == ERROR_SUCCESS;
    good = ready.Tell() && go.Hear() == '.' && good;
    good = group.Commit() == ERROR_SUCCESS && good;
    result.Tell(good && Get(key, L"v") == "old" ? 'y' : 'n');
  };
  EXPECT_EQ(0, InChild([&] {
              MakeStore();
              const Pipe ready;
              if (fork() != 0) return ready.Hear() == '.' ? 0 : 2;
              grandchild(ready);
              return 0;
            }));
  result.OnlyRead();
  EXPECT_EQ("old", Value(L"v"));
  ASSERT_TRUE(go.Tell());
  EXPECT_EQ('y', result.Hear()) << "it crashed, or lost its transaction";
  EXPECT_EQ("child", Value(L"w"));
}

// A fork that waited for one thread's group while it kept another from ending lasted until the busy
// time-out of five seconds.
TEST_F(StoreSharingTest, ForksWhileThreadsWriteGroups) {
  std::atomic<bool> stop = false;
  std::vector<std::jthread> threads;
  for (int thread = 0; thread < 2; ++thread) {
    threads.emplace_back([&stop, thread] {
      const UniqueHkey key = Opened();
      while (!stop) {
        WriteGroup group(key.Get());
        for (int i = 0; i < 20; ++i) {
          const std::wstring name = std::to_wstring(thread) + L"." + std::to_wstring(i);
          EXPECT_EQ(ERROR_SUCCESS, Set(key, name, "new"));
        }
        EXPECT_EQ(ERROR_SUCCESS, group.Commit());
      }
    });
  }
  const auto start = steady_clock::now();
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(0, InChild([] { return Value(L"v") == "old" ? 0 : 1; }));
  }
  EXPECT_LT(steady_clock::now() - start, seconds(30));
  stop = true;
}

TEST_F(StoreSharingTest, ThreadsShareHandles) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 100;
  const UniqueHkey shared = Opened();
  std::atomic<HKEY> passed = nullptr;  // closed by whichever thread gets it
  std::vector<std::jthread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      for (DWORD i = 0; i < kRounds; ++i) {
        const std::wstring name = std::to_wstring(thread) + L"." + std::to_wstring(i);
        EXPECT_EQ(ERROR_SUCCESS, Set(shared, name, "new"));
        wchar_t found[64];
        DWORD chars = 64;
        EXPECT_EQ(ERROR_SUCCESS, RegEnumValueW(shared.Get(), i, found, &chars, nullptr, nullptr,
                                               nullptr, nullptr));
        const HKEY own = Opened().Release();
        const HKEY other = passed.exchange(own);
        const std::string value = Get(own, L"v");  // it may be closed by now
        EXPECT_TRUE(value == "old" || value == "<6>") << value;
        EXPECT_TRUE(other == nullptr || RegCloseKey(other) == ERROR_SUCCESS);
      }
    });
  }
  threads.clear();  // joins them
  EXPECT_EQ(ERROR_SUCCESS, RegCloseKey(passed));
  EXPECT_EQ("new", Value(std::to_wstring(kThreads - 1) + L"." + std::to_wstring(kRounds - 1)));
}

}  // namespace
}  // namespace Corvane::Test
