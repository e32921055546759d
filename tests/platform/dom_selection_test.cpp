// What documents and patterns select, and what is refused.
#include "base/utf8.h"
#include "tests/platform/dom_fixture.h"
#include "tests/support/cases.h"
#include "tests/support/temp_folder.h"

namespace Corvane::Test {
namespace {

class DomSelectionTest : public DomTest, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(Dom, DomSelectionTest, testing::Values("documents", "texts", "patterns"));

TEST_P(DomSelectionTest, GivesTheTextsOfTheNodesInDocumentOrder) {
  const TempFolder folder;
  const std::wstring shelf = ToWide(ReadData("platform/shelf.xml"));
  for (const Case& c : CasesHere(std::string("platform/dom_") + GetParam() + ".txt")) {
    SCOPED_TRACE(c.Where() + " " + c.Text("name"));
    const auto bytes = c.Find("file");
    const HRESULT loaded = bytes ? LoadFile(folder.Write("file.xml", *bytes).wstring())
                                 : Load(c.Find("xml") ? c.Wide("xml") : shelf);
    EXPECT_EQ(c.Text("load") == "refused" ? S_FALSE : S_OK, loaded);
    if (!c.Find("pattern")) continue;
    const Node from = Find(c.Find("from") ? c.Wide("from") : L"/");
    ASSERT_TRUE(from);
    EXPECT_EQ(c.Wide("texts"), Texts(c.Wide("pattern"), from.Get()));
  }
}

TEST_F(DomTest, TellsWrongArgumentsFromWrongPatterns) {
  ASSERT_EQ(S_OK, Load(L"<r/>"));
  auto* const untouched = reinterpret_cast<IXMLDOMNode*>(this);
  IXMLDOMNode* node = untouched;
  EXPECT_EQ(E_INVALIDARG, m_document->selectSingleNode(nullptr, &node));
  EXPECT_EQ(untouched, node);
  EXPECT_EQ(E_INVALIDARG, m_document->selectSingleNode(Bstr(L"r").Get(), nullptr));
  EXPECT_EQ(E_INVALIDARG, m_document->selectNodes(nullptr, nullptr));
}

}  // namespace
}  // namespace Corvane::Test
