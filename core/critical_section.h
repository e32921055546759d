// A lock of the system, for std::lock_guard.
#ifndef CORVANE_CORE_CRITICAL_SECTION_H_
#define CORVANE_CORE_CRITICAL_SECTION_H_

#include "platform/system.h"

namespace Corvane {

class CriticalSection {
 public:
  CriticalSection() { InitializeCriticalSection(&m_section); }
  CriticalSection(const CriticalSection&) = delete;
  CriticalSection& operator=(const CriticalSection&) = delete;
  ~CriticalSection() { DeleteCriticalSection(&m_section); }

  void lock() { EnterCriticalSection(&m_section); }
  void unlock() { LeaveCriticalSection(&m_section); }

 private:
  CRITICAL_SECTION m_section;
};

}  // namespace Corvane

#endif  // CORVANE_CORE_CRITICAL_SECTION_H_
