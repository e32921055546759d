#include "platform/linux/store/connection.h"

#include <thread>
#include <utility>

#include "platform/linux/store/connection_list.h"

namespace Corvane::Store {

Connection::Connection() { ConnectionList::OfProcess().Add(this); }

Connection::~Connection() { ConnectionList::OfProcess().Remove(this); }

// While another thread wants to fork, only a transaction under way goes on.
std::unique_lock<std::mutex> Connection::Lock() {
  for (;;) {
    std::unique_lock lock(m_mutex);
    if (m_group == Group::kOpen || !ConnectionList::OfProcess().IsForking()) return lock;
    lock.unlock();
    std::this_thread::sleep_for(ConnectionList::kForkRetry);
  }
}

LSTATUS Connection::Open(OpenMode mode, bool toWrite) {
  const auto lock = Lock();
  const LSTATUS result = OpenLocked(mode);
  if (result != ERROR_SUCCESS) return result;
  return toWrite && m_database->IsReadOnly() ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

LSTATUS Connection::OpenLocked(OpenMode mode) {
  if (m_database->IsOpen()) return ERROR_SUCCESS;
  if (ConnectionList::OfProcess().IsOrphaned()) return ERROR_NOT_SUPPORTED;
  if (auto spare = ConnectionList::OfProcess().TakeSpare()) {
    m_database = std::move(spare);
  } else if (const LSTATUS result = m_database->Open(mode); result != ERROR_SUCCESS) {
    return result;
  }
  if (m_pinned.path.empty() || m_pinned == m_database->Id()) return ERROR_SUCCESS;
  m_database->Close();
  return ERROR_KEY_DELETED;
}

void Connection::Pin() {
  const auto lock = Lock();
  m_pinned = m_database->Id();
}

void Connection::PinAs(Connection& other) {
  StoreId pinned;
  {
    const auto lock = other.Lock();
    pinned = other.m_pinned;
  }
  const auto lock = Lock();
  m_pinned = std::move(pinned);
}

void Connection::EndReadLocked() {
  if (m_database->InTransaction()) m_database->Run(Sql::kCommit);
}

LSTATUS Connection::BeginWriteLocked() {
  if (m_group == Group::kFailed) return m_groupFailure;
  if (m_group == Group::kOpen) return ERROR_SUCCESS;
  const LSTATUS result = m_database->Run(Sql::kBeginImmediate);
  if (result == ERROR_SUCCESS) {
    ++m_transaction;
    if (m_group == Group::kArmed) m_group = Group::kOpen;
  } else if (m_group == Group::kArmed) {
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
  if (m_database->InTransaction()) m_database->Run(Sql::kRollback);
  return result;
}

LSTATUS Connection::CommitLocked() {
  const LSTATUS result = m_database->Run(Sql::kCommit);
  if (m_database->InTransaction()) m_database->Run(Sql::kRollback);
  return result;
}

void Connection::FailGroupLocked(LSTATUS failure) {
  m_group = Group::kFailed;
  m_groupFailure = failure != ERROR_SUCCESS ? failure : LSTATUS{ERROR_REGISTRY_IO_FAILED};
}

bool Connection::BeginGroup() {
  const auto lock = Lock();
  if (m_group != Group::kNone) return false;
  m_group = Group::kArmed;
  return true;
}

LSTATUS Connection::EndGroup(bool commit) {
  const auto lock = Lock();
  LSTATUS result = ERROR_SUCCESS;
  if (m_group == Group::kFailed) {
    result = m_groupFailure;
  } else if (m_group == Group::kOpen) {
    if (commit) {
      result = CommitLocked();
    } else {
      m_database->Run(Sql::kRollback);
    }
  }
  m_group = Group::kNone;
  ++m_writes;
  return result;
}

// Nobody uses it any more.
void Connection::CloseForGood() {
  ConnectionList::OfProcess().KeepSpare(std::exchange(m_database, std::make_unique<Database>()));
}

void Connection::CloseForFork() {
  if (!m_database->IsOpen() || m_database->InTransaction()) return;
  m_database->Close();
  ++m_writes;  // what tells of others' writes begins anew with the next opening
}

bool Connection::UnlockInChild() {
  const bool clean = !m_database->IsOpen();
  m_database->Abandon();
  if (m_group == Group::kOpen) FailGroupLocked(ERROR_NOT_SUPPORTED);
  m_mutex.unlock();
  return clean;
}

}  // namespace Corvane::Store
