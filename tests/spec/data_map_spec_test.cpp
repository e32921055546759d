#include "corvane/data_map_spec_collection.h"

#include <memory>

#include "corvane/next_oid_data_item_spec.h"
#include "corvane/static_data_item_spec.h"
#include "corvane/xml_data_item_spec.h"
#include "tests/support/dom.h"

namespace Corvane::Test {
namespace {

using DataMapSpecTest = ParsingTest;

std::wstring NamesOf(DataMapSpec* spec) {
  std::wstring names;
  spec->Begin();
  while (const NexoDataItem* item = spec->GetNextDataItemSpec())
    names += item->GetName() + std::wstring(L" ");
  return names;
}

TEST_F(DataMapSpecTest, ReadsMapsOfEveryKind) {
  static const struct {
    const char* name;
    const wchar_t* xml;
    DataMapTypeEnum type;
    const wchar_t* protocol;
    const wchar_t* items;
  } kCases[] = {
      {"protocol in any case", L"<XMLDataMap Protocol='quarn'/>", DataMapTypeQUARN, L"quarn", L""},
      {"WS", L"<xmldatamap Protocol='WS'/>", DataMapTypeWS, L"WS", L""},
      {"prefixed element", L"<c:XMLDataMap xmlns:c='u' Protocol='PLSXML'/>", DataMapTypePLSXML,
       L"PLSXML", L""},
      {"unknown protocol", L"<XMLDataMap Protocol='SNMP'/>", DataMapTypeUnknown, L"SNMP", L""},
      {"an XML map may claim another protocol", L"<XMLDataMap Protocol='OID'/>", DataMapTypeOID,
       L"OID", L""},
      {"no protocol, items still read", L"<XMLDataMap><DataItem Name='a'/></XMLDataMap>",
       DataMapTypeUnknown, L"", L"a "},
      {"name order",
       L"<XMLDataMap><DataItem Name='b'/><dataitem Name='B'/>"
       L"<StaticDataItem Name='a'/><NextDataItem Name='c'/></XMLDataMap>",
       DataMapTypeUnknown, L"", L"B a b "},
      {"nameless items",
       L"<OIDDataMap><DataItem/><NextDataItem OID='1'/><StaticDataItem/></OIDDataMap>",
       DataMapTypeOID, L"OID", L""},
      {"OID", L"<OIDDataMap><DataItem Name='a'/><NextDataItem Name='b'/></OIDDataMap>",
       DataMapTypeOID, L"OID", L"a b "},
      {"IPP", L"<IPPDataMap><DataItem Name='a'/><IPPParams AttributeID='p'/></IPPDataMap>",
       DataMapTypeIPP, L"IPP", L"p a "},
      {"IPPParams without a name", L"<IPPDataMap><IPPParams/></IPPDataMap>", DataMapTypeIPP, L"IPP",
       L""},
      {"another element", L"<DataMap><DataItem Name='a'/></DataMap>", DataMapTypeUnknown, L"", L""},
  };
  for (const auto& c : kCases) {
    const auto spec =
        RefPtr<DataMapSpec>::Adopt(DataMapSpec::CreateDataMapSpec(Element(c.xml).Get()));
    EXPECT_EQ(c.type, spec->GetDataMapType()) << c.name;
    EXPECT_EQ(c.protocol, spec->GetProtocolType()) << c.name;
    EXPECT_EQ(c.items, NamesOf(spec.Get())) << c.name;
  }
}

TEST_F(DataMapSpecTest, ItemKindsFollowTheMap) {
  const auto xml = RefPtr<DataMapSpec>::Adopt(DataMapSpec::CreateDataMapSpec(
      Element(L"<XMLDataMap><DataItem Name='x' URI='1'/><DataItem Name='x' URI='2'/></XMLDataMap>")
          .Get()));
  const auto* const item = dynamic_cast<XMLDataItemSpec*>(xml->GetDataItemSpec(L"x"));
  ASSERT_NE(nullptr, item);
  EXPECT_STREQ(L"2", item->GetUri()) << "the last of one name counts";
  EXPECT_EQ(nullptr, xml->GetDataItemSpec(L"X"));

  const auto oid = RefPtr<DataMapSpec>::Adopt(DataMapSpec::CreateDataMapSpec(
      Element(L"<OIDDataMap><DataItem Name='x'/><NextDataItem Name='w' Count='2'/></OIDDataMap>")
          .Get()));
  EXPECT_NE(nullptr, dynamic_cast<OIDDataItemSpec*>(oid->GetDataItemSpec(L"x")));
  EXPECT_NE(nullptr, dynamic_cast<NextOIDDataItemSpec*>(oid->GetDataItemSpec(L"w")));

  const auto ipp = RefPtr<DataMapSpec>::Adopt(DataMapSpec::CreateDataMapSpec(
      Element(L"<IPPDataMap><IPPParams Name='p'/></IPPDataMap>").Get()));
  EXPECT_NE(nullptr, ipp->GetDataItemSpec(L"IPPParams"));
  EXPECT_EQ(nullptr, ipp->GetDataItemSpec(L"p"));
}

TEST_F(DataMapSpecTest, RemovingEachItemOfAnIterationLeavesTheLast) {
  const auto spec = RefPtr<DataMapSpec>::Adopt(DataMapSpec::CreateDataMapSpec(DataMapTypeWS));
  EXPECT_EQ(L"WS", spec->GetProtocolType());
  for (const wchar_t* name : {L"c", L"a", L"b"}) {
    spec->AddDataItemSpec(name, StaticDataItemSpec::CreateStaticDataItemSpec(name, L"v", nullptr));
  }
  spec->RemoveFromMap();  // the cursor has not begun
  spec->Begin();
  spec->RemoveFromMap();  // nothing was returned yet
  EXPECT_EQ(3, spec->SizeOf());
  while (spec->GetNextDataItemSpec()) spec->RemoveFromMap();
  EXPECT_EQ(L"c ", NamesOf(spec.Get()));
}

TEST_F(DataMapSpecTest, AddingOverANameForgetsTheEarlierItem) {
  const auto spec = RefPtr<DataMapSpec>::Adopt(DataMapSpec::CreateDataMapSpec());
  const std::unique_ptr<NexoDataItem> earlier(
      StaticDataItemSpec::CreateStaticDataItemSpec(L"a", L"1", nullptr));
  spec->AddDataItemSpec(L"a", earlier.get());
  spec->AddDataItemSpec(L"a", StaticDataItemSpec::CreateStaticDataItemSpec(L"a", L"2", nullptr));
  spec->AddDataItemSpec(nullptr, StaticDataItemSpec::CreateStaticDataItemSpec(L"b", L"3", nullptr));
  EXPECT_EQ(1, spec->SizeOf());
  EXPECT_NE(earlier.get(), spec->GetDataItemSpec(L"a"));
}

TEST_F(DataMapSpecTest, CollectionHoldsAMapForEveryChildNode) {
  DataMapSpecCollection* const specs = DataMapSpecCollection::CreateDataMapSpecCollection(
      Element(L"<DataMaps><!-- maps --><XMLDataMap Protocol='WS'/><OIDDataMap/></DataMaps>").Get());
  ASSERT_EQ(3, specs->GetCount());
  EXPECT_EQ(DataMapTypeUnknown, specs->GetDataMapSpec(0)->GetDataMapType());
  EXPECT_EQ(DataMapTypeWS, specs->GetDataMapSpec(1)->GetDataMapType());

  // The collection gives back its reference; a holder of another keeps the map.
  const auto kept = RefPtr<DataMapSpec>::Share(specs->GetDataMapSpec(2));
  specs->Dispose();
  EXPECT_EQ(DataMapTypeOID, kept->GetDataMapType());
  EXPECT_EQ(2u, kept->AddRef());
  EXPECT_EQ(1u, kept->Release());
}

TEST(DataMapSpecCollectionTest, FactoriesGiveOneReference) {
  DataMapSpec* const spec = DataMapSpec::CreateDataMapSpec();
  EXPECT_EQ(2u, spec->AddRef());
  EXPECT_EQ(1u, spec->Dispose());
  DataMapSpecCollection* const specs = DataMapSpecCollection::CreateDataMapSpecCollection();
  specs->AddDataMapSpec(spec);
  specs->AddDataMapSpec(nullptr);
  EXPECT_EQ(2, specs->GetCount());
  specs->Dispose();
}

}  // namespace
}  // namespace Corvane::Test
