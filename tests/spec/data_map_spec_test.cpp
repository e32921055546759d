#include "corvane/data_map_spec_collection.h"

#include <memory>

#include "corvane/ipp_data_item_spec.h"
#include "corvane/next_oid_data_item_spec.h"
#include "corvane/static_data_item_spec.h"
#include "corvane/xml_data_item_spec.h"
#include "tests/support/cases.h"
#include "tests/support/dom.h"

namespace Corvane::Test {
namespace {

using DataMapSpecTest = ParsingTest;

// The kind of an item, and every field that it has.
std::wstring Described(NexoDataItem* item) {
  std::wstring kind = L"static";
  std::wstring fields;
  const auto field = [&fields](const wchar_t* name, const wchar_t* value) {
    if (value) fields.append(L" ").append(name).append(L"=").append(value);
  };
  field(L"key", ItemKey(*item).c_str());
  field(L"name", item->GetName());
  field(L"id", item->GetAttributeID());
  field(L"prefix", item->GetPrefix());
  if (const auto* const data = dynamic_cast<DataItemSpec*>(item)) {
    kind = L"IPP";
    if (data->IsTransient()) fields += L" transient";
    const auto life = std::to_wstring(data->GetLifespan());
    field(L"life", data->GetLifespan() == 0 ? nullptr : life.c_str());
    field(L"type", data->GetType());
  }
  if (const auto* const xml = dynamic_cast<XMLDataItemSpec*>(item)) {
    kind = L"XML";
    field(L"uri", xml->GetUri());
    field(L"xpath", xml->GetXPath());
  } else if (auto* const oid = dynamic_cast<OIDDataItemSpec*>(item)) {
    kind = L"OID";
    field(L"oid", oid->GetOid());
    field(L"group", oid->GetGroup());
    if (NextOIDDataItemSpec* const walk = oid->GetNextOIDDataItemSpec()) {
      kind = L"walk";
      field(L"count", std::to_wstring(walk->Count()).c_str());
      if (walk->IsUntilEnd()) fields += L" untilEnd";
    }
  } else if (const auto* const fixed = dynamic_cast<StaticDataItemSpec*>(item)) {
    field(L"value", fixed->GetStaticDataItemValue());
  }
  return kind + fields;
}

std::wstring Described(std::unique_ptr<NexoDataItem> item) { return Described(item.get()); }

std::wstring Described(DataMapSpec* map) {
  std::wstring text = std::to_wstring(map->GetDataMapType()) + L':' + map->GetProtocolType();
  map->Begin();
  while (NexoDataItem* const item = map->GetNextDataItemSpec()) text += L"; " + Described(item);
  return text;
}

TEST_F(DataMapSpecTest, ReadsMapsAndItemsOfEveryKind) {
  for (const Case& c : ReadCases("spec/data_maps.txt")) {
    SCOPED_TRACE(c.Where());
    const auto map =
        RefPtr<DataMapSpec>::Adopt(DataMapSpec::CreateDataMapSpec(Element(c.Wide("xml")).Get()));
    EXPECT_EQ(c.Wide("map"), Described(map.Get()));
  }
}

TEST_F(DataMapSpecTest, FindsItemsByTheirExactNames) {
  const auto map = RefPtr<DataMapSpec>::Adopt(DataMapSpec::CreateDataMapSpec(
      Element(L"<IPPDataMap><DataItem Name='x'/><IPPParams Name='p'/></IPPDataMap>").Get()));
  EXPECT_EQ(L"IPP key=x name=x", Described(map->GetDataItemSpec(L"x")));
  EXPECT_EQ(nullptr, map->GetDataItemSpec(L"X"));
  EXPECT_EQ(L"IPP key=p name=p", Described(map->GetDataItemSpec(L"IPPParams")));
  EXPECT_EQ(nullptr, map->GetDataItemSpec(L"p"));
}

TEST_F(DataMapSpecTest, FactoriesCopyTheirFields) {
  using Item = std::unique_ptr<NexoDataItem>;
  EXPECT_EQ(L"XML key=p:n name=n id=n prefix=p transient life=4294967295 type=t uri=/u xpath=//x",
            Described(Item(XMLDataItemSpec::CreateXMLDataItem(L"n", L"/u", L"//x", L"p", true,
                                                              std::uint64_t{1} << 40, L"t"))));
  EXPECT_EQ(L"OID key=n name=n id=n life=5 oid=1.3 group=g",
            Described(Item(OIDDataItemSpec::CreateOIDDataItemSpec(L"n", L"1.3", L"g", false,
                                                                  nullptr, 5, nullptr))));
  EXPECT_EQ(L"walk key=n name=n id=n oid=1.3 group=g count=7 untilEnd",
            Described(Item(NextOIDDataItemSpec::CreateNextOidDataItemSpec(
                L"n", L"1.3", L"g", false, nullptr, 0, nullptr, true, 7))));
  EXPECT_EQ(L"static key=p:n name=n id=n prefix=p value=v",
            Described(Item(StaticDataItemSpec::CreateStaticDataItemSpec(L"n", L"v", L"p"))));
  EXPECT_EQ(L"XML key=", Described(Item(XMLDataItemSpec::CreateXMLDataItem(nullptr))));
  EXPECT_EQ(
      L"static key=",
      Described(Item(StaticDataItemSpec::CreateStaticDataItemSpec(nullptr, nullptr, nullptr))));
  EXPECT_EQ(L"static key=", Described(Item(StaticDataItemSpec::CreateStaticDataItemSpec(nullptr))));
}

StaticDataItemSpec* Static(const wchar_t* name) {
  return StaticDataItemSpec::CreateStaticDataItemSpec(name, L"v", nullptr);
}

TEST_F(DataMapSpecTest, RemovingEachItemOfAnIterationLeavesTheLast) {
  const auto map = RefPtr<DataMapSpec>::Adopt(DataMapSpec::CreateDataMapSpec(DataMapTypeWS));
  for (const wchar_t* name : {L"c", L"a", L"b"}) map->AddDataItemSpec(name, Static(name));
  map->RemoveFromMap();  // the cursor has not begun
  map->Begin();
  map->RemoveFromMap();  // nothing was returned yet
  EXPECT_EQ(3, map->SizeOf());
  while (map->GetNextDataItemSpec()) map->RemoveFromMap();
  EXPECT_EQ(L"2:WS; static key=c name=c id=c value=v", Described(map.Get()));
}

TEST_F(DataMapSpecTest, AddingOverANameForgetsTheEarlierItem) {
  const auto map = RefPtr<DataMapSpec>::Adopt(DataMapSpec::CreateDataMapSpec());
  const std::unique_ptr<NexoDataItem> earlier(Static(L"a"));
  map->AddDataItemSpec(L"a", earlier.get());
  map->AddDataItemSpec(L"a", Static(L"a"));
  map->AddDataItemSpec(nullptr, Static(L"b"));
  EXPECT_EQ(1, map->SizeOf());
  EXPECT_NE(earlier.get(), map->GetDataItemSpec(L"a"));
}

TEST_F(DataMapSpecTest, CollectionHoldsAMapForEveryChildNode) {
  DataMapSpecCollection* const maps = DataMapSpecCollection::CreateDataMapSpecCollection(
      Element(L"<DataMaps><!-- maps --><XMLDataMap Protocol='WS'/><OIDDataMap/></DataMaps>").Get());
  maps->AddDataMapSpec(nullptr);
  maps->AddDataMapSpec(DataMapSpec::CreateDataMapSpec());
  ASSERT_EQ(5, maps->GetCount());
  EXPECT_EQ(L"0:", Described(maps->GetDataMapSpec(0)));
  EXPECT_EQ(L"2:WS", Described(maps->GetDataMapSpec(1)));

  // The collection gives back its reference; a holder of another keeps the map.
  const auto kept = RefPtr<DataMapSpec>::Share(maps->GetDataMapSpec(2));
  maps->Dispose();
  EXPECT_EQ(L"5:OID", Described(kept.Get()));
  EXPECT_EQ(2u, kept->AddRef());
  EXPECT_EQ(1u, kept->Release());
}

TEST_F(DataMapSpecTest, ItemsConvertValuesByTheirTables) {
  for (const Case& c : ReadCases("spec/value_conversions.txt")) {
    SCOPED_TRACE(c.Where());
    const DataItemSpec item(Element(L"<i>" + c.Wide("entries") + L"</i>").Get());
    EXPECT_EQ(c.Wide("converted"), TextOf(item.ConvertValue(ValueOf(c.Wide("raw")))));
  }
}

}  // namespace
}  // namespace Corvane::Test
