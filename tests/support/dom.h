// Elements for tests, parsed by the platform's DOM.
#ifndef CORVANE_TESTS_SUPPORT_DOM_H_
#define CORVANE_TESTS_SUPPORT_DOM_H_

#include <gtest/gtest.h>

#include "core/com.h"
#include "corvane/handles.h"

namespace Corvane::Test {

// Holds COM for a test, and parses.
class ParsingTest : public testing::Test {
 protected:
  ParsingTest() { m_com.Begin(); }

  static RefPtr<IXMLDOMDocument> Document(const wchar_t* xml) {
    RefPtr<IXMLDOMDocument> document;
    EXPECT_EQ(S_OK, CoCreateInstance(kDomDocumentClass, nullptr, CLSCTX_INPROC_SERVER,
                                     IID_IXMLDOMDocument, document.ReceiveVoid()));
    VARIANT_BOOL loaded = VARIANT_FALSE;
    document->loadXML(UniqueBstr::Make(xml).Get(), &loaded);
    EXPECT_EQ(VARIANT_TRUE, loaded) << "test document does not parse";
    return document;
  }

  static RefPtr<IXMLDOMElement> Element(const wchar_t* xml) {
    RefPtr<IXMLDOMElement> element;
    EXPECT_EQ(S_OK, Document(xml)->get_documentElement(element.Receive()));
    return element;
  }

 private:
  ComInitialization m_com;
};

// The text of a VT_BSTR; "<vt n>" for another type.
inline std::wstring TextOf(const VARIANT& value) {
  if (value.vt != VT_BSTR) return L"<vt " + std::to_wstring(value.vt) + L">";
  return value.bstrVal ? std::wstring(value.bstrVal, SysStringLen(value.bstrVal)) : L"";
}

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_DOM_H_
