#include "tools/map/dom.h"

#include "tools/output/failure.h"

namespace Corvane::Tool {
namespace {

constexpr GUID kDocumentClass = {
    0xF5078F32, 0xC551, 0x11D3, {0x89, 0xB9, 0x00, 0x00, 0xF8, 0x1F, 0xE2, 0x21}};
constexpr GUID kDocumentInterface = {
    0x2933BF81, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

}  // namespace

RefPtr<IXMLDOMDocument> CreateDocument() {
  RefPtr<IXMLDOMDocument> document;
  const HRESULT result = CoCreateInstance(kDocumentClass, nullptr, CLSCTX_INPROC_SERVER,
                                          kDocumentInterface, document.ReceiveVoid());
  if (FAILED(result) || !document) {
    throw Failure(kSystemFailure, "the system's XML parser cannot be made");
  }
  return document;
}

bool IsPattern(const std::wstring& pattern) {
  const RefPtr<IXMLDOMDocument> document = CreateDocument();
  RefPtr<IXMLDOMNode> node;
  return SUCCEEDED(document->selectSingleNode(UniqueBstr::Make(pattern).Get(), node.Receive()));
}

}  // namespace Corvane::Tool
