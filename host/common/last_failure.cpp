#include "host/common/last_failure.h"

#include <utility>

#include "base/exception_wall.h"

namespace Corvane::Host {

void LastFailure::Set(std::wstring sentence) {
  const std::lock_guard lock(m_mutex);
  m_sentence = std::move(sentence);
}

const wchar_t* LastFailure::Get() {
  return BehindWall<const wchar_t*>(L"out of memory", [&]() -> const wchar_t* {
    const std::lock_guard lock(m_mutex);
    std::wstring& copy = m_copies[std::this_thread::get_id()];
    copy = m_sentence;
    return copy.c_str();
  });
}

}  // namespace Corvane::Host
