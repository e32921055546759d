// Why the last load failed, as it was when the object was asked for.
#ifndef CORVANE_PLATFORM_LINUX_DOM_PARSE_ERROR_H_
#define CORVANE_PLATFORM_LINUX_DOM_PARSE_ERROR_H_

#include <utility>

#include "platform/linux/dom/com_object.h"
#include "platform/linux/dom/tree/xml_reader.h"

namespace Corvane::Dom {

class ParseError final : public ComObject<IXMLDOMParseError> {
 public:
  explicit ParseError(LoadFailure failure) : m_failure(std::move(failure)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  HRESULT STDMETHODCALLTYPE get_errorCode(LONG* code) override;
  HRESULT STDMETHODCALLTYPE get_reason(BSTR* reason) override;
  HRESULT STDMETHODCALLTYPE get_line(LONG* line) override;
  HRESULT STDMETHODCALLTYPE get_linepos(LONG* linepos) override;

 private:
  HRESULT Give(LONG value, LONG* out) const;

  const LoadFailure m_failure;
};

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_PARSE_ERROR_H_
