#include "platform/linux/dom/dom_document.h"

#include <cwchar>
#include <string>
#include <utility>

#include "platform/linux/dom/parse_error.h"
#include "platform/linux/dom/tree/encoding.h"
#include "platform/linux/dom/tree/file_source.h"

namespace Corvane::Dom {
namespace {

constexpr wchar_t kByteOrderMark = 0xFEFF;
constexpr std::size_t kMaxSourceBytes =
    65'536;  // of a path or URL: longer than any the system opens
constexpr HRESULT kSourceNotFound = static_cast<HRESULT>(0x800C0006);  // INET_E_OBJECT_NOT_FOUND

DocumentPtr EmptyDocument() { return std::make_shared<DocumentData>(std::make_unique<Tree>()); }

}  // namespace

DomDocument::DomDocument(DocumentPtr document) : NodeObject({std::move(document), 0}) {}

HRESULT DomDocument::QueryInterface(REFIID iid, void** object) {
  return Query(iid, {&IID_IXMLDOMNode, &IID_IXMLDOMDocument}, object);
}

HRESULT DomDocument::get_documentElement(IXMLDOMElement** element) {
  if (element == nullptr) return E_INVALIDARG;
  *element = nullptr;
  return Guard([&] {
    const NodeId root = m_handle.document->tree->DocumentElement();
    if (root == kNoNode) return S_FALSE;
    *element = new DomElement({m_handle.document, root});
    return S_OK;
  });
}

HRESULT DomDocument::load(VARIANT source, VARIANT_BOOL* succeeded) {
  if (succeeded != nullptr) *succeeded = VARIANT_FALSE;
  BSTR path = nullptr;
  switch (source.vt) {
    case VT_BSTR:
      path = source.bstrVal;
      break;
    case VT_BSTR | VT_BYREF:
      if (source.pbstrVal == nullptr) return E_INVALIDARG;
      path = *source.pbstrVal;
      break;
    case VT_UNKNOWN:
    case VT_DISPATCH:
      // Streams and other documents are no sources here.
      return source.punkVal == nullptr ? E_INVALIDARG : E_NOTIMPL;
    default:
      break;
  }
  return Guard([&] { return Replace(ReadSource(path), succeeded); });
}

HRESULT DomDocument::loadXML(BSTR xml, VARIANT_BOOL* succeeded) {
  if (succeeded != nullptr) *succeeded = VARIANT_FALSE;
  return Guard([&] { return Replace(ReadText(xml), succeeded); });
}

std::unique_ptr<Tree> DomDocument::ReadText(BSTR xml) {
  m_handle.document = EmptyDocument();
  m_failure = {};
  std::wstring_view text = xml != nullptr ? std::wstring_view(xml) : std::wstring_view();
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(1);
  std::string utf8;
  if (!WideToUtf8(text, Corvane::DomLimits::kMaxDocumentBytes, &utf8)) {
    m_failure = {E_FAIL, "The text is too large, or holds a character that is none.", 0, 0};
    return nullptr;
  }
  return ReadUtf8(utf8, &m_failure);
}

std::unique_ptr<Tree> DomDocument::ReadSource(BSTR source) {
  m_handle.document = EmptyDocument();
  m_failure = {};
  const std::wstring_view wide =
      source != nullptr ? std::wstring_view(source) : std::wstring_view();
  std::string path;
  std::string bytes;
  std::string reason = "The source is no path.";
  if (!WideToUtf8(wide, kMaxSourceBytes, &path) || !ReadFile(path, &bytes, &reason)) {
    m_failure = {kSourceNotFound, std::move(reason), 0, 0};
    return nullptr;
  }
  return ReadBytes(bytes, &m_failure);
}

HRESULT DomDocument::Replace(std::unique_ptr<Tree> tree, VARIANT_BOOL* succeeded) {
  if (!tree) return S_FALSE;
  m_handle.document = std::make_shared<DocumentData>(std::move(tree));
  if (succeeded != nullptr) *succeeded = VARIANT_TRUE;
  return S_OK;
}

HRESULT DomDocument::get_parseError(IXMLDOMParseError** error) {
  if (error == nullptr) return E_INVALIDARG;
  *error = nullptr;
  return Guard([&] {
    *error = new ParseError(m_failure);
    return S_OK;
  });
}

HRESULT DomDocument::get_async(VARIANT_BOOL* async) {
  if (async == nullptr) return E_INVALIDARG;
  *async = m_async;
  return S_OK;
}

HRESULT DomDocument::put_async(VARIANT_BOOL async) {
  m_async = async != VARIANT_FALSE ? VARIANT_TRUE : VARIANT_FALSE;
  return S_OK;
}

HRESULT DomDocument::get_preserveWhiteSpace(VARIANT_BOOL* preserve) {
  if (preserve == nullptr) return E_INVALIDARG;
  *preserve = VARIANT_FALSE;
  return S_OK;
}

HRESULT DomDocument::put_preserveWhiteSpace(VARIANT_BOOL preserve) {
  return preserve == VARIANT_FALSE ? S_OK : E_NOTIMPL;
}

}  // namespace Corvane::Dom

HRESULT CreateDomDocument(REFIID iid, void** object) {
  if (object == nullptr) return E_INVALIDARG;
  *object = nullptr;
  return Corvane::Dom::Guard([&] {
    auto* document = new Corvane::Dom::DomDocument(Corvane::Dom::EmptyDocument());
    const HRESULT result = document->QueryInterface(iid, object);
    document->Release();
    return result;
  });
}
