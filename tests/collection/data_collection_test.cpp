#include "tests/support/device_test.h"
#include "tests/support/temp_folder.h"
#include "tests/support/trace_recorder.h"

namespace Corvane::Test {
namespace {

class DataCollectionTest : public DeviceTest {
 protected:
  DataCollectionTest() {
    m_device->host = L"USB001";  // is not probed for IPP
    m_device->Serve(80, L"/zq/device/product_information.xml",
                    "<p><ProductSerialNumber>S</ProductSerialNumber></p>");
    m_device->Serve(80, L"/s.xml", "<s><state>3</state></s>");
  }

  const std::string m_specification = ReadData("collection/map_choice.xml");
  const std::wstring m_xml = ToWide(m_specification);
};

TEST_F(DataCollectionTest, TakesTheFirstMapThatFitsTheDevice) {
  Make(m_xml.c_str());
  AskAll("collection/map_choice_values.txt");
}

TEST_F(DataCollectionTest, SaysWhyThereIsNoCollection) {
  for (const Case& c : ReadCases("collection/no_collection.txt")) {
    SCOPED_TRACE(c.Where());
    Make(c.Wide("xml").c_str(), c.Text("result") == "E_FAIL" ? E_FAIL : S_FALSE);
  }
  Make(nullptr, S_FALSE);
  Address* const device = m_device.Get();
  DataCollection* made = nullptr;
  EXPECT_HR(CreateDataCollectionFromXML(nullptr, m_xml.c_str(), &made, nullptr), E_FAIL);
  EXPECT_HR(CreateDataCollectionFromDOM(device, nullptr, &made, nullptr), E_FAIL);
  EXPECT_HR(CreateDataCollectionFromDataMapSpecsCollection(device, nullptr, &made, nullptr),
            E_FAIL);
  EXPECT_HR(CreateDataCollectionFromXML(device, m_xml.c_str(), nullptr, nullptr), E_FAIL);
  EXPECT_EQ(nullptr, made);
}

TEST_F(DataCollectionTest, ReadsASpecificationFromAFile) {
  const TempFolder folder;
  const auto read = [&](const std::filesystem::path& file) {
    DataCollection* made = nullptr;
    const HRESULT result =
        CreateDataCollectionFromFile(m_device.Get(), file.wstring().c_str(), &made, nullptr);
    m_collection = RefPtr<DataCollection>::Adopt(made);
    return result;
  };
  EXPECT_HR(read(folder.Write("bad.xml", "<DataMaps>")), S_FALSE);
  EXPECT_HR(read(folder.Path() / "none.xml"), S_FALSE);
  ASSERT_FALSE(m_collection);
  const auto good = folder.Write("good.xml", m_specification);
  const TraceRecorder recorder(kTraceScope | kTraceSevere);
  ASSERT_HR(read(good), S_OK);
  Get(L"Status");
  m_collection.Reset();
  EXPECT_EQ(ToWide(ReadData("collection/trace_of_a_file.txt")), recorder.Text());
}

TEST_F(DataCollectionTest, TakesStaticItemsOutOfTheMapButForTheLast) {
  DataMapSpecCollection* const specs =
      DataMapSpecCollection::CreateDataMapSpecCollection(Element(m_xml).Get());
  DataCollection* made = nullptr;
  ASSERT_HR(CreateDataCollectionFromDataMapSpecsCollection(m_device.Get(), specs, &made, nullptr),
            S_OK);
  m_collection = RefPtr<DataCollection>::Adopt(made);
  const auto chosen = RefPtr<DataMapSpec>::Share(specs->GetDataMapSpec(4));
  EXPECT_EQ(nullptr, chosen->GetDataItemSpec(L"Model"));
  EXPECT_EQ(nullptr, chosen->GetDataItemSpec(L"Empty"));
  EXPECT_NE(nullptr, chosen->GetDataItemSpec(L"zzz"));
  EXPECT_NE(nullptr, chosen->GetDataItemSpec(L"Status"));
  specs->Dispose();
  EXPECT_EQ(L"Ready", Get(L"Status")) << "the collection keeps the chosen map";
}

TEST_F(DataCollectionTest, ClearsByPrefix) {
  Make(m_xml.c_str());
  EXPECT_HR(m_collection->ClearValues(L""), E_FAIL);
  EXPECT_HR(m_collection->ClearValues(nullptr), E_FAIL);
  EXPECT_HR(m_collection->ClearValues(L"dev"), S_OK);
  EXPECT_HR(m_collection->ClearValues(L"dev"), E_FAIL);
  EXPECT_EQ(L"[E_FAIL]", Get(L"dev:Model"));
  EXPECT_EQ(L"2", Get(L"dev"));
  EXPECT_EQ(L"3", Get(L"device:a"));
  EXPECT_EQ(L"4", Get(L":b"));
}

}  // namespace
}  // namespace Corvane::Test
