#include <algorithm>

#include "corvane/corvane.h"
#include "tests/support/dom.h"
#include "tests/support/fake_cache.h"
#include "tests/support/fake_device.h"
#include "tests/support/hr.h"
#include "tests/support/temp_folder.h"
#include "tests/support/trace_recorder.h"
#include "tests/support/wine.h"

namespace Corvane::Test {
namespace {

constexpr wchar_t kSpec[] =
    L"<DataMaps>"
    L"<XMLDataMap><DataItem Name='Lost' URI='/x' XPath='//x'/></XMLDataMap>"
    L"<OIDDataMap><DataItem Name='Later' OID='1.3'/></OIDDataMap>"
    L"<IPPDataMap><DataItem Name='Later'/></IPPDataMap>"
    L"<XMLDataMap Protocol='WS'><DataItem Name='Model' URI='a:b:c' XPath='//m'/></XMLDataMap>"
    L"<XMLDataMap Protocol='PLSXML'>"
    L"<StaticDataItem Name='Model' Prefix='dev'>Laser 9</StaticDataItem>"
    L"<StaticDataItem Name='Empty'/>"
    L"<StaticDataItem Name='zzz'>last</StaticDataItem>"
    L"<DataItem Name='Status' URI='/s.xml' XPath='//state' LifeSpan='600'>"
    L"<Conversion Contains='3' Value='Ready'/></DataItem>"
    L"</XMLDataMap></DataMaps>";

class DataCollectionTest : public ParsingTest {
 protected:
  DataCollectionTest() {
    m_device->Serve(80, L"/zq/device/product_information.xml",
                    "<p><ProductSerialNumber>S</ProductSerialNumber></p>");
    m_device->Serve(80, L"/s.xml", "<s><state>3</state></s>");
  }

  RefPtr<DataCollection> Make(const wchar_t* xml, HRESULT expected = S_OK,
                              ICacheProvider* cache = nullptr) {
    auto* const untouched = reinterpret_cast<DataCollection*>(this);
    DataCollection* made = untouched;
    EXPECT_HR(CreateDataCollectionFromXML(m_device.Get(), xml, &made, cache), expected);
    if (expected == S_OK) return RefPtr<DataCollection>::Adopt(made);
    EXPECT_EQ(untouched, made) << "the output of a failure is left alone";
    return {};
  }

  static std::wstring Get(DataCollection* collection, const wchar_t* name) {
    _variant_t value(L"untouched");
    const HRESULT result = collection->GetValue(name, &value);
    if (result == S_OK) return TextOf(value);
    EXPECT_EQ(L"untouched", TextOf(value)) << "the output of a failure is left alone";
    return L"<failed>";
  }

  RefPtr<FakeDevice> m_device = RefPtr<FakeDevice>::Share(new FakeDevice);
};

TEST_F(DataCollectionTest, TakesTheFirstMapThatFitsTheDevice) {
  const auto collection = Make(kSpec);
  EXPECT_EQ(L"Ready", Get(collection.Get(), L"Status"));
  EXPECT_EQ(L"Laser 9", Get(collection.Get(), L"dev:Model"));
  EXPECT_EQ(L"", Get(collection.Get(), L"Empty")) << "an empty static text is a value";
  EXPECT_EQ(L"last", Get(collection.Get(), L"zzz"));
  EXPECT_EQ(L"<failed>", Get(collection.Get(), L"Model")) << "that is the WS map's";
  EXPECT_EQ(L"<failed>", Get(collection.Get(), L"Later"));
}

TEST_F(DataCollectionTest, SaysWhyThereIsNoCollection) {
  static const struct {
    const char* name;
    const wchar_t* xml;
    HRESULT result;
  } kCases[] = {
      {"null", nullptr, S_FALSE},
      {"empty", L"", S_FALSE},
      {"not XML", L"DataMaps", S_FALSE},
      {"half", L"<DataMaps><XMLDataMap Protocol='PLSXML'>", S_FALSE},
      {"another root", L"<Maps><DataMaps/></Maps>", S_FALSE},
      {"root in another case", L"<datamaps/>", S_FALSE},
      {"root with a prefix", L"<c:DataMaps xmlns:c='u'/>", S_FALSE},
      {"no map", L"<DataMaps/>", E_FAIL},
      {"a map without protocol", L"<DataMaps><XMLDataMap/></DataMaps>", E_FAIL},
      {"no map fits", L"<DataMaps><XMLDataMap Protocol='WS'/></DataMaps>", E_FAIL},
      {"maps of kinds without provider", L"<DataMaps><OIDDataMap/><IPPDataMap/></DataMaps>",
       E_FAIL},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    Make(c.xml, c.result);
  }
  DataCollection* made = nullptr;
  EXPECT_HR(CreateDataCollectionFromXML(nullptr, kSpec, &made, nullptr), E_FAIL);
  EXPECT_HR(CreateDataCollectionFromDOM(m_device.Get(), nullptr, &made, nullptr), E_FAIL);
  EXPECT_HR(CreateDataCollectionFromDataMapSpecsCollection(m_device.Get(), nullptr, &made, nullptr),
            E_FAIL);
  EXPECT_HR(CreateDataCollectionFromXML(m_device.Get(), kSpec, nullptr, nullptr), E_FAIL);
  EXPECT_EQ(nullptr, made);
}

TEST_F(DataCollectionTest, ReadsASpecificationFromAFile) {
  const TempFolder folder;
  const auto good =
      folder.Write("spec.xml",
                   "<DataMaps><XMLDataMap Protocol='PLSXML'>"
                   "<StaticDataItem Name='a'>1</StaticDataItem></XMLDataMap></DataMaps>");
  const auto bad = folder.Write("bad.xml", "<DataMaps>");
  DataCollection* made = nullptr;
  EXPECT_HR(CreateDataCollectionFromFile(m_device.Get(), bad.wstring().c_str(), &made, nullptr),
            S_FALSE);
  EXPECT_HR(CreateDataCollectionFromFile(
                m_device.Get(), (folder.Path() / "none.xml").wstring().c_str(), &made, nullptr),
            S_FALSE);
  ASSERT_EQ(nullptr, made);
  const TraceRecorder recorder(kTraceSevere);
  ASSERT_HR(CreateDataCollectionFromFile(m_device.Get(), good.wstring().c_str(), &made, nullptr),
            S_OK);
  EXPECT_EQ(L"1", Get(made, L"a"));
  EXPECT_EQ(0u, made->Release());
  EXPECT_TRUE(recorder.HasMessage(128, L"Corvane::DataCollectionImpl::CreateFromFile",
                                  L"CoInitialize returned 1"));
  EXPECT_TRUE(recorder.HasMessage(128, L"Corvane::DataCollectionImpl::DataCollectionImpl",
                                  L"CoInitialize returned 1"));
}

TEST_F(DataCollectionTest, TakesStaticItemsOutOfTheMapButForTheLast) {
  DataMapSpecCollection* const specs =
      DataMapSpecCollection::CreateDataMapSpecCollection(Element(kSpec).Get());
  DataCollection* made = nullptr;
  ASSERT_HR(CreateDataCollectionFromDataMapSpecsCollection(m_device.Get(), specs, &made, nullptr),
            S_OK);
  const auto chosen = RefPtr<DataMapSpec>::Share(specs->GetDataMapSpec(4));
  EXPECT_EQ(nullptr, chosen->GetDataItemSpec(L"Model"));
  EXPECT_EQ(nullptr, chosen->GetDataItemSpec(L"Empty"));
  EXPECT_NE(nullptr, chosen->GetDataItemSpec(L"zzz"));
  EXPECT_NE(nullptr, chosen->GetDataItemSpec(L"Status"));
  specs->Dispose();
  EXPECT_EQ(L"Ready", Get(made, L"Status")) << "the collection keeps the chosen map";
  made->Dispose();
}

TEST_F(DataCollectionTest, ClearsByPrefix) {
  const auto collection = Make(
      L"<DataMaps><XMLDataMap Protocol='PLSXML'>"
      L"<StaticDataItem Name='Model' Prefix='dev'>1</StaticDataItem>"
      L"<StaticDataItem Name='dev'>2</StaticDataItem><StaticDataItem Name='a' "
      L"Prefix='device'>3</StaticDataItem>"
      L"<StaticDataItem Name='b' Prefix=''>4</StaticDataItem></XMLDataMap></DataMaps>");
  EXPECT_HR(collection->ClearValues(L""), E_FAIL);
  EXPECT_HR(collection->ClearValues(nullptr), E_FAIL);
  EXPECT_HR(collection->ClearValues(L"dev"), S_OK);
  EXPECT_HR(collection->ClearValues(L"dev"), E_FAIL);
  EXPECT_EQ(L"<failed>", Get(collection.Get(), L"dev:Model"));
  EXPECT_EQ(L"2", Get(collection.Get(), L"dev"));
  EXPECT_EQ(L"3", Get(collection.Get(), L"device:a"));
  EXPECT_EQ(L"4", Get(collection.Get(), L":b"));
}

TEST_F(DataCollectionTest, GivesItsStoreToTheCacheOnce) {
  FakeCache cache;
  cache.AddRef();
  {
    const auto collection = Make(kSpec, S_OK, &cache);
    Get(collection.Get(), L"Status");
    Get(collection.Get(), L"p:Status");
    EXPECT_EQ(0, cache.writes);
    EXPECT_EQ(2u, cache.References());
  }
  EXPECT_EQ(1, cache.writes);
  EXPECT_EQ(1u, cache.References());
  ASSERT_EQ(5u, cache.written.size());
  EXPECT_EQ(600u, cache.written[L"p:Status"].lifespan);
  EXPECT_NE(0u, cache.written[L"Status"].timestamp);
  EXPECT_EQ(0u, cache.written[L"dev:Model"].timestamp);
  EXPECT_EQ(L"Ready", TextOf(cache.written[L"Status"].value));
}

TEST_F(DataCollectionTest, TracesTheWholeRoad) {
  const TraceRecorder recorder(kTraceScope);
  Make(L"<DataMaps><XMLDataMap Protocol='PLSXML'/></DataMaps>");
  const auto names = recorder.Entered();
  std::vector<std::wstring> creation;
  std::copy_if(
      names.begin(), names.end(), std::back_inserter(creation),
      [](const std::wstring& name) { return name.find(L"Provider") == std::wstring::npos; });
  const std::vector<std::wstring> expected = {
      L"Corvane::CreateDataCollectionFromXML",
      L"Corvane::DataCollectionImpl::CreateFromXML",
      L"Corvane::DataCollectionImpl::CreateFromDOM",
      L"Corvane::CreateDataCollectionFromDataMapSpecsCollection",
      L"Corvane::DataCollectionImpl::DataCollectionImpl",
      L"Corvane::XMLDataMapper::XMLDataMapper",
      L"Corvane::DataCollectionImpl::LoadStaticItems",
      L"Corvane::XMLDataMapper::~XMLDataMapper",
      L"Corvane::DataCollectionImpl::~DataCollectionImpl"};
  EXPECT_EQ(expected, creation);
}

}  // namespace
}  // namespace Corvane::Test
