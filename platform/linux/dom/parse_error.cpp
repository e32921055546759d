#include "platform/linux/dom/parse_error.h"

#include "platform/linux/dom/tree/encoding.h"

namespace Corvane::Dom {

HRESULT ParseError::QueryInterface(REFIID iid, void** object) {
  return Query(iid, {&IID_IXMLDOMParseError}, object);
}

HRESULT ParseError::Give(LONG value, LONG* out) const {
  if (out == nullptr) return E_INVALIDARG;
  *out = value;
  return m_failure.code == S_OK ? S_FALSE : S_OK;
}

HRESULT ParseError::get_errorCode(LONG* code) { return Give(m_failure.code, code); }
HRESULT ParseError::get_line(LONG* line) { return Give(m_failure.line, line); }
HRESULT ParseError::get_linepos(LONG* linepos) { return Give(m_failure.column, linepos); }

HRESULT ParseError::get_reason(BSTR* reason) {
  if (reason == nullptr) return E_INVALIDARG;
  *reason = nullptr;
  if (m_failure.code == S_OK) return S_FALSE;
  return Guard([&] {
    *reason = Utf8ToBstr(m_failure.reason);
    return S_OK;
  });
}

}  // namespace Corvane::Dom
