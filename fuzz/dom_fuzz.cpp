// The DOM on any bytes: the first byte is the length of a pattern, which follows it; the rest is
// the document, loaded as text. The two ways of selecting must agree, and everything of the result
// must be readable.
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>

#include "corvane/handles.h"
#include "platform/linux/dom/dom_objects.h"
#include "platform/linux/dom/tree/xml_reader.h"

namespace {

using Corvane::RefPtr;
using Corvane::UniqueBstr;

std::wstring Describe(IXMLDOMNode* node) {
  UniqueBstr name;
  UniqueBstr text;
  if (node->get_nodeName(name.Receive()) != S_OK || node->get_text(text.Receive()) != S_OK) {
    std::abort();
  }
  return std::wstring(name.View()) + L' ' + text.Get();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || data[0] >= size) return 0;
  const std::span<const std::uint8_t> text(data + 1 + data[0], size - 1 - data[0]);
  const UniqueBstr pattern = UniqueBstr::Make(std::wstring(data + 1, data + 1 + data[0]));
  const UniqueBstr xml = UniqueBstr::Make(std::wstring(text.begin(), text.end()));
  Corvane::Dom::LoadFailure failure;
  Corvane::Dom::ReadBytes({reinterpret_cast<const char*>(text.data()), text.size()}, &failure);

  RefPtr<IXMLDOMDocument> document;
  CreateDomDocument(IID_IXMLDOMDocument, document.ReceiveVoid());
  VARIANT_BOOL loaded = VARIANT_FALSE;
  document->loadXML(xml.Get(), &loaded);
  RefPtr<IXMLDOMNode> first;
  RefPtr<IXMLDOMNode> same;
  RefPtr<IXMLDOMNodeList> all;
  const HRESULT found = document->selectSingleNode(pattern.Get(), first.Receive());
  document->selectNodes(pattern.Get(), all.Receive());
  // Either search alone may cost more than the bound.
  if (found != E_FAIL && all && all->get_item(0, same.Receive()) != found) std::abort();
  if (first && same && Describe(first.Get()) != Describe(same.Get())) std::abort();
  return 0;
}
