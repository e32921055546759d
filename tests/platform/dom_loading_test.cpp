// How documents are loaded, from text and from files.
#include <cstring>

#include "tests/platform/dom_fixture.h"
#include "tests/support/temp_folder.h"
#include "tests/support/wine.h"

namespace Corvane::Test {
namespace {

using DomLoadingTest = DomTest;

TEST_F(DomLoadingTest, EmptiesTheDocumentWhenALoadFails) {
  ASSERT_EQ(S_OK, Load(L"<r>old</r>"));
  const Node old = Find(L"r");
  VARIANT_BOOL succeeded = VARIANT_TRUE;
  EXPECT_EQ(S_FALSE, m_document->loadXML(nullptr, &succeeded));
  EXPECT_EQ(VARIANT_FALSE, succeeded);
  RefPtr<IXMLDOMElement> root;
  EXPECT_EQ(S_FALSE, m_document->get_documentElement(root.Receive()));
  EXPECT_FALSE(root);
  EXPECT_EQ(L"", Texts(L"/"));
  EXPECT_EQ(L"<none>", Texts(L"//*"));
  EXPECT_EQ(L"#document", NameOf(Find(L"/").Get()));
  EXPECT_EQ(S_OK, Load(L"<r>new</r>"));
  EXPECT_EQ(L"new", Texts(L"r"));
  EXPECT_EQ(L"old", TextOf(old.Get()));
}

TEST_F(DomLoadingTest, FindsFilesByPathAndUrl) {
  const TempFolder folder;
  const std::wstring path = folder.Write("with blanks in it/a file.xml", "<r/>").wstring();
  std::wstring escaped = path;
  for (std::size_t at = 0; (at = escaped.find(L' ')) != std::wstring::npos;)
    escaped.replace(at, 1, L"%20");
  std::wstring url = escaped;
  for (wchar_t& c : url) c = c == L'\\' ? L'/' : c;
  url.insert(0, url[0] == L'/' ? L"file://" : L"file:///");
  for (const std::wstring& good : {path, escaped, url}) EXPECT_EQ(S_OK, LoadFile(good));
  for (const std::wstring& bad : {folder.Path().wstring(), path + L".missing", std::wstring()}) {
    EXPECT_EQ(S_FALSE, LoadFile(bad));
  }
  if (!OnLayer()) GTEST_SKIP() << "the system resolves %20 in every name";
  // A name that holds the sequence wins over the one that it stands for.
  EXPECT_EQ(S_OK, LoadFile(folder.Write("b%20c.xml", "<literal/>").wstring()));
  EXPECT_EQ(L"", Texts(L"literal"));
  folder.Write("end ", "<r/>");
  EXPECT_EQ(S_OK, LoadFile((folder.Path() / "end%20").wstring())) << "an escape at the end";
}

TEST_F(DomLoadingTest, TellsWrongSourcesFromUnreadableOnes) {
  const auto load = [this](int type, LONG value) {
    VARIANT source{};
    source.vt = static_cast<VARTYPE>(type);
    source.lVal = value;
    VARIANT_BOOL succeeded = VARIANT_TRUE;
    const HRESULT result = m_document->load(source, &succeeded);
    EXPECT_EQ(VARIANT_FALSE, succeeded);
    return result;
  };
  EXPECT_EQ(E_INVALIDARG, load(VT_UNKNOWN, 0));
  EXPECT_EQ(E_INVALIDARG, load(VT_BSTR | VT_BYREF, 0));
  EXPECT_EQ(S_FALSE, load(VT_BSTR, 0));
  EXPECT_EQ(S_FALSE, load(VT_EMPTY, 0));
  EXPECT_EQ(S_FALSE, load(VT_I4, 3));
}

TEST_F(DomLoadingTest, SaysWhereTextIsMalformed) {
  if (!OnLayer()) GTEST_SKIP() << "columns and messages are the layer's own";
  // "<line>:<column>", "none" without an error.
  const auto place = [this] {
    RefPtr<IXMLDOMParseError> error;
    EXPECT_EQ(S_OK, m_document->get_parseError(error.Receive()));
    LONG code = -1, line = -1, column = -1;
    if (error->get_errorCode(&code) == S_FALSE) return std::string(code == 0 ? "none" : "a code");
    EXPECT_LT(code, 0);
    EXPECT_EQ(S_OK, error->get_line(&line));
    EXPECT_EQ(S_OK, error->get_linepos(&column));
    EXPECT_NE(L"", Ask(error.Get(), &IXMLDOMParseError::get_reason));
    return std::to_string(line) + ':' + std::to_string(column);
  };
  Load(L"<r>\n\x4E2D<a></b></r>");
  EXPECT_EQ("2:7", place());
  Load(L"<r><p:a/></r>");
  EXPECT_EQ("1:4", place());
  Load(L"<r/>");
  EXPECT_EQ("none", place());
  LoadFile(L"/missing/file.xml");
  EXPECT_EQ("0:0", place());
}

}  // namespace
}  // namespace Corvane::Test
