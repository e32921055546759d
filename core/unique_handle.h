// An event or a thread of the system, closed when its owner goes.
#ifndef CORVANE_CORE_UNIQUE_HANDLE_H_
#define CORVANE_CORE_UNIQUE_HANDLE_H_

#include <utility>

#include "platform/system.h"

namespace Corvane {

class UniqueHandle {
 public:
  UniqueHandle() = default;
  explicit UniqueHandle(HANDLE handle) : m_handle(handle) {}
  UniqueHandle(UniqueHandle&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
  UniqueHandle& operator=(UniqueHandle&& other) noexcept {
    std::swap(m_handle, other.m_handle);
    other.Reset();
    return *this;
  }
  ~UniqueHandle() { Reset(); }

  void Reset() {
    if (m_handle) CloseHandle(std::exchange(m_handle, nullptr));
  }
  HANDLE Get() const { return m_handle; }
  explicit operator bool() const { return m_handle != nullptr; }

 private:
  HANDLE m_handle = nullptr;
};

}  // namespace Corvane

#endif  // CORVANE_CORE_UNIQUE_HANDLE_H_
