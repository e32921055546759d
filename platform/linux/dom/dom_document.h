// The document object and its factory.
#ifndef CORVANE_PLATFORM_LINUX_DOM_DOM_DOCUMENT_H_
#define CORVANE_PLATFORM_LINUX_DOM_DOM_DOCUMENT_H_

#include <memory>

#include "platform/linux/dom/dom_node.h"
#include "platform/linux/dom/tree/xml_reader.h"

namespace Corvane::Dom {

class DomDocument final : public NodeObject<IXMLDOMDocument> {
 public:
  explicit DomDocument(DocumentPtr document);

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  HRESULT STDMETHODCALLTYPE get_documentElement(IXMLDOMElement** element) override;
  HRESULT STDMETHODCALLTYPE load(VARIANT source, VARIANT_BOOL* succeeded) override;
  HRESULT STDMETHODCALLTYPE loadXML(BSTR xml, VARIANT_BOOL* succeeded) override;
  HRESULT STDMETHODCALLTYPE get_parseError(IXMLDOMParseError** error) override;
  HRESULT STDMETHODCALLTYPE get_async(VARIANT_BOOL* async) override;
  HRESULT STDMETHODCALLTYPE put_async(VARIANT_BOOL async) override;
  HRESULT STDMETHODCALLTYPE get_preserveWhiteSpace(VARIANT_BOOL* preserve) override;
  HRESULT STDMETHODCALLTYPE put_preserveWhiteSpace(VARIANT_BOOL preserve) override;

 private:
  std::unique_ptr<Tree> ReadText(BSTR xml);
  std::unique_ptr<Tree> ReadSource(BSTR source);
  HRESULT Replace(std::unique_ptr<Tree> tree, VARIANT_BOOL* succeeded);

  LoadFailure m_failure;
  VARIANT_BOOL m_async = VARIANT_TRUE;
};

}  // namespace Corvane::Dom

// An empty document with one reference for the caller. E_NOINTERFACE when `iid` is none of
// IUnknown, IDispatch, IXMLDOMNode and IXMLDOMDocument, E_INVALIDARG for a null `object`,
// E_OUTOFMEMORY. *object is null after a failure.
HRESULT CreateDomDocument(REFIID iid, void** object);

#endif  // CORVANE_PLATFORM_LINUX_DOM_DOM_DOCUMENT_H_
