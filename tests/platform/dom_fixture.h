// What the tests of the DOM share. Everything here goes through the platform's names, so that the
// same tests check the system on the Windows target.
#ifndef CORVANE_TESTS_PLATFORM_DOM_FIXTURE_H_
#define CORVANE_TESTS_PLATFORM_DOM_FIXTURE_H_

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "corvane/platform.h"

namespace Corvane::Test {

// One reference to a COM object.
template <class Interface>
class Com {
 public:
  Com() = default;
  ~Com() { Reset(); }
  Com(const Com&) = delete;
  Com& operator=(const Com&) = delete;

  Interface* Get() const { return m_object; }
  Interface* operator->() const { return m_object; }
  Interface** Receive() {
    Reset();
    return &m_object;
  }
  explicit operator bool() const { return m_object != nullptr; }

 private:
  void Reset() {
    if (m_object != nullptr) m_object->Release();
    m_object = nullptr;
  }

  Interface* m_object = nullptr;
};

class Text {
 public:
  Text() = default;
  explicit Text(std::wstring_view text)
      : m_text(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {}
  ~Text() { SysFreeString(m_text); }
  Text(const Text&) = delete;
  Text& operator=(const Text&) = delete;

  BSTR Get() const { return m_text; }
  BSTR* Receive() {
    SysFreeString(m_text);
    m_text = nullptr;
    return &m_text;
  }
  std::wstring Value() const {
    return m_text != nullptr ? std::wstring(m_text, SysStringLen(m_text)) : L"<null>";
  }

 private:
  BSTR m_text = nullptr;
};

// An apartment and a document of the class that the library creates.
class DomTest : public testing::Test {
 protected:
  DomTest();
  ~DomTest() override;

  // Loads, and checks that flag and result agree: S_OK or S_FALSE.
  HRESULT Load(std::wstring_view xml);
  HRESULT LoadFile(std::wstring_view path);

  // The text of the first node; "<none>" for S_FALSE, "<refused>" for E_FAIL. Checks that
  // selectNodes agrees.
  std::wstring Select(std::wstring_view pattern);
  // The texts of all nodes, joined by commas.
  std::wstring SelectAll(std::wstring_view pattern);
  // Null when there is no such node.
  void Find(std::wstring_view pattern, Com<IXMLDOMNode>* node);

  Com<IXMLDOMDocument> m_document;
};

std::wstring TextOf(IXMLDOMNode* node);
std::wstring NameOf(IXMLDOMNode* node);
std::string Narrow(std::wstring_view text);
std::wstring Repeat(std::wstring_view text, std::size_t count);

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_PLATFORM_DOM_FIXTURE_H_
