// Elements for tests, parsed by the platform's DOM, and values as text.
#ifndef CORVANE_TESTS_SUPPORT_DOM_H_
#define CORVANE_TESTS_SUPPORT_DOM_H_

#include <gtest/gtest.h>

#include <cwchar>

#include "core/com.h"
#include "corvane/handles.h"

namespace Corvane::Test {

// Holds COM for a test, and parses.
class ParsingTest : public testing::Test {
 protected:
  ParsingTest() { m_com.Begin(); }

  static RefPtr<IXMLDOMElement> Element(const std::wstring& xml) {
    RefPtr<IXMLDOMDocument> document;
    EXPECT_EQ(S_OK, CoCreateInstance(kDomDocumentClass, nullptr, CLSCTX_INPROC_SERVER,
                                     IID_IXMLDOMDocument, document.ReceiveVoid()));
    VARIANT_BOOL loaded = VARIANT_FALSE;
    document->loadXML(UniqueBstr::Make(xml.c_str()).Get(), &loaded);
    EXPECT_EQ(VARIANT_TRUE, loaded) << "test document does not parse";
    RefPtr<IXMLDOMElement> element;
    EXPECT_EQ(S_OK, document->get_documentElement(element.Receive()));
    return element;
  }

 private:
  ComInitialization m_com;
};

// A text as it is, "<null>" for a null one; "i:3" for a VT_I4, "<vt 11>" for another type.
inline std::wstring TextOf(const VARIANT& value) {
  if (value.vt == VT_I4) return L"i:" + std::to_wstring(value.lVal);
  if (value.vt != VT_BSTR) return L"<vt " + std::to_wstring(value.vt) + L">";
  return value.bstrVal ? std::wstring(value.bstrVal, SysStringLen(value.bstrVal)) : L"<null>";
}

// The value that TextOf writes so; of another type the zero.
inline _variant_t ValueOf(const std::wstring& text) {
  if (text.starts_with(L"i:")) return _variant_t(std::stol(text.substr(2)), VT_I4);
  if (!text.starts_with(L"<vt ")) return _variant_t(text.c_str());
  _variant_t value;
  value.vt = static_cast<VARTYPE>(std::stol(text.substr(4)));
  return value;
}

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_DOM_H_
