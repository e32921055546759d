// Collections over caches: what the second run knows.
#include "tests/support/device_test.h"
#include "tests/support/registry_key.h"
#include "tests/support/test_printer.h"
#include "tests/support/test_store.h"

namespace Corvane::Test {
namespace {

constexpr wchar_t kSerialNumber[] = L"1.3.6.1.4.1.11.2.3.9.4.2.1.1.3.3.0";

class CachedCollectionTest : public DeviceTest {
 protected:
  CachedCollectionTest() {
    m_device->snmp = &m_snmp;
    m_snmp.Serve(kSerialNumber, L"SN1");
    m_snmp.Serve(L"1.3.1", L"420");
    m_snmp.Serve(L"1.3.2", L"i:7");
    m_snmp.Serve(L"1.3.3", L"Office");
    m_snmp.Serve(L"1.3.4", L"now");
  }

  // One run: a collection is made, asked for all of it, and goes. What the device was asked for.
  std::wstring Run(const RefPtr<ICacheProvider>& cache) {
    TakeCalls();
    Make(ToWide(ReadData("cache/cached_items.xml")).c_str(), S_OK, cache.Get());
    std::wstring values;
    for (const wchar_t* const name : {L"Model", L"Pages", L"Family", L"Now"}) {
      values += Get(name) + L' ';
    }
    EXPECT_EQ(L"420 i:7 Office now ", values);
    m_collection.Reset();
    const std::wstring probe = std::wstring(L"Get ") + FakeSnmp::kProbe + L", ";
    const std::wstring calls = TakeCalls();
    EXPECT_EQ(0u, calls.find(probe));
    return calls.substr(probe.size());
  }
  RefPtr<ICacheProvider> Registry(const wchar_t* path) {
    return RefPtr<ICacheProvider>::Adopt(CreateRegCacheProvider(path));
  }

  const TestStore m_store;
  const RegistryKey m_registry;
};

TEST_F(CachedCollectionTest, SecondRunAnswersFromTheRegistry) {
  const std::wstring identity = std::wstring(L"Get ") + kSerialNumber;
  const std::wstring all = L"Get 1.3.1, Get 1.3.2, Get 1.3.3, Get 1.3.4";
  const wchar_t* const path = m_registry.Path().c_str();
  EXPECT_EQ(identity + L", " + all, Run(Registry(path)));
  EXPECT_EQ(identity + L", Get 1.3.4", Run(Registry(path)));

  const auto stored = m_registry.Values(L"SN1\\OID");
  ASSERT_EQ(6u, stored.size());
  EXPECT_EQ(RegistryKey::Text(L"0"), stored.at(L"Family.Expires"));
  EXPECT_NE(RegistryKey::Text(L"0"), stored.at(L"Model.Expires"));
  ASSERT_EQ(ERROR_SUCCESS, m_registry.Set(L"SN1\\OID", L"Model.Expires", RegistryKey::Text(L"1")));
  EXPECT_EQ(identity + L", Get 1.3.1, Get 1.3.4", Run(Registry(path))) << "the model is stale";
  EXPECT_NE(RegistryKey::Text(L"1"), m_registry.Values(L"SN1\\OID")[L"Model.Expires"]);

  m_snmp.Serve(kSerialNumber, L"SN2");
  EXPECT_EQ(identity + L", " + all, Run(Registry(path))) << "another device's values are its own";
  EXPECT_EQ(all, Run(Registry(L""))) << "nobody asks who it is, nothing is kept";
}

TEST_F(CachedCollectionTest, SecondRunAnswersTextFromThePrinter) {
  const TestPrinter printer;
  if (!printer.Handle()) GTEST_SKIP() << printer.Problem();
  const auto cache = [&printer] {
    return RefPtr<ICacheProvider>::Adopt(CreatePrintDataCacheProvider(printer.Handle()));
  };
  EXPECT_EQ(L"Get 1.3.1, Get 1.3.2, Get 1.3.3, Get 1.3.4", Run(cache()));
  EXPECT_EQ(L"Get 1.3.2, Get 1.3.4", Run(cache())) << "but integers anew";
}

TEST_F(CachedCollectionTest, KeepsADevicesValuesUnderItsIdentity) {
  for (const Case& c : ReadCases("cache/identities.txt")) {
    SCOPED_TRACE(c.Where());
    m_snmp.Serve(kSerialNumber, c.Wide("answer"));
    if (!c.Find("answer")) m_snmp.values.erase(ParseOid(kSerialNumber).value());
    m_device->Serve(static_cast<std::uint32_t>(c.Number("port")), c.Wide("path").c_str(),
                    c.Text("answer"));
    const std::wstring map = c.Wide("map");
    const std::wstring element = map.substr(0, map.find(L' '));
    const std::wstring xml = L"<DataMaps><" + map +
                             L"><StaticDataItem Name='S'>1</StaticDataItem></" + element +
                             L"></DataMaps>";
    const auto cache = Registry(m_registry.Path().c_str());
    EXPECT_EQ(0u, m_registry.Values(c.Wide("key")).count(L"S"));
    Make(xml.c_str(), S_OK, cache.Get());
    m_collection.Reset();
    EXPECT_EQ(1u, m_registry.Values(c.Wide("key")).count(L"S"));
  }
}

}  // namespace
}  // namespace Corvane::Test
