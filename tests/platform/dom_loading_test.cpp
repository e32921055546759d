// What loads and what does not, from text and from files.
#include <cwchar>
#include <filesystem>

#include "tests/platform/dom_fixture.h"
#include "tests/support/temp_folder.h"
#include "tests/support/wine.h"

namespace Corvane::Test {
namespace {

using namespace std::string_view_literals;

class DomLoadingTest : public DomTest {
 protected:
  std::wstring Write(const std::string& name, std::string_view bytes) {
    return m_files.Write("with blanks in it/" + name, std::string(bytes)).wstring();
  }

  static std::string Utf16(std::string_view ascii) {
    std::string bytes = "\xFE\xFF";
    for (const char c : ascii) (bytes += '\0') += c;
    return bytes;
  }

  const TempFolder m_files;
  const std::filesystem::path m_folder = m_files.Path() / "with blanks in it";
};

struct Document {
  const char* name;
  std::wstring_view xml;
  const char* wineDefect = nullptr;
};

TEST_F(DomLoadingTest, TakesWellFormedText) {
  const Document kRows[] = {
      {"smallest", L"<r/>"sv},
      {"declaration", L"<?xml version='1.0' encoding='UTF-8' standalone='yes'?><r/>"sv},
      {"declared encoding is ignored",
       L"<?xml version='1.0' encoding='windows-1252'?><r>\x20AC</r>"sv},
      {"declared UTF-16", L"<?xml version='1.0' encoding='UTF-16'?><r>\x20AC</r>"sv},
      {"white space before the root", L" \r\n\t<r/> \n"sv},
      {"byte order mark", L"\xFEFF<r/>"sv},
      {"byte order mark and declaration", L"\xFEFF<?xml version='1.0'?><r/>"sv},
      {"comments and instructions outside the root", L"<!--a--><?b c?><r/><!--d--><?e?>"sv},
      {"text ends at a NUL", L"<r/>\0<garbage"sv},
      {"xml prefix needs no declaration", L"<r xml:lang='de'/>"sv},
      {"prefix declared where it is used", L"<p:r xmlns:p='u' p:a=''/>"sv},
      {"same local name in two namespaces", L"<r xmlns:p='u' xmlns:q='v' p:a='' q:a='' a=''/>"sv},
      {"prefix bound to nothing", L"<r p:a='' xmlns:p=''/>"sv},
      {"names beyond ASCII", L"<\x00FC\x4E2D p\x00E9='1'/>"sv},
      {"deep enough for any device", L""sv},
  };
  const std::wstring deep = Repeat(L"<a>", 200) + Repeat(L"</a>", 200);
  for (const Document& row : kRows) {
    if (SkipRow(row.name, WineDefect(row.wineDefect))) continue;
    EXPECT_EQ(S_OK, Load(row.xml.empty() ? std::wstring_view(deep) : row.xml)) << row.name;
  }
}

TEST_F(DomLoadingTest, RefusesMalformedText) {
  constexpr const char* kNamespaces = "Wine does not check it";
  constexpr const char* kDoctype = "Wine does not validate";
  const Document kRows[] = {
      {"empty", L""sv},
      {"white space", L" \n"sv},
      {"declaration without a root", L"<?xml version='1.0'?>"sv},
      {"white space before the declaration", L" <?xml version='1.0'?><r/>"sv},
      {"line end before the declaration", L"\r\n<?xml version='1.0'?><r/>"sv},
      {"declaration without a version", L"<?xml encoding='UTF-8'?><r/>"sv},
      {"version 2.0", L"<?xml version='2.0'?><r/>"sv},
      {"unclosed", L"<r>"sv},
      {"NUL inside the root", L"<r>a\0b</r>"sv},
      {"crossed tags", L"<r><a><b></a></b></r>"sv},
      {"two roots", L"<r/><r/>"sv},
      {"text after the root", L"<r/>x"sv},
      {"text before the root", L"x<r/>"sv},
      {"attribute without a value", L"<r a/>"sv},
      {"attribute without quotes", L"<r a=1/>"sv},
      {"less-than in an attribute", L"<r a='<'/>"sv},
      {"attribute twice", L"<r a='' a=''/>"sv},
      {"attribute twice in its namespace", L"<r xmlns:p='u' xmlns:q='u' p:a='' q:a=''/>"sv},
      {"bare ampersand", L"<r>a & b</r>"sv},
      {"undeclared entity", L"<r>&nbsp;</r>"sv},
      {"end of CDATA in text", L"<r>]]></r>"sv},
      {"two hyphens in a comment", L"<r><!-- -- --></r>"sv},
      {"control character", L"<r>\x0001</r>"sv},
      {"reference to NUL", L"<r>&#0;</r>"sv},
      {"U+FFFE", L"<r>\xFFFE</r>"sv},
      {"lone surrogate", L"<r>\xD800</r>"sv},
      {"name that starts with a digit", L"<1r/>"sv},
      {"undeclared prefix of an element", L"<p:r/>"sv, kNamespaces},
      {"undeclared prefix of an attribute", L"<r p:a=''/>"sv, kNamespaces},
      {"prefix out of scope", L"<r><a xmlns:p='u'/><p:b/></r>"sv, kNamespaces},
      {"two colons", L"<a:b:c xmlns:a='u'/>"sv, kNamespaces},
      {"nothing after the colon", L"<a: xmlns:a='u'/>"sv, kNamespaces},
      {"local name that starts with a digit", L"<a:1 xmlns:a='u'/>"sv},
      {"attribute twice in no namespace", L"<r xmlns:p='' xmlns:q='' p:a='' q:a=''/>"sv,
       kNamespaces},
      {"DOCTYPE", L"<!DOCTYPE r><r/>"sv, kDoctype},
      {"DOCTYPE with a subset", L"<!DOCTYPE r [<!ELEMENT r EMPTY>]><r a=''/>"sv, kDoctype},
      {"external subset", L"<!DOCTYPE r SYSTEM 'missing.dtd'><r/>"sv, kDoctype},
  };
  for (const Document& row : kRows) {
    if (SkipRow(row.name, WineDefect(row.wineDefect))) continue;
    EXPECT_EQ(S_FALSE, Load(row.xml)) << row.name;
  }
}

TEST_F(DomLoadingTest, EmptiesTheDocumentWhenALoadFails) {
  ASSERT_EQ(S_OK, Load(L"<r>old</r>"));
  Com<IXMLDOMNode> old;
  Find(L"r", &old);
  VARIANT_BOOL succeeded = VARIANT_TRUE;
  EXPECT_EQ(S_FALSE, m_document->loadXML(nullptr, &succeeded));
  EXPECT_EQ(VARIANT_FALSE, succeeded);
  Com<IXMLDOMElement> root;
  EXPECT_EQ(S_FALSE, m_document->get_documentElement(root.Receive()));
  EXPECT_FALSE(root);
  EXPECT_EQ(L"<none>", Select(L"r"));
  EXPECT_EQ(S_OK, Load(L"<r>new</r>"));
  EXPECT_EQ(L"new", Select(L"r"));
  EXPECT_EQ(L"old", TextOf(old.Get()));
}

TEST_F(DomLoadingTest, DecodesFiles) {
  constexpr std::string_view kUtf16 = "\xFF\xFE<\0r\0>\0\xAC\x20<\0/\0r\0>\0"sv;
  const std::string declaredUtf8 = Utf16("<?xml version='1.0' encoding='UTF-8'?><r>a</r>");
  const std::string declared1252 = Utf16("<?xml version='1.0' encoding='windows-1252'?><r>a</r>");
  const struct {
    const char* name;
    std::string_view bytes;
    const wchar_t* text;  // "<none>" when the file must not load
    const char* wineDefect = nullptr;
  } kRows[] = {
      {"UTF-8", "<r>\xE2\x82\xAC</r>"sv, L"\x20AC"},
      {"UTF-8 with its mark", "\xEF\xBB\xBF<r>\xE2\x82\xAC</r>"sv, L"\x20AC"},
      {"UTF-16, little end first", kUtf16, L"\x20AC"},
      {"UTF-16, big end first", "\xFE\xFF\0<\0r\0>\x20\xAC\0<\0/\0r\0>"sv, L"\x20AC"},
      {"UTF-16 without its mark", kUtf16.substr(2), L"<none>"},
      {"windows-1252", "<?xml version='1.0' encoding='Windows-1252'?><r>\x80\xE9</r>"sv,
       L"\x20AC\x00E9"},
      {"ISO-8859-1", "<?xml version='1.0' encoding='ISO-8859-1'?><r>\xE9</r>"sv, L"\x00E9"},
      {"US-ASCII", "<?xml version='1.0' encoding='us-ascii'?><r>e</r>"sv, L"e"},
      {"GBK", "<?xml version='1.0' encoding='gbk'?><r>\xC4\xE3 \xBA\xC3</r>"sv, L"\x4F60 \x597D"},
      {"GBK with half a character", "<?xml version='1.0' encoding='gbk'?><r>\xC4</r>"sv, L"<none>"},
      {"UTF-16 with its mark, declared UTF-8", declaredUtf8, L"a"},
      {"UTF-16 with its mark, declared windows-1252", declared1252, L"<none>"},
      {"UTF-8 with its mark, declared UTF-16",
       "\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-16'?><r/>"sv, L"<none>"},
      {"unknown encoding", "<?xml version='1.0' encoding='Windows-936'?><r/>"sv, L"<none>"},
      {"UTF-16 only declared", "<?xml version='1.0' encoding='UTF-16'?><r/>"sv, L"<none>"},
      {"no UTF-8", "<r>\xE9</r>"sv, L"<none>"},
      {"NUL", "<r>\0</r>"sv, L"<none>"},
      {"no XML", "plain text"sv, L"<none>"},
      {"empty", ""sv, L"<none>"},
  };
  for (const auto& row : kRows) {
    if (SkipRow(row.name, WineDefect(row.wineDefect))) continue;
    const bool loads = std::wcscmp(row.text, L"<none>") != 0;
    EXPECT_EQ(loads ? S_OK : S_FALSE, LoadFile(Write("file.xml", row.bytes))) << row.name;
    EXPECT_EQ(row.text, Select(L"r")) << row.name;
  }
}

TEST_F(DomLoadingTest, FindsFilesByPathAndUrl) {
  const std::wstring path = Write("a file.xml", "<r/>");
  std::wstring escaped = path;
  for (std::size_t at = 0; (at = escaped.find(L' ')) != std::wstring::npos;)
    escaped.replace(at, 1, L"%20");
  std::wstring url = escaped;
  for (wchar_t& c : url) c = c == L'\\' ? L'/' : c;
  url.insert(0, url[0] == L'/' ? L"file://" : L"file:///");
  EXPECT_EQ(S_OK, LoadFile(path));
  EXPECT_EQ(S_OK, LoadFile(escaped));
  EXPECT_EQ(S_OK, LoadFile(url));
  EXPECT_EQ(S_FALSE, LoadFile(m_folder.wstring()));
  EXPECT_EQ(S_FALSE, LoadFile(path + L".missing"));
  EXPECT_EQ(S_FALSE, LoadFile(L""));
  if (const char* reason = LayerOnly("the system resolves %20 in every name"))
    GTEST_SKIP() << reason;
  // A name that holds the sequence wins over the one that it stands for.
  EXPECT_EQ(S_OK, LoadFile(Write("b%20c.xml", "<literal/>")));
  EXPECT_EQ(L"", Select(L"literal"));
}

TEST_F(DomLoadingTest, TellsWrongSourcesFromUnreadableOnes) {
  VARIANT source;
  VariantInit(&source);
  VARIANT_BOOL succeeded = VARIANT_TRUE;
  source.vt = VT_UNKNOWN;
  source.punkVal = nullptr;
  EXPECT_EQ(E_INVALIDARG, m_document->load(source, &succeeded));
  EXPECT_EQ(VARIANT_FALSE, succeeded);
  source.vt = VT_BSTR | VT_BYREF;
  source.pbstrVal = nullptr;
  EXPECT_EQ(E_INVALIDARG, m_document->load(source, &succeeded));
  source.vt = VT_BSTR;
  source.bstrVal = nullptr;
  EXPECT_EQ(S_FALSE, m_document->load(source, &succeeded));
  source.vt = VT_EMPTY;
  EXPECT_EQ(S_FALSE, m_document->load(source, &succeeded));
  source.vt = VT_I4;
  source.lVal = 3;
  EXPECT_EQ(S_FALSE, m_document->load(source, &succeeded));
}

TEST_F(DomLoadingTest, SaysWhereTextIsMalformed) {
  const auto place = [&](std::wstring_view xml) {
    Load(xml);
    Com<IXMLDOMParseError> error;
    EXPECT_EQ(S_OK, m_document->get_parseError(error.Receive()));
    LONG line = -1;
    LONG column = -1;
    Text reason;
    EXPECT_EQ(S_OK, error->get_reason(reason.Receive()));
    EXPECT_EQ(S_OK, error->get_line(&line));
    EXPECT_EQ(S_OK, error->get_linepos(&column));
    EXPECT_NE(L"", reason.Value());
    return std::to_string(line) + ':' + std::to_string(column);
  };
  if (const char* reason = LayerOnly("columns and messages are the layer's own"))
    GTEST_SKIP() << reason;
  EXPECT_EQ("2:7", place(L"<r>\n\x4E2D<a></b></r>"));
  EXPECT_EQ("1:4", place(L"<r><p:a/></r>"));
  Load(L"<r/>");
  Com<IXMLDOMParseError> error;
  LONG code = -1;
  ASSERT_EQ(S_OK, m_document->get_parseError(error.Receive()));
  EXPECT_EQ(S_FALSE, error->get_errorCode(&code));
  EXPECT_EQ(0, code);
  LoadFile(L"/missing/file.xml");
  LONG line = -1;
  ASSERT_EQ(S_OK, m_document->get_parseError(error.Receive()));
  EXPECT_EQ(S_OK, error->get_errorCode(&code));
  EXPECT_LT(code, 0);
  EXPECT_EQ(S_OK, error->get_line(&line));
  EXPECT_EQ(0, line);
}

}  // namespace
}  // namespace Corvane::Test
