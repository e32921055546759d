#include "base/letter_case.h"

#include <gtest/gtest.h>

#include "base/utf8.h"
#include "tests/support/cases.h"

namespace Corvane::Test {
namespace {

TEST(LetterCase, LowersAllLettersAndFoldsWhatIsEachOthersCase) {
  for (const Case& c : ReadCases("base/letter_case.txt")) {
    SCOPED_TRACE(c.Where());
    EXPECT_EQ(c.Wide("lower"), ToLower(c.Wide("text")));
    const std::string text = c.Text("text");
    std::string folded;
    for (std::size_t i = 0; i < text.size();) {
      AppendUtf8(FoldCase(NextCodePoint(text, &i)), &folded);
    }
    EXPECT_EQ(c.Find("folded").value_or(c.Text("lower")), folded);
  }
}

TEST(LetterCase, ComparesAsciiLettersAlone) {
  EXPECT_TRUE(EqualsIgnoreAsciiCase(L"DataItem", L"dATAiTEM"));
  EXPECT_FALSE(EqualsIgnoreAsciiCase(L"\u00C4", L"\u00E4"));
  EXPECT_FALSE(EqualsIgnoreAsciiCase(L"\u212A", L"k"));
  EXPECT_FALSE(EqualsIgnoreAsciiCase("WS", "WSX"));
  EXPECT_EQ(L"az[\u00C4", LowerAscii(L"AZ[\u00C4"));
}

}  // namespace
}  // namespace Corvane::Test
