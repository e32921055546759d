// The process's open handles. It stands for the kernel's table, so that a null, made-up or closed
// handle is an error and never a crash.
#ifndef CORVANE_PLATFORM_LINUX_MISC_HANDLE_TABLE_H_
#define CORVANE_PLATFORM_LINUX_MISC_HANDLE_TABLE_H_

#include <deque>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "corvane/linux/base.h"

namespace Corvane {

enum class HandleKind { kRegistryKey, kPrinter, kWaitable };

// What a handle stands for. Locks itself: several threads may use one handle. Each class has a
// constant kKind of its own.
class HandleObject {
 public:
  explicit HandleObject(HandleKind kind) : m_kind(kind) {}
  HandleObject(const HandleObject&) = delete;
  HandleObject& operator=(const HandleObject&) = delete;
  virtual ~HandleObject() = default;

  HandleKind Kind() const { return m_kind; }

 private:
  const HandleKind m_kind;
};

// Any thread. Handles are small multiples of 4, as on Windows; the value of a closed one comes back
// as late as possible. An object that one thread closes lives until the last thread has done with
// it. A child has its own copy after fork(); what that means for an object is the object's concern.
class HandleTable {
 public:
  static HandleTable& OfProcess();

  // std::bad_alloc leaves the table as it was.
  HANDLE Add(std::shared_ptr<HandleObject> object);

  // Null unless `handle` is open and stands for a `T`. Remove closes it.
  template <typename T>
  std::shared_ptr<T> Find(HANDLE handle) {
    const std::lock_guard lock(m_mutex);
    const Slot* slot = FindLocked(handle, T::kKind);
    return slot != nullptr ? std::static_pointer_cast<T>(*slot) : nullptr;
  }
  template <typename T>
  std::shared_ptr<T> Remove(HANDLE handle) {
    const std::lock_guard lock(m_mutex);
    Slot* slot = FindLocked(handle, T::kKind);
    return slot != nullptr ? std::static_pointer_cast<T>(TakeLocked(slot)) : nullptr;
  }

 private:
  using Slot = std::shared_ptr<HandleObject>;

  HandleTable();

  Slot* FindLocked(HANDLE handle, HandleKind kind);
  Slot TakeLocked(Slot* slot);

  std::mutex m_mutex;  // guards everything below
  std::vector<Slot> m_slots;
  std::deque<std::size_t> m_free;  // the one closed first comes first
};

}  // namespace Corvane

#endif  // CORVANE_PLATFORM_LINUX_MISC_HANDLE_TABLE_H_
