// What the tests of the DOM share. Everything here goes through the platform's names, so that the
// same tests check the system on the Windows target.
#ifndef CORVANE_TESTS_PLATFORM_DOM_FIXTURE_H_
#define CORVANE_TESTS_PLATFORM_DOM_FIXTURE_H_

#include <gtest/gtest.h>

#include <string>

#include "corvane/handles.h"

namespace Corvane::Test {

using Node = RefPtr<IXMLDOMNode>;

inline UniqueBstr Bstr(std::wstring_view text) { return UniqueBstr::Make(text); }

// Whether a getter of the DOM gives something, with S_OK; nothing comes with S_FALSE.
template <typename Object, typename Interface, typename Out, typename Owner>
bool Gives(Object* object, HRESULT (STDMETHODCALLTYPE Interface::*get)(Out), Owner* owner) {
  const HRESULT code = (object->*get)(owner->Receive());
  EXPECT_EQ(*owner ? S_OK : S_FALSE, code);
  return code == S_OK;
}

// "<null>" for null.
template <typename Object, typename Interface>
std::wstring Ask(Object* object, HRESULT (STDMETHODCALLTYPE Interface::*get)(BSTR*)) {
  UniqueBstr text;
  return Gives(object, get, &text) ? std::wstring(text.View()) : L"<null>";
}
inline std::wstring TextOf(IXMLDOMNode* node) { return Ask(node, &IXMLDOMNode::get_text); }
inline std::wstring NameOf(IXMLDOMNode* node) { return Ask(node, &IXMLDOMNode::get_nodeName); }

inline std::wstring Repeat(std::wstring_view text, std::size_t count) {
  std::wstring repeated;
  for (std::size_t i = 0; i < count; ++i) repeated.append(text);
  return repeated;
}

// An apartment and a document of the class that the library creates.
class DomTest : public testing::Test {
 protected:
  DomTest() {
    constexpr CLSID kClass = {
        0xF5078F32, 0xC551, 0x11D3, {0x89, 0xB9, 0x00, 0x00, 0xF8, 0x1F, 0xE2, 0x21}};
    CoInitialize(nullptr);
    EXPECT_EQ(S_OK, CoCreateInstance(kClass, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument,
                                     m_document.ReceiveVoid()));
  }
  ~DomTest() override {
    m_document.Reset();
    CoUninitialize();
  }

  // S_OK or S_FALSE, with which the flag agrees.
  HRESULT Load(std::wstring_view xml) {
    VARIANT_BOOL succeeded = 7;
    const HRESULT result = m_document->loadXML(Bstr(xml).Get(), &succeeded);
    EXPECT_EQ(result == S_OK ? VARIANT_TRUE : VARIANT_FALSE, succeeded);
    return result;
  }
  HRESULT LoadFile(std::wstring_view path) {
    const UniqueVariant source(path);
    VARIANT_BOOL succeeded = 7;
    const HRESULT result = m_document->load(source.Get(), &succeeded);
    EXPECT_EQ(result == S_OK ? VARIANT_TRUE : VARIANT_FALSE, succeeded);
    return result;
  }

  // Null when there is no such node.
  Node Find(std::wstring_view pattern) {
    Node node;
    m_document->selectSingleNode(Bstr(pattern).Get(), node.Receive());
    return node;
  }
  // The text of the first node, "<none>" or "<refused>".
  std::wstring First(std::wstring_view pattern) {
    Node node;
    const HRESULT result = m_document->selectSingleNode(Bstr(pattern).Get(), node.Receive());
    EXPECT_TRUE(node ? result == S_OK : result == S_FALSE || result == E_FAIL) << result;
    return node ? TextOf(node.Get()) : result == E_FAIL ? L"<refused>" : L"<none>";
  }
  // The texts of all nodes, with commas between, which begin as First says.
  std::wstring Texts(std::wstring_view pattern) { return Texts(pattern, m_document.Get()); }
  static std::wstring Texts(std::wstring_view pattern, IXMLDOMNode* from) {
    Node node;
    RefPtr<IXMLDOMNodeList> nodes;
    const HRESULT first = from->selectSingleNode(Bstr(pattern).Get(), node.Receive());
    const std::wstring expected = node ? NameOf(node.Get()) + TextOf(node.Get()) : L"";
    if (FAILED(from->selectNodes(Bstr(pattern).Get(), nodes.Receive()))) {
      EXPECT_EQ(E_FAIL, first);
      return L"<refused>";
    }
    EXPECT_EQ(first, nodes->nextNode(node.Receive()));
    EXPECT_EQ(expected, node ? NameOf(node.Get()) + TextOf(node.Get()) : L"");
    std::wstring all = node ? TextOf(node.Get()) : L"<none>";
    while (nodes->nextNode(node.Receive()) == S_OK) all += L"," + TextOf(node.Get());
    return all;
  }

  RefPtr<IXMLDOMDocument> m_document;
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_PLATFORM_DOM_FIXTURE_H_
