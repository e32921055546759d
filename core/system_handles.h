// Locks, events and threads of the system, with an owner.
#ifndef CORVANE_CORE_SYSTEM_HANDLES_H_
#define CORVANE_CORE_SYSTEM_HANDLES_H_

#include "corvane/handles.h"
#include "platform/system.h"

namespace Corvane {

// For std::lock_guard.
class SystemLock {
 public:
  SystemLock() { InitializeCriticalSection(&m_section); }
  SystemLock(const SystemLock&) = delete;
  SystemLock& operator=(const SystemLock&) = delete;
  ~SystemLock() { DeleteCriticalSection(&m_section); }

  void lock() { EnterCriticalSection(&m_section); }
  void unlock() { LeaveCriticalSection(&m_section); }

 private:
  CRITICAL_SECTION m_section;
};

// An event or a thread, closed when its owner goes.
struct CloseSystemHandle {
  void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using UniqueHandle = UniqueHandleOf<HANDLE, CloseSystemHandle>;

}  // namespace Corvane

#endif  // CORVANE_CORE_SYSTEM_HANDLES_H_
