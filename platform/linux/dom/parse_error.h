// Why the last load failed, as it was when the object was asked for.
#ifndef CORVANE_PLATFORM_LINUX_DOM_PARSE_ERROR_H_
#define CORVANE_PLATFORM_LINUX_DOM_PARSE_ERROR_H_

#include <utility>

#include "platform/linux/dom/com_object.h"
#include "platform/linux/dom/tree/encoding.h"
#include "platform/linux/dom/tree/xml_reader.h"

namespace Corvane::Dom {

class ParseError final : public ComObject<IXMLDOMParseError, &IID_IXMLDOMParseError> {
 public:
  explicit ParseError(LoadFailure failure) : m_failure(std::move(failure)) {}

  HRESULT STDMETHODCALLTYPE get_errorCode(LONG* code) override {
    return Tell(m_failure.code, code);
  }
  HRESULT STDMETHODCALLTYPE get_reason(BSTR* reason) override {
    return Give(reason,
                [&] { return m_failure.code == S_OK ? nullptr : Utf8ToBstr(m_failure.reason); });
  }
  HRESULT STDMETHODCALLTYPE get_line(LONG* line) override { return Tell(m_failure.line, line); }
  HRESULT STDMETHODCALLTYPE get_linepos(LONG* linepos) override {
    return Tell(m_failure.column, linepos);
  }

 private:
  HRESULT Tell(LONG value, LONG* out) const {
    if (out == nullptr) return E_INVALIDARG;
    *out = value;
    return m_failure.code == S_OK ? S_FALSE : S_OK;
  }

  const LoadFailure m_failure;
};

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_PARSE_ERROR_H_
