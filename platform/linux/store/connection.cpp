#include "platform/linux/store/connection.h"

#include <chrono>
#include <thread>
#include <utility>

namespace Corvane::Store {
namespace {

using std::chrono::steady_clock;

// For another writer's transaction: nobody waits for ever for a process that was stopped.
constexpr std::chrono::seconds kWriterTimeout{5};
constexpr std::chrono::milliseconds kWriterRetry{1};

// A database that is open and not in use: opening costs many times what a short operation does, and
// who opens the file first reads its log through.
class Spare {
 public:
  static Spare& OfProcess() {
    // Never destroyed: threads may outlive the end of main().
    static Spare& spare = *new Spare;
    return spare;
  }

  // Open on the store as it is now; null when there is none.
  std::unique_ptr<Database> Take() {
    const std::lock_guard lock(m_mutex);
    std::unique_ptr<Database> taken = std::move(m_database);
    return taken && taken->IsAsLeft() ? std::move(taken) : nullptr;
  }

  // For the next one, or closes it.
  void Keep(std::unique_ptr<Database> database) {
    const std::lock_guard lock(m_mutex);
    if (!m_database && database->Rest()) m_database = std::move(database);
  }

 private:
  std::mutex m_mutex;  // locked after a connection
  std::unique_ptr<Database> m_database;
};

}  // namespace

Connection::Access::Access(Connection& connection) : m_lock(connection.m_mutex) {
  if (connection.m_database->IsInherited()) connection.LeaveToParentLocked();
}

Connection::~Connection() {
  const Access access(*this);
  if (m_database->IsOpen()) Spare::OfProcess().Keep(std::move(m_database));
}

LSTATUS Connection::Open(OpenMode mode, bool toWrite) {
  const Access access(*this);
  const LSTATUS result = OpenLocked(mode);
  if (result != ERROR_SUCCESS) return result;
  return toWrite && m_database->IsReadOnly() ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

LSTATUS Connection::OpenLocked(OpenMode mode) {
  if (m_database->IsOpen()) return ERROR_SUCCESS;
  if (auto spare = Spare::OfProcess().Take()) {
    m_database = std::move(spare);
  } else if (const LSTATUS result = m_database->Open(mode); result != ERROR_SUCCESS) {
    return result;
  }
  if (m_pinned.path.empty() || m_pinned == m_database->Id()) return ERROR_SUCCESS;
  m_database->Close();
  return ERROR_KEY_DELETED;
}

void Connection::Pin() {
  const Access access(*this);
  m_pinned = m_database->Id();
}

void Connection::PinAs(Connection& other) {
  StoreId pinned;
  {
    const Access access(other);
    pinned = other.m_pinned;
  }
  const Access access(*this);
  m_pinned = std::move(pinned);
}

void Connection::EndReadLocked() {
  if (m_database->InTransaction()) m_database->Run(kCommit);
}

// Between its tries the handle is free, and the process may fork.
LSTATUS Connection::BeginWrite(OpenMode mode, std::optional<Access>* access) {
  for (const auto deadline = steady_clock::now() + kWriterTimeout;;) {
    access->emplace(*this);
    const bool last = steady_clock::now() >= deadline;
    LSTATUS result = OpenLocked(mode);
    if (result == ERROR_SUCCESS) result = BeginWriteLocked(last);
    if (result != ERROR_BUSY || last || m_group == Group::kFailed) return result;
    access->reset();
    std::this_thread::sleep_for(kWriterRetry);
  }
}

LSTATUS Connection::BeginWriteLocked(bool lastTry) {
  if (m_group == Group::kFailed) return m_groupFailure;
  if (m_group == Group::kOpen) return ERROR_SUCCESS;
  const LSTATUS result = m_database->BeginWrite();
  if (result == ERROR_SUCCESS) {
    ++m_transaction;
    if (m_group == Group::kArmed) m_group = Group::kOpen;
  } else if (m_group == Group::kArmed && (result != ERROR_BUSY || lastTry)) {
    // The other writes of the group would each wait as long.
    FailGroupLocked(result);
  }
  return result;
}

LSTATUS Connection::EndWriteLocked(LSTATUS result) {
  ++m_writes;
  if (m_group == Group::kOpen) {
    // SQLite undoes a whole transaction when the disk is full or fails. What came later would be
    // transactions of its own.
    if (!m_database->InTransaction()) FailGroupLocked(result);
    return result;
  }
  if (result == ERROR_SUCCESS) return CommitLocked();
  if (m_database->InTransaction()) m_database->Run(kRollback);
  return result;
}

LSTATUS Connection::CommitLocked() {
  const LSTATUS result = m_database->Run(kCommit);
  if (m_database->InTransaction()) m_database->Run(kRollback);
  return result;
}

void Connection::FailGroupLocked(LSTATUS failure) {
  m_group = Group::kFailed;
  m_groupFailure = failure != ERROR_SUCCESS ? failure : LSTATUS{ERROR_REGISTRY_IO_FAILED};
}

bool Connection::BeginGroup() {
  const Access access(*this);
  if (m_group != Group::kNone) return false;
  m_group = Group::kArmed;
  return true;
}

LSTATUS Connection::EndGroup(bool commit) {
  const Access access(*this);
  LSTATUS result = ERROR_SUCCESS;
  if (m_group == Group::kFailed) {
    result = m_groupFailure;
  } else if (m_group == Group::kOpen) {
    if (commit) {
      result = CommitLocked();
    } else {
      m_database->Run(kRollback);
    }
  }
  m_group = Group::kNone;
  ++m_writes;
  return result;
}

void Connection::LeaveToParentLocked() {
  m_database->Close();
  ++m_writes;  // what tells of others' writes begins anew with the next opening
  if (m_group == Group::kOpen) FailGroupLocked(ERROR_NOT_SUPPORTED);
}

}  // namespace Corvane::Store
