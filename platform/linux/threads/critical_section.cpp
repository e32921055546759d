#include <mutex>

#include "platform/linux/threads/threads.h"

namespace {

std::recursive_mutex& CriticalSectionMutex(CRITICAL_SECTION* section) {
  return *static_cast<std::recursive_mutex*>(section->mutex);
}

}  // namespace

extern "C" {

void WINAPI InitializeCriticalSection(CRITICAL_SECTION* section) {
  section->mutex = new std::recursive_mutex;
}

void WINAPI EnterCriticalSection(CRITICAL_SECTION* section) {
  CriticalSectionMutex(section).lock();
}

void WINAPI LeaveCriticalSection(CRITICAL_SECTION* section) {
  CriticalSectionMutex(section).unlock();
}

void WINAPI DeleteCriticalSection(CRITICAL_SECTION* section) {
  delete &CriticalSectionMutex(section);
  section->mutex = nullptr;
}

}  // extern "C"
