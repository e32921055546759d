// An owned registry key.
#ifndef CORVANE_CORE_UNIQUE_HKEY_H_
#define CORVANE_CORE_UNIQUE_HKEY_H_

#include "platform/system.h"

namespace Corvane {

class UniqueHkey {
 public:
  UniqueHkey() = default;
  UniqueHkey(const UniqueHkey&) = delete;
  UniqueHkey& operator=(const UniqueHkey&) = delete;
  ~UniqueHkey() { Reset(); }

  HKEY Get() const { return m_key; }
  void Reset() {
    if (m_key) RegCloseKey(m_key);
    m_key = nullptr;
  }
  // For an output argument: closes what is held first.
  HKEY* Receive() {
    Reset();
    return &m_key;
  }

 private:
  HKEY m_key = nullptr;
};

}  // namespace Corvane

#endif  // CORVANE_CORE_UNIQUE_HKEY_H_
