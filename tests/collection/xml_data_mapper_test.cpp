#include "collection/xml_data_mapper.h"

#include "tests/support/device_test.h"

namespace Corvane::Test {
namespace {

// Answers one text to everything, and tells a device's calls what it was asked.
class FakeProvider final : public Counted<IXMLProvider> {
 public:
  explicit FakeProvider(std::vector<std::wstring>* calls) : m_calls(calls) {}

  std::wstring text = L"3";
  HRESULT result = S_OK;
  std::uint32_t port = kQuarnPort;

  std::uint32_t GetPort() override { return port; }
  HRESULT GetValue(const wchar_t* uri, const wchar_t* xpath, wchar_t* buffer,
                   std::uint32_t bufferSize, std::uint32_t* requiredLength, int useCache,
                   std::uint32_t lifeSpan) override {
    std::wstring call = std::wstring(uri) + L' ' + xpath;
    for (const std::uint32_t number :
         {bufferSize, static_cast<std::uint32_t>(useCache), lifeSpan}) {
      call += L' ' + std::to_wstring(number);
    }
    m_calls->push_back(call);
    return result == S_OK ? CopyToBuffer(text, buffer, bufferSize, requiredLength) : result;
  }

 private:
  std::vector<std::wstring>* const m_calls;
};

class XMLDataMapperTest : public DeviceTest {
 protected:
  class Mapper final : public XMLDataMapper {
   public:
    using XMLDataMapper::XMLDataMapper;
    void MakeOlder(const wchar_t* key, std::uint64_t ticks) { m_values.at(key).timestamp -= ticks; }
  };

  XMLDataMapperTest() { m_collection = RefPtr<DataCollection>::Share(m_mapper.Get()); }

  const RefPtr<FakeProvider> m_provider =
      RefPtr<FakeProvider>::Share(new FakeProvider(&m_device->calls));
  const RefPtr<DataMapSpec> m_spec = RefPtr<DataMapSpec>::Adopt(
      DataMapSpec::CreateDataMapSpec(Element(ToWide(ReadData("collection/xml_map.xml"))).Get()));
  RefPtr<Mapper> m_mapper = RefPtr<Mapper>::Share(new Mapper(m_provider.Get(), m_spec.Get()));
};

TEST_F(XMLDataMapperTest, AsksTheProviderForWhatItDoesNotKnow) {
  AskAll("collection/xml_values.txt");
  EXPECT_EQ(L"[E_FAIL]", Get(nullptr));
  EXPECT_HR(m_mapper->GetValue(L"Status", nullptr), E_FAIL);
}

TEST_F(XMLDataMapperTest, AnswersFromTheStoreWhileFresh) {
  EXPECT_EQ(L"Ready", Get(L"Status"));
  m_provider->text = L"busy";
  m_mapper->MakeOlder(L"Status", 40'000'000);
  EXPECT_EQ(L"Ready", Get(L"Status"));
  m_mapper->MakeOlder(L"Status", 20'000'000);
  EXPECT_EQ(L"busy", Get(L"Status")) << "stale after five seconds";
  m_mapper->MakeOlder(L"Status", 60'000'000);
  m_provider->result = E_FAIL;
  EXPECT_EQ(L"[E_FAIL]", Get(L"Status")) << "a stale value is no answer";
}

TEST_F(XMLDataMapperTest, LongValuesTakeOneRetryWithLifespanZero) {
  m_provider->text.assign(255, L'x');
  EXPECT_EQ(m_provider->text, Get(L"Status"));
  EXPECT_EQ(L"/s //x 256 1 50", TakeCalls());
  m_provider->text.assign(256, L'y');
  EXPECT_EQ(m_provider->text, Get(L"p:Status"));
  EXPECT_EQ(L"/s //x 256 1 50, /s //x 257 1 0", TakeCalls());
  m_provider->result = E_OUTOFMEMORY;
  EXPECT_EQ(L"[E_OUTOFMEMORY]", Get(L"Level"));
  EXPECT_EQ(2u, m_device->calls.size());
}

TEST_F(XMLDataMapperTest, ProviderCodesComeBackAsTheyAre) {
  for (const HRESULT code : {S_FALSE, E_FAIL, E_INVALIDARG}) {
    m_provider->result = code;
    EXPECT_EQ(L'[' + ToWide(HrText(code)) + L']', Get(L"Status"));
  }
  m_provider->result = S_OK;
  EXPECT_EQ(L"Ready", Get(L"Status")) << "nothing was stored";
}

TEST_F(XMLDataMapperTest, NamesItsMapByThePort) {
  const std::pair<std::uint32_t, const wchar_t*> kNames[] = {
      {kHttpPort, L"PLSXML"}, {kWsPort, L"WS"}, {kQuarnPort, L"QUARN"}, {kIppsPort, L""}};
  for (const auto& [port, protocol] : kNames) {
    m_provider->port = port;
    EXPECT_EQ(std::wstring(L"XMLDataMap[@Protocol='") + protocol + L"']",
              m_mapper->GetDataMapName());
  }
  m_mapper = RefPtr<Mapper>::Share(new Mapper(nullptr, nullptr));
  m_collection = RefPtr<DataCollection>::Share(m_mapper.Get());
  EXPECT_EQ(L"", m_mapper->GetDataMapName());
  EXPECT_EQ(L"[E_FAIL]", Get(L"Status"));
}

TEST_F(XMLDataMapperTest, HoldsItsProviderAndMap) {
  EXPECT_EQ(2u, m_provider->References());
  m_mapper.Reset();
  m_collection.Reset();
  EXPECT_EQ(1u, m_provider->References());
  EXPECT_EQ(2u, m_spec->AddRef());
  m_spec->Release();
}

}  // namespace
}  // namespace Corvane::Test
