// An owned BSTR.
#ifndef CORVANE_CORE_UNIQUE_BSTR_H_
#define CORVANE_CORE_UNIQUE_BSTR_H_

#include <string_view>
#include <utility>

#include "corvane/platform.h"

namespace Corvane {

class UniqueBstr {
 public:
  UniqueBstr() = default;
  explicit UniqueBstr(BSTR text) : m_text(text) {}
  UniqueBstr(UniqueBstr&& other) noexcept : m_text(other.Release()) {}
  UniqueBstr& operator=(UniqueBstr&& other) noexcept {
    if (this != &other) Reset(other.Release());
    return *this;
  }
  ~UniqueBstr() { SysFreeString(m_text); }

  // A copy of `text`; null gives null. Out of memory is raised as _com_error with E_OUTOFMEMORY.
  static UniqueBstr Make(const wchar_t* text) {
    UniqueBstr copy(SysAllocString(text));
    if (text && !copy.m_text) _com_issue_error(E_OUTOFMEMORY);
    return copy;
  }
  // `chars` characters to be filled in.
  static UniqueBstr MakeLength(UINT chars) {
    UniqueBstr blank(SysAllocStringLen(nullptr, chars));
    if (!blank.m_text) _com_issue_error(E_OUTOFMEMORY);
    return blank;
  }

  BSTR Get() const { return m_text; }
  std::wstring_view View() const {
    return m_text ? std::wstring_view(m_text, SysStringLen(m_text)) : std::wstring_view();
  }
  void Reset(BSTR text = nullptr) {
    SysFreeString(m_text);
    m_text = text;
  }
  [[nodiscard]] BSTR Release() { return std::exchange(m_text, nullptr); }
  // For an output argument: frees what is held first.
  BSTR* Receive() {
    Reset();
    return &m_text;
  }

 private:
  BSTR m_text = nullptr;
};

}  // namespace Corvane

#endif  // CORVANE_CORE_UNIQUE_BSTR_H_
