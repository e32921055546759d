#include "corvane/data_item_spec.h"
#include "tests/support/cases.h"
#include "tests/support/dom.h"

namespace Corvane::Test {
namespace {

using ValueConversionTest = ParsingTest;

TEST_F(ValueConversionTest, FollowsTheTable) {
  for (const Case& c : ReadCases("spec/value_conversions.txt")) {
    SCOPED_TRACE(c.Where());
    const DataItemSpec item(Element(L"<i>" + c.Wide("entries") + L"</i>").Get());
    EXPECT_EQ(c.Wide("converted"), TextOf(item.ConvertValue(ValueOf(c.Wide("raw")))));
  }
}

}  // namespace
}  // namespace Corvane::Test
