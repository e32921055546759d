// What fork() must not carry from a process into its child: SQLite's state.
#ifndef CORVANE_PLATFORM_LINUX_STORE_FORK_H_
#define CORVANE_PLATFORM_LINUX_STORE_FORK_H_

struct sqlite3;

namespace Corvane::Store {

// Held by every thread that works in SQLite, or on what an open handle remembers: fork() waits for
// it, so that a child finds all locks free and all memory whole. Never two at once in one thread,
// and never while waiting for another writer.
class NoFork {
 public:
  NoFork();
  NoFork(const NoFork&) = delete;
  NoFork& operator=(const NoFork&) = delete;
  ~NoFork();
};

// Another number in each child. What was opened under the parent's is the parent's: it is neither
// used nor closed.
unsigned ProcessGeneration();

// sqlite3_open_v2, so that a child does not take its parent's locks on the file for its own.
int OpenSqlite(const char* name, sqlite3** sqlite, int flags);

}  // namespace Corvane::Store

#endif  // CORVANE_PLATFORM_LINUX_STORE_FORK_H_
