// The DOM on any bytes: the first byte is the length of a pattern, which follows it; the rest is
// the document, loaded as text. The two ways of selecting must agree, and everything of the result
// must be readable.
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <span>
#include <string>

#include "corvane/platform.h"
#include "platform/linux/dom/dom_objects.h"
#include "platform/linux/dom/tree/xml_reader.h"

namespace {

BSTR MakeBstr(const std::wstring& text) {
  return SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

std::wstring Describe(IXMLDOMNode* node) {
  BSTR name = nullptr;
  BSTR text = nullptr;
  if (node->get_nodeName(&name) != S_OK || node->get_text(&text) != S_OK) std::abort();
  const std::wstring described = std::wstring(name) + L' ' + text;
  SysFreeString(name);
  SysFreeString(text);
  return described;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || data[0] >= size) return 0;
  const std::span<const std::uint8_t> text(data + 1 + data[0], size - 1 - data[0]);
  BSTR pattern = MakeBstr({data + 1, data + 1 + data[0]});
  BSTR xml = MakeBstr({text.begin(), text.end()});
  Corvane::Dom::LoadFailure failure;
  Corvane::Dom::ReadBytes({reinterpret_cast<const char*>(text.data()), text.size()}, &failure);

  IXMLDOMDocument* document = nullptr;
  CreateDomDocument(IID_IXMLDOMDocument, reinterpret_cast<void**>(&document));
  VARIANT_BOOL loaded = VARIANT_FALSE;
  document->loadXML(xml, &loaded);
  IXMLDOMNode* first = nullptr;
  IXMLDOMNode* same = nullptr;
  IXMLDOMNodeList* all = nullptr;
  const HRESULT found = document->selectSingleNode(pattern, &first);
  document->selectNodes(pattern, &all);
  // Either search alone may cost more than the bound.
  if (found != E_FAIL && all != nullptr && all->get_item(0, &same) != found) std::abort();
  if (first != nullptr && same != nullptr && Describe(first) != Describe(same)) std::abort();

  for (IUnknown* object : std::initializer_list<IUnknown*>{first, same, all, document}) {
    if (object != nullptr) object->Release();
  }
  SysFreeString(pattern);
  SysFreeString(xml);
  return 0;
}
