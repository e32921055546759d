// The way to the store of one open key or printer: a lock, a database of its own, its transactions.
#ifndef CORVANE_PLATFORM_LINUX_STORE_CONNECTION_H_
#define CORVANE_PLATFORM_LINUX_STORE_CONNECTION_H_

#include <memory>
#include <mutex>
#include <optional>

#include "platform/linux/misc/exception_wall.h"
#include "platform/linux/store/database.h"
#include "platform/linux/store/fork.h"

namespace Corvane::Store {

// Any thread. Opens the file with the first use that needs it, and again in a child: what the
// parent had open stays the parent's. A group that was under way at fork() is the parent's alone;
// in the child all of it fails with ERROR_NOT_SUPPORTED.
class Connection {
 public:
  // The lock, for several calls of ReadLocked and what is remembered of them.
  class Access {
   public:
    explicit Access(Connection& connection);

   private:
    const NoFork m_noFork;
    const std::lock_guard<std::mutex> m_lock;
  };

  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection();

  // Makes sure that the file is there (ERROR_FILE_NOT_FOUND) and can be written if that is wanted
  // (ERROR_ACCESS_DENIED).
  LSTATUS Open(OpenMode mode, bool toWrite);

  // Nodes are numbers within one file: from now on ERROR_KEY_DELETED when the store turns out to be
  // another. The file that is open, or of another connection what that is pinned to, if it is.
  void Pin();
  void PinAs(Connection& other);

  // Calls `work(database)`, which only reads, in one state of the store.
  template <typename Work>
  LSTATUS Read(Work&& work) {
    const Access access(*this);
    return ReadLocked(work);
  }
  template <typename Work>
  LSTATUS ReadLocked(Work&& work) {
    LSTATUS result = OpenLocked(OpenMode::kExisting);
    if (result != ERROR_SUCCESS) return result;
    // Within a group its own transaction is the state.
    const bool begun = !m_database->InTransaction();
    if (begun) result = m_database->BeginRead();
    if (result == ERROR_SUCCESS) result = BehindWall([&] { return work(*m_database); });
    if (begun) EndReadLocked();
    return result;
  }

  // Calls `work(database)` in a transaction, the group's if there is one, which is undone when
  // `work` or its end fails. A group is not undone by the failure of one of its writes, unless the
  // store itself gave it up.
  template <typename Work>
  LSTATUS Write(OpenMode mode, Work&& work) {
    std::optional<Access> access;
    const LSTATUS result = BeginWrite(mode, &access);
    if (result != ERROR_SUCCESS) return result;
    return EndWriteLocked(BehindWall([&] { return work(*m_database); }));
  }

  // Writes from now on are of one transaction, which begins with the first of them. False when
  // there is a group already.
  bool BeginGroup();
  // Ends the group. Its writes stand if `commit` and the result is ERROR_SUCCESS, else none does.
  LSTATUS EndGroup(bool commit);

  // Counts the transactions that wrote.
  std::uint64_t TransactionLocked() const { return m_transaction; }
  // Changes with everything of this connection that may make old what was read before.
  std::uint64_t WritesLocked() const { return m_writes; }

 private:
  enum class Group {
    kNone,
    kArmed,   // no write so far
    kOpen,    // its transaction is under way
    kFailed,  // and lost, for m_groupFailure
  };

  LSTATUS OpenLocked(OpenMode mode);
  void LeaveToParentLocked();
  void EndReadLocked();
  LSTATUS BeginWrite(OpenMode mode, std::optional<Access>* access);
  LSTATUS BeginWriteLocked(bool lastTry);
  LSTATUS EndWriteLocked(LSTATUS result);
  void FailGroupLocked(LSTATUS failure);
  LSTATUS CommitLocked();

  std::mutex m_mutex;  // guards everything below
  std::unique_ptr<Database> m_database = std::make_unique<Database>();
  StoreId m_pinned;  // without a path: any
  Group m_group = Group::kNone;
  LSTATUS m_groupFailure = ERROR_SUCCESS;
  std::uint64_t m_transaction = 0;
  std::uint64_t m_writes = 0;
};

}  // namespace Corvane::Store

#endif  // CORVANE_PLATFORM_LINUX_STORE_CONNECTION_H_
