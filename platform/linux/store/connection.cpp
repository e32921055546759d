#include "platform/linux/store/connection.h"

#include <utility>

#include "platform/linux/store/connection_list.h"

namespace Corvane::Store {

Connection::Connection() { ConnectionList::OfProcess().Add(this); }

Connection::~Connection() { ConnectionList::OfProcess().Remove(this); }

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
    return ERROR_SUCCESS;
  }
  return m_database->Open(mode);
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

void Connection::CloseForGood() {
  const auto lock = Lock();
  ConnectionList::OfProcess().KeepSpare(std::exchange(m_database, std::make_unique<Database>()));
}

void Connection::LockForFork() {
  m_mutex.lock();
  if (m_database->IsOpen() && !m_database->InTransaction()) m_database->Close();
}

void Connection::UnlockInParent() { m_mutex.unlock(); }

bool Connection::UnlockInChild() {
  const bool clean = !m_database->IsOpen();
  m_database->Abandon();
  if (m_group == Group::kOpen) FailGroupLocked(ERROR_NOT_SUPPORTED);
  m_mutex.unlock();
  return clean;
}

}  // namespace Corvane::Store
