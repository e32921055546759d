#include "platform/linux/misc/handle_table.h"

#include <pthread.h>

#include <bit>

namespace Corvane {
namespace {

constexpr std::uintptr_t kStep = 4;
// A value that a careless caller still holds does not soon mean another object.
constexpr std::size_t kMinFreeBeforeReuse = 1024;

}  // namespace

HandleTable& HandleTable::OfProcess() {
  // Never destroyed: threads may outlive the end of main().
  static HandleTable& table = *new HandleTable;
  return table;
}

HandleTable::HandleTable() {
  // No thread is changing the table that a child gets.
  const auto lock = [] { OfProcess().m_mutex.lock(); };
  const auto unlock = [] { OfProcess().m_mutex.unlock(); };
  pthread_atfork(lock, unlock, unlock);
}

HANDLE HandleTable::Add(std::shared_ptr<HandleObject> object) {
  const std::lock_guard lock(m_mutex);
  std::size_t index = m_slots.size();
  if (m_free.size() >= kMinFreeBeforeReuse) {
    index = m_free.front();
    m_free.pop_front();
    m_slots[index] = std::move(object);
  } else {
    m_slots.push_back(std::move(object));
  }
  return std::bit_cast<HANDLE>((index + 1) * kStep);
}

HandleTable::Slot* HandleTable::FindLocked(HANDLE handle, HandleKind kind) {
  const auto value = reinterpret_cast<std::uintptr_t>(handle);
  const std::size_t index = value / kStep - 1;  // 0 to 3 give the largest index there is
  if (value % kStep != 0 || index >= m_slots.size()) return nullptr;
  Slot& slot = m_slots[index];
  return slot != nullptr && slot->Kind() == kind ? &slot : nullptr;
}

HandleTable::Slot HandleTable::TakeLocked(Slot* slot) {
  m_free.push_back(static_cast<std::size_t>(slot - m_slots.data()));
  return std::move(*slot);
}

}  // namespace Corvane
