// The connections of the process, for fork().
#ifndef CORVANE_PLATFORM_LINUX_STORE_CONNECTION_LIST_H_
#define CORVANE_PLATFORM_LINUX_STORE_CONNECTION_LIST_H_

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <unordered_set>

#include "platform/linux/store/database.h"

namespace Corvane::Store {

class Connection;

// It keeps one open database that is not in use: opening costs many times what a short operation
// does, and who opens the file first reads its log through.
//
// SQLite's state must not reach a child, which would take its parent's locks for its own. So no
// thread works on the store during fork(), and every database is closed before: parent and child
// open theirs again with the next use of a handle. Only a transaction under way keeps its database;
// the child then leaves it, and the store, alone.
class ConnectionList {
 public:
  static ConnectionList& OfProcess();

  void Add(Connection* connection);
  // Takes its database from it.
  void Remove(Connection* connection);

  // A database that is open on the store as it is now; null when there is none.
  std::unique_ptr<Database> TakeSpare();
  // Keeps it for the next one, or closes it.
  void KeepSpare(std::unique_ptr<Database> database);

  // A thread waits until all others have ended their transactions, to fork.
  bool IsForking() const { return m_forking > 0; }
  static constexpr std::chrono::microseconds kForkRetry{200};

  // True in a child whose parent had a transaction under way at fork().
  bool IsOrphaned() const { return m_orphaned; }

 private:
  ConnectionList();
  void BeforeFork();
  bool TryLockAll();
  void AfterForkInParent();
  void AfterForkInChild();

  std::mutex m_mutex;  // guards the set; locked before a connection
  std::unordered_set<Connection*> m_connections;
  std::atomic<bool> m_orphaned = false;
  std::atomic<int> m_forking = 0;

  std::mutex m_spareMutex;  // guards the spare; locked after a connection
  std::unique_ptr<Database> m_spare;
};

}  // namespace Corvane::Store

#endif  // CORVANE_PLATFORM_LINUX_STORE_CONNECTION_LIST_H_
