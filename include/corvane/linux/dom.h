// The document object model of MSXML 3.0 under all its defaults, for reading: white space dropped,
// XSL patterns as the selection language, literal prefixes, synchronous loading.
//
// Documents are refused (S_FALSE, like any malformed one) when they hold a DOCTYPE, or pass the
// limits below, which protect the process from devices: nothing in the layer recurses per level,
// loading takes time linear in the document, and a selection that would visit more than
// kMaxSelectionSteps nodes ends in E_FAIL. One set of nodes after another costs each step of a path
// its contexts' subtrees once, so that only filters that look far around for every node of a huge
// document come near the bound.
//
// Strings handed out are BSTRs that the caller frees; nodes carry one reference of the caller's and
// keep their document alive. Outputs are emptied before anything else; a NULL output pointer gives
// E_INVALIDARG. S_FALSE with an empty output means "there is none". A document and its nodes are
// used by one thread at a time.
#ifndef CORVANE_LINUX_DOM_H_
#define CORVANE_LINUX_DOM_H_

#include "corvane/linux/automation.h"
#include "corvane/linux/com.h"

namespace Corvane::DomLimits {
constexpr std::uint32_t kMaxDocumentBytes = 64u << 20;  // of UTF-8 text (or of the file): memory
constexpr std::uint32_t kMaxNodes =
    2'000'000;  // elements, attributes, texts, comments, ...: memory
constexpr std::uint32_t kMaxDepth =
    100'000;  // open elements: the parser keeps some 160 bytes of each
constexpr std::uint32_t kMaxPatternChars = 65'536;  // one selection expression
constexpr std::uint32_t kMaxPatternDepth =
    200;  // nested parentheses and filters of an expression: the stack
constexpr std::uint64_t kMaxSelectionSteps =
    100'000'000;  // nodes visited by one selection: time, about a second
}  // namespace Corvane::DomLimits

extern "C" {
CORVANE_API extern const CLSID CLSID_DOMDocument30;
CORVANE_API extern const IID IID_IXMLDOMDocument;
CORVANE_API extern const IID IID_IXMLDOMNode;
CORVANE_API extern const IID IID_IXMLDOMElement;
CORVANE_API extern const IID IID_IXMLDOMNodeList;
CORVANE_API extern const IID IID_IXMLDOMNamedNodeMap;
CORVANE_API extern const IID IID_IXMLDOMParseError;
}

typedef enum tagDOMNodeType {
  NODE_INVALID = 0,
  NODE_ELEMENT = 1,
  NODE_ATTRIBUTE = 2,
  NODE_TEXT = 3,
  NODE_CDATA_SECTION = 4,
  NODE_PROCESSING_INSTRUCTION = 7,
  NODE_COMMENT = 8,
  NODE_DOCUMENT = 9,
} DOMNodeType;

struct IXMLDOMDocument;
struct IXMLDOMNamedNodeMap;
struct IXMLDOMNodeList;

struct IXMLDOMNode : public IDispatch {
  virtual HRESULT STDMETHODCALLTYPE get_nodeName(BSTR* name) = 0;
  virtual HRESULT STDMETHODCALLTYPE
  get_nodeValue(VARIANT* value) = 0;  // document, element: S_FALSE, VT_NULL
  virtual HRESULT STDMETHODCALLTYPE get_nodeType(DOMNodeType* type) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_parentNode(IXMLDOMNode** parent) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_childNodes(IXMLDOMNodeList** children) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_firstChild(IXMLDOMNode** child) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_lastChild(IXMLDOMNode** child) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_previousSibling(IXMLDOMNode** sibling) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_nextSibling(IXMLDOMNode** sibling) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_attributes(IXMLDOMNamedNodeMap** map) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ownerDocument(IXMLDOMDocument** document) = 0;
  virtual HRESULT STDMETHODCALLTYPE hasChildNodes(VARIANT_BOOL* has) = 0;
  virtual HRESULT STDMETHODCALLTYPE
  get_text(BSTR* text) = 0;  // always S_OK; "" when there is nothing
  // XSL patterns, relative to this node. E_FAIL: the expression does not parse, is no set of nodes
  // or costs too much. A NULL expression or output: E_INVALIDARG, and the output is left alone.
  virtual HRESULT STDMETHODCALLTYPE selectNodes(BSTR expression, IXMLDOMNodeList** nodes) = 0;
  virtual HRESULT STDMETHODCALLTYPE selectSingleNode(BSTR expression, IXMLDOMNode** node) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_namespaceURI(BSTR* uri) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_prefix(BSTR* prefix) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_baseName(BSTR* name) = 0;
};

struct IXMLDOMElement : public IXMLDOMNode {
  virtual HRESULT STDMETHODCALLTYPE get_tagName(BSTR* name) = 0;
  virtual HRESULT STDMETHODCALLTYPE getAttribute(BSTR name,
                                                 VARIANT* value) = 0;  // missing: S_FALSE, VT_NULL
};

struct IXMLDOMNodeList : public IDispatch {
  virtual HRESULT STDMETHODCALLTYPE get_item(LONG index, IXMLDOMNode** node) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_length(LONG* length) = 0;
  virtual HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode** node) = 0;
  virtual HRESULT STDMETHODCALLTYPE reset() = 0;
};

struct IXMLDOMNamedNodeMap : public IDispatch {
  virtual HRESULT STDMETHODCALLTYPE getNamedItem(BSTR name,
                                                 IXMLDOMNode** node) = 0;  // the name as written
  virtual HRESULT STDMETHODCALLTYPE get_item(LONG index, IXMLDOMNode** node) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_length(LONG* length) = 0;
  virtual HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode** node) = 0;
  virtual HRESULT STDMETHODCALLTYPE reset() = 0;
};

// Of the last load: S_OK everywhere when it failed; error code 0 and S_FALSE with empty outputs
// when it did not.
struct IXMLDOMParseError : public IDispatch {
  virtual HRESULT STDMETHODCALLTYPE get_errorCode(LONG* code) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_reason(BSTR* reason) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_line(LONG* line) = 0;  // from 1; 0 when it is not known
  virtual HRESULT STDMETHODCALLTYPE get_linepos(LONG* linepos) = 0;  // column in characters, from 1
};

struct IXMLDOMDocument : public IXMLDOMNode {
  virtual HRESULT STDMETHODCALLTYPE get_documentElement(IXMLDOMElement** element) = 0;
  // A local path or a file: URL in a VT_BSTR. S_OK and VARIANT_TRUE, or S_FALSE, VARIANT_FALSE and
  // an empty document.
  // `succeeded` may be NULL, here and in loadXML.
  virtual HRESULT STDMETHODCALLTYPE load(VARIANT source, VARIANT_BOOL* succeeded) = 0;
  virtual HRESULT STDMETHODCALLTYPE loadXML(BSTR xml, VARIANT_BOOL* succeeded) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_parseError(IXMLDOMParseError** error) = 0;
  // Loading is complete on return whatever `async` says.
  virtual HRESULT STDMETHODCALLTYPE get_async(VARIANT_BOOL* async) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_async(VARIANT_BOOL async) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_preserveWhiteSpace(VARIANT_BOOL* preserve) = 0;
  virtual HRESULT STDMETHODCALLTYPE
  put_preserveWhiteSpace(VARIANT_BOOL preserve) = 0;  // only VARIANT_FALSE: E_NOTIMPL
};

#endif  // CORVANE_LINUX_DOM_H_
