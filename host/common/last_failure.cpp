#include "host/common/last_failure.h"

#include <exception>
#include <utility>

namespace Corvane::Host {

void LastFailure::Set(std::wstring sentence) {
  const std::lock_guard lock(m_mutex);
  m_sentence = std::move(sentence);
}

const wchar_t* LastFailure::Get() try {
  const std::lock_guard lock(m_mutex);
  std::wstring& copy = m_copies[std::this_thread::get_id()];
  copy = m_sentence;
  return copy.c_str();
} catch (const std::exception&) {
  return L"out of memory";
}

}  // namespace Corvane::Host
