#include "platform/linux/store/connection_list.h"

#include <pthread.h>

#include <utility>

#include "platform/linux/store/connection.h"

namespace Corvane::Store {

ConnectionList& ConnectionList::OfProcess() {
  // Never destroyed: threads may outlive the end of main().
  static ConnectionList& list = *new ConnectionList;
  return list;
}

ConnectionList::ConnectionList() {
  pthread_atfork([] { OfProcess().BeforeFork(); }, [] { OfProcess().AfterForkInParent(); },
                 [] { OfProcess().AfterForkInChild(); });
}

void ConnectionList::Add(Connection* connection) {
  const std::lock_guard lock(m_mutex);
  m_connections.insert(connection);
}

void ConnectionList::Remove(Connection* connection) {
  const std::lock_guard lock(m_mutex);
  connection->CloseForGood();
  m_connections.erase(connection);
}

std::unique_ptr<Database> ConnectionList::TakeSpare() {
  const std::lock_guard lock(m_spareMutex);
  std::unique_ptr<Database> spare = std::move(m_spare);
  if (spare && !spare->IsAsLeft()) spare.reset();
  return spare;
}

void ConnectionList::KeepSpare(std::unique_ptr<Database> database) {
  const std::lock_guard lock(m_spareMutex);
  if (!m_spare && database->Rest()) m_spare = std::move(database);
}

void ConnectionList::BeforeFork() {
  m_mutex.lock();
  for (Connection* connection : m_connections) connection->LockForFork();
  m_spareMutex.lock();
  m_spare.reset();
}

void ConnectionList::AfterForkInParent() {
  m_spareMutex.unlock();
  for (Connection* connection : m_connections) connection->UnlockInParent();
  m_mutex.unlock();
}

void ConnectionList::AfterForkInChild() {
  m_spareMutex.unlock();
  for (Connection* connection : m_connections) {
    if (!connection->UnlockInChild()) m_orphaned = true;
  }
  m_mutex.unlock();
}

}  // namespace Corvane::Store
