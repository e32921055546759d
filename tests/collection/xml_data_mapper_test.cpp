#include "collection/xml_data_mapper.h"

#include "core/file_time.h"
#include "tests/support/counted.h"
#include "tests/support/dom.h"
#include "tests/support/hr.h"

namespace Corvane::Test {
namespace {

// Answers one text to everything, and records what it was asked.
class FakeProvider final : public Counted<IXMLProvider> {
 public:
  struct Query {
    std::wstring uri;
    std::wstring xpath;
    std::uint32_t bufferSize;
    int useCache;
    std::uint32_t lifeSpan;
  };

  std::wstring text = L"value";
  HRESULT result = S_OK;
  std::uint32_t port = 8080;
  std::vector<Query> queries;

  std::uint32_t GetPort() override { return port; }
  HRESULT GetValue(const wchar_t* uri, const wchar_t* xpath, wchar_t* buffer,
                   std::uint32_t bufferSize, std::uint32_t* requiredLength, int useCache,
                   std::uint32_t lifeSpan) override {
    queries.push_back({uri, xpath, bufferSize, useCache, lifeSpan});
    *requiredLength = static_cast<std::uint32_t>(text.size() + 1);
    if (result != S_OK) return result;
    if (*requiredLength > bufferSize) return E_OUTOFMEMORY;
    text.copy(buffer, text.size());
    buffer[text.size()] = L'\0';
    return S_OK;
  }
};

class XMLDataMapperTest : public ParsingTest {
 protected:
  // The mapper's own clock, moved back for a test of staleness.
  class Mapper final : public XMLDataMapper {
   public:
    using XMLDataMapper::XMLDataMapper;
    void Age(const wchar_t* key, std::uint64_t ticks) { m_values.at(key).timestamp -= ticks; }
    bool Has(const wchar_t* key) const { return m_values.contains(key); }
  };

  XMLDataMapperTest()
      : m_provider(RefPtr<FakeProvider>::Share(new FakeProvider)),
        m_spec(RefPtr<DataMapSpec>::Adopt(DataMapSpec::CreateDataMapSpec(
            Element(L"<XMLDataMap>"
                    L"<DataItem Name='Status' URI='/s' XPath='//x' LifeSpan='50'>"
                    L"<Conversion Contains='3' Value='Ready'/></DataItem>"
                    L"<DataItem Name='Level' URI='/s' XPath='//x' Transient='true' LifeSpan='50'/>"
                    L"<DataItem Name='NoUri' XPath='//x'/><DataItem Name='NoXPath' URI='/s'/>"
                    L"<DataItem Name='EmptyUri' URI='' XPath='//x'/>"
                    L"<StaticDataItem Name='Fixed'>f</StaticDataItem>"
                    L"<DataItem Name='a:b' URI='/s' XPath='//x'/></XMLDataMap>")
                .Get()))),
        m_mapper(RefPtr<Mapper>::Share(new Mapper(m_provider.Get(), m_spec.Get()))) {}

  std::wstring Get(const wchar_t* name, HRESULT expected = S_OK) {
    _variant_t value(L"untouched");
    EXPECT_HR(m_mapper->GetValue(name, &value), expected);
    return TextOf(value);
  }

  RefPtr<FakeProvider> m_provider;
  RefPtr<DataMapSpec> m_spec;
  RefPtr<Mapper> m_mapper;
};

TEST_F(XMLDataMapperTest, AnswersFromTheStoreWhileFresh) {
  m_provider->text = L"3";
  EXPECT_EQ(L"Ready", Get(L"Status"));
  EXPECT_EQ(L"Ready", Get(L"Status"));
  ASSERT_EQ(1u, m_provider->queries.size());
  EXPECT_EQ(L"/s", m_provider->queries[0].uri);
  EXPECT_EQ(L"//x", m_provider->queries[0].xpath);
  EXPECT_EQ(256u, m_provider->queries[0].bufferSize);
  EXPECT_EQ(1, m_provider->queries[0].useCache);
  EXPECT_EQ(50u, m_provider->queries[0].lifeSpan);

  m_mapper->Age(L"Status", 60'000'000);
  m_provider->text = L"busy";
  EXPECT_EQ(L"busy", Get(L"Status")) << "stale after five seconds";
  m_mapper->Age(L"Status", 60'000'000);
  m_provider->result = E_FAIL;
  EXPECT_EQ(L"untouched", Get(L"Status", E_FAIL)) << "a stale value is no answer";
}

TEST_F(XMLDataMapperTest, TransientItemsAreFetchedEveryTime) {
  Get(L"Level");
  Get(L"Level");
  ASSERT_EQ(2u, m_provider->queries.size());
  EXPECT_EQ(0, m_provider->queries[1].useCache);
  EXPECT_FALSE(m_mapper->Has(L"Level"));
}

TEST_F(XMLDataMapperTest, LongValuesTakeOneRetryWithLifespanZero) {
  m_provider->text.assign(255, L'x');
  EXPECT_EQ(m_provider->text, Get(L"Status"));
  EXPECT_EQ(1u, m_provider->queries.size());
  m_provider->text.assign(256, L'y');
  EXPECT_EQ(m_provider->text, Get(L"p:Status"));
  ASSERT_EQ(3u, m_provider->queries.size());
  EXPECT_EQ(257u, m_provider->queries[2].bufferSize);
  EXPECT_EQ(0u, m_provider->queries[2].lifeSpan);
  EXPECT_EQ(1, m_provider->queries[2].useCache);
  m_provider->result = E_OUTOFMEMORY;
  EXPECT_EQ(L"untouched", Get(L"Level", E_OUTOFMEMORY));
  EXPECT_EQ(5u, m_provider->queries.size());
}

TEST_F(XMLDataMapperTest, PrefixesCountForTheStoreAlone) {
  EXPECT_EQ(L"value", Get(L"ns:Status"));
  EXPECT_TRUE(m_mapper->Has(L"ns:Status"));
  EXPECT_FALSE(m_mapper->Has(L"Status"));
  EXPECT_EQ(L"value", Get(L":Status"));
  EXPECT_EQ(L"value", Get(L"x:a:b")) << "the first colon splits";
}

TEST_F(XMLDataMapperTest, FailsWithoutAskingTheDevice) {
  static const struct {
    const char* name;
    const wchar_t* item;
  } kCases[] = {{"null", nullptr},          {"empty", L""},
                {"unknown", L"None"},       {"case", L"status"},
                {"static", L"Fixed"},       {"no URI", L"NoUri"},
                {"no XPath", L"NoXPath"},   {"empty URI", L"EmptyUri"},
                {"colon in a name", L"a:b"}};
  for (const auto& c : kCases) EXPECT_EQ(L"untouched", Get(c.item, E_FAIL)) << c.name;
  EXPECT_HR(m_mapper->GetValue(L"Status", nullptr), E_FAIL);
  EXPECT_TRUE(m_provider->queries.empty());
}

TEST_F(XMLDataMapperTest, ProviderCodesComeBackAsTheyAre) {
  for (const HRESULT code : {S_FALSE, E_FAIL, E_INVALIDARG}) {
    m_provider->result = code;
    EXPECT_EQ(L"untouched", Get(L"Status", code));
    EXPECT_FALSE(m_mapper->Has(L"Status"));
  }
}

TEST_F(XMLDataMapperTest, NamesItsMapByThePort) {
  static const struct {
    std::uint32_t port;
    const wchar_t* name;
  } kCases[] = {{80, L"XMLDataMap[@Protocol='PLSXML']"},
                {7627, L"XMLDataMap[@Protocol='WS']"},
                {8080, L"XMLDataMap[@Protocol='QUARN']"},
                {443, L"XMLDataMap[@Protocol='']"}};
  for (const auto& c : kCases) {
    m_provider->port = c.port;
    EXPECT_EQ(c.name, m_mapper->GetDataMapName());
  }
  const auto orphan = RefPtr<Mapper>::Share(new Mapper(nullptr, nullptr));
  EXPECT_EQ(L"", orphan->GetDataMapName());
  _variant_t value;
  EXPECT_HR(orphan->GetValue(L"Status", &value), E_FAIL);
}

TEST_F(XMLDataMapperTest, HoldsItsProviderAndMap) {
  EXPECT_EQ(3u, m_provider->AddRef());
  m_provider->Release();
  m_mapper.Reset();
  EXPECT_EQ(2u, m_provider->AddRef());
  m_provider->Release();
  EXPECT_EQ(2u, m_spec->AddRef());
  m_spec->Release();
}

}  // namespace
}  // namespace Corvane::Test
