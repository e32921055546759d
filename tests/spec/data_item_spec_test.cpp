#include <memory>

#include "corvane/next_oid_data_item_spec.h"
#include "corvane/static_data_item_spec.h"
#include "corvane/xml_data_item_spec.h"
#include "tests/support/dom.h"

namespace Corvane::Test {
namespace {

using DataItemSpecTest = ParsingTest;

std::wstring OrNull(const wchar_t* text) { return text ? text : L"<null>"; }

TEST_F(DataItemSpecTest, ReadsNamesAndPrefixes) {
  static const struct {
    const char* name;
    const wchar_t* xml;
    const wchar_t* itemName;
    const wchar_t* attributeId;
    const wchar_t* prefix;
    const wchar_t* key;
  } kCases[] = {
      {"both names", L"<i Name='n' AttributeID='a'/>", L"n", L"a", L"<null>", L"n"},
      {"AttributeID alone", L"<i AttributeID='x' Prefix='p'/>", L"x", L"x", L"p", L"p:x"},
      {"Name alone", L"<i Name='n'/>", L"n", L"<null>", L"<null>", L"n"},
      {"empty texts are texts", L"<i Name='' AttributeID='a' Prefix=''/>", L"", L"a", L"", L":"},
      {"names are case-sensitive", L"<i name='n' PREFIX='p'/>", L"<null>", L"<null>", L"<null>",
       L""},
      {"attributes of another namespace", L"<i xmlns:q='u' q:Name='n'/>", L"<null>", L"<null>",
       L"<null>", L""},
  };
  for (const auto& c : kCases) {
    const NexoDataItem item(Element(c.xml).Get());
    EXPECT_EQ(c.itemName, OrNull(item.GetName())) << c.name;
    EXPECT_EQ(c.attributeId, OrNull(item.GetAttributeID())) << c.name;
    EXPECT_EQ(c.prefix, OrNull(item.GetPrefix())) << c.name;
    EXPECT_EQ(c.key, ItemKey(item)) << c.name;
  }
}

TEST_F(DataItemSpecTest, ReadsTransienceAndLifespan) {
  static const struct {
    const wchar_t* xml;
    bool transient;
    unsigned long lifespan;
  } kCases[] = {
      {L"<i/>", false, 0},
      {L"<i Transient='TRUE' LifeSpan='600'/>", true, 600},
      {L"<i Transient='yes' LifeSpan='30s'/>", false, 30},
      {L"<i Transient='1' LifeSpan='abc'/>", false, 0},
      {L"<i Transient=' true' LifeSpan=' +7'/>", false, 7},
      {L"<i Transient='' LifeSpan='99999999999'/>", false, 4294967295ul},
  };
  for (const auto& c : kCases) {
    const DataItemSpec item(Element(c.xml).Get());
    EXPECT_EQ(c.transient, item.IsTransient()) << OrNull(c.xml).size();
    EXPECT_EQ(c.lifespan, item.GetLifespan()) << OrNull(c.xml).size();
  }
}

TEST_F(DataItemSpecTest, FactoriesReadAndCopyTheirFields) {
  const std::unique_ptr<XMLDataItemSpec> xml(XMLDataItemSpec::CreateXMLDataItem(
      Element(L"<i Name='n' URI='/u' XPath='' Type='t'/>").Get()));
  EXPECT_EQ(L"/u", OrNull(xml->GetUri()));
  EXPECT_EQ(L"", OrNull(xml->GetXPath()));
  EXPECT_EQ(L"t", OrNull(xml->GetType()));

  const std::unique_ptr<XMLDataItemSpec> made(XMLDataItemSpec::CreateXMLDataItem(
      L"n", L"/u", L"//x", L"p", true, std::uint64_t{1} << 40, L"t"));
  EXPECT_EQ(L"n", OrNull(made->GetAttributeID()));
  EXPECT_NE(made->GetName(), made->GetAttributeID());
  EXPECT_EQ(L"//x", OrNull(made->GetXPath()));
  EXPECT_EQ(L"p", OrNull(made->GetPrefix()));
  EXPECT_TRUE(made->IsTransient());
  EXPECT_EQ(4294967295ul, made->GetLifespan());

  const std::unique_ptr<OIDDataItemSpec> oid(
      OIDDataItemSpec::CreateOIDDataItemSpec(L"n", L"1.3", L"g", false, nullptr, 5, nullptr));
  EXPECT_EQ(L"1.3", OrNull(oid->GetOid()));
  EXPECT_EQ(L"g", OrNull(oid->GetGroup()));
  EXPECT_EQ(nullptr, oid->GetNextOIDDataItemSpec());

  const std::unique_ptr<NextOIDDataItemSpec> walk(NextOIDDataItemSpec::CreateNextOidDataItemSpec(
      Element(L"<i Name='n' OID='1.3' GroupID='g' UntilEnd='True' Count='-3'/>").Get()));
  EXPECT_EQ(walk.get(), walk->GetNextOIDDataItemSpec());
  EXPECT_EQ(L"1.3", OrNull(walk->GetOid()));
  EXPECT_TRUE(walk->IsUntilEnd());
  EXPECT_EQ(-3, walk->Count());

  const std::unique_ptr<StaticDataItemSpec> fixed(
      StaticDataItemSpec::CreateStaticDataItemSpec(Element(L"<i Name='a'>v<b>w</b></i>").Get()));
  EXPECT_EQ(L"vw", OrNull(fixed->GetStaticDataItemValue()));
  const std::unique_ptr<StaticDataItemSpec> empty(
      StaticDataItemSpec::CreateStaticDataItemSpec(Element(L"<i Name='a'/>").Get()));
  EXPECT_EQ(L"", OrNull(empty->GetStaticDataItemValue()));
}

// What is built on a field-value constructor's null arguments and on a null element has no texts.
TEST_F(DataItemSpecTest, NullArgumentsLeaveFieldsAbsent) {
  const std::unique_ptr<NexoDataItem> items[] = {
      std::unique_ptr<NexoDataItem>(XMLDataItemSpec::CreateXMLDataItem(nullptr)),
      std::unique_ptr<NexoDataItem>(XMLDataItemSpec::CreateXMLDataItem()),
      std::unique_ptr<NexoDataItem>(
          StaticDataItemSpec::CreateStaticDataItemSpec(nullptr, nullptr, nullptr)),
      std::unique_ptr<NexoDataItem>(StaticDataItemSpec::CreateStaticDataItemSpec(nullptr)),
  };
  for (const auto& item : items) {
    EXPECT_EQ(nullptr, item->GetName());
    EXPECT_EQ(nullptr, item->GetPrefix());
  }
}

}  // namespace
}  // namespace Corvane::Test
