#include "platform/linux/store/connection_list.h"

#include <pthread.h>

#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/misc/handle_table.h"
#include "platform/linux/store/connection.h"

namespace Corvane::Store {

ConnectionList& ConnectionList::OfProcess() {
  // Never destroyed: threads may outlive the end of main().
  static ConnectionList& list = *new ConnectionList;
  return list;
}

ConnectionList::ConnectionList() {
  // What is registered first is locked last: nobody waits with the handles locked.
  HandleTable::OfProcess();
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

// A thread that waits for another one's group holds its connection's lock, and that group ends only
// if its thread gets at its own: all locks or none, and meanwhile nobody begins anything.
void ConnectionList::BeforeFork() {
  ++m_forking;
  while (!TryLockAll()) std::this_thread::sleep_for(kForkRetry);
  for (Connection* connection : m_connections) connection->CloseForFork();
  m_spare.reset();
}

bool ConnectionList::TryLockAll() {
  if (!m_mutex.try_lock()) return false;
  std::vector<Connection*> locked;
  bool all = true;
  for (Connection* connection : m_connections) {
    all = connection->TryLockForFork();
    if (!all) break;
    locked.push_back(connection);
  }
  if (all && m_spareMutex.try_lock()) return true;
  for (Connection* connection : locked) connection->UnlockInParent();
  m_mutex.unlock();
  return false;
}

void ConnectionList::AfterForkInParent() {
  m_spareMutex.unlock();
  for (Connection* connection : m_connections) connection->UnlockInParent();
  m_mutex.unlock();
  --m_forking;
}

void ConnectionList::AfterForkInChild() {
  m_spareMutex.unlock();
  for (Connection* connection : m_connections) {
    if (!connection->UnlockInChild()) m_orphaned = true;
  }
  m_mutex.unlock();
  m_forking = 0;
}

}  // namespace Corvane::Store
