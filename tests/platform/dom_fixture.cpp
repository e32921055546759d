#include "tests/platform/dom_fixture.h"

namespace Corvane::Test {
namespace {

constexpr CLSID kDocumentClass = {
    0xF5078F32, 0xC551, 0x11D3, {0x89, 0xB9, 0x00, 0x00, 0xF8, 0x1F, 0xE2, 0x21}};

}  // namespace

DomTest::DomTest() {
  CoInitialize(nullptr);
  EXPECT_EQ(S_OK,
            CoCreateInstance(kDocumentClass, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument,
                             reinterpret_cast<void**>(m_document.Receive())));
}

DomTest::~DomTest() {
  m_document.Receive();
  CoUninitialize();
}

HRESULT DomTest::Load(std::wstring_view xml) {
  VARIANT_BOOL succeeded = 7;
  const HRESULT result = m_document->loadXML(Text(xml).Get(), &succeeded);
  EXPECT_EQ(result == S_OK ? VARIANT_TRUE : VARIANT_FALSE, succeeded);
  return result;
}

HRESULT DomTest::LoadFile(std::wstring_view path) {
  const Text text(path);
  VARIANT source;
  VariantInit(&source);
  source.vt = VT_BSTR;
  source.bstrVal = text.Get();
  VARIANT_BOOL succeeded = 7;
  const HRESULT result = m_document->load(source, &succeeded);
  EXPECT_EQ(result == S_OK ? VARIANT_TRUE : VARIANT_FALSE, succeeded);
  return result;
}

void DomTest::Find(std::wstring_view pattern, Com<IXMLDOMNode>* node) {
  m_document->selectSingleNode(Text(pattern).Get(), node->Receive());
}

std::wstring DomTest::Select(std::wstring_view pattern) {
  Com<IXMLDOMNode> node;
  const HRESULT result = m_document->selectSingleNode(Text(pattern).Get(), node.Receive());
  const std::wstring all = SelectAll(pattern);
  if (result == E_FAIL) {
    EXPECT_EQ(L"<refused>", all) << Narrow(pattern);
    return L"<refused>";
  }
  EXPECT_EQ(node ? S_OK : S_FALSE, result) << Narrow(pattern);
  if (!node) {
    EXPECT_EQ(L"", all) << Narrow(pattern);
    return L"<none>";
  }
  const std::wstring text = TextOf(node.Get());
  EXPECT_EQ(0u, all.find(text)) << Narrow(pattern) << ": " << Narrow(text)
                                << " is not the first of " << Narrow(all);
  return text;
}

std::wstring DomTest::SelectAll(std::wstring_view pattern) {
  Com<IXMLDOMNodeList> nodes;
  if (FAILED(m_document->selectNodes(Text(pattern).Get(), nodes.Receive()))) return L"<refused>";
  std::wstring all;
  Com<IXMLDOMNode> node;
  for (bool first = true; nodes->nextNode(node.Receive()) == S_OK; first = false) {
    all += (first ? L"" : L",") + TextOf(node.Get());
  }
  return all;
}

std::wstring TextOf(IXMLDOMNode* node) {
  Text text;
  EXPECT_EQ(S_OK, node->get_text(text.Receive()));
  return text.Value();
}

std::wstring NameOf(IXMLDOMNode* node) {
  Text name;
  EXPECT_EQ(S_OK, node->get_nodeName(name.Receive()));
  return name.Value();
}

std::string Narrow(std::wstring_view text) {
  std::string narrow;
  for (const wchar_t c : text) narrow.push_back(c < 0x80 ? static_cast<char>(c) : '?');
  return narrow;
}

std::wstring Repeat(std::wstring_view text, std::size_t count) {
  std::wstring repeated;
  repeated.reserve(text.size() * count);
  for (std::size_t i = 0; i < count; ++i) repeated.append(text);
  return repeated;
}

}  // namespace Corvane::Test
