// Collections over caches: what the second run knows.
#include "corvane/corvane.h"
#include "tests/support/dom.h"
#include "tests/support/fake_device.h"
#include "tests/support/fake_snmp.h"
#include "tests/support/hr.h"
#include "tests/support/registry_key.h"
#include "tests/support/test_printer.h"
#include "tests/support/test_store.h"

namespace Corvane::Test {
namespace {

constexpr wchar_t kSerialNumber[] = L"1.3.6.1.4.1.11.2.3.9.4.2.1.1.3.3.0";

std::wstring OidSpec(const wchar_t* modelLifespan) {
  return std::wstring(L"<DataMaps><OIDDataMap><DataItem Name='Model' OID='1.3.1' LifeSpan='") +
         modelLifespan +
         L"'/><DataItem Name='Pages' OID='1.3.2' LifeSpan='600'/>"
         L"<DataItem Name='Family' OID='1.3.3'/>"
         L"<DataItem Name='Now' OID='1.3.4' Transient='true'/></OIDDataMap></DataMaps>";
}

class CachedCollectionTest : public ParsingTest {
 protected:
  CachedCollectionTest() {
    m_snmp.AddRef();
    m_snmp.Serve(kSerialNumber, _variant_t(L"SN1"));
    m_snmp.Serve(L"1.3.1", _variant_t(L"420"));
    m_snmp.Serve(L"1.3.2", _variant_t(7L, VT_I4));
    m_snmp.Serve(L"1.3.3", _variant_t(L"Office"));
    m_snmp.Serve(L"1.3.4", _variant_t(L"now"));
  }

  // One run: a collection is made, asked for all of it, and goes. What the device was asked for.
  std::vector<std::wstring> Run(RefPtr<ICacheProvider> cache, const wchar_t* modelLifespan) {
    const auto device = RefPtr<FakeDevice>::Share(new FakeDevice);
    device->snmp = &m_snmp;
    m_snmp.calls.clear();
    DataCollection* made = nullptr;
    EXPECT_HR(CreateDataCollectionFromXML(device.Get(), OidSpec(modelLifespan).c_str(), &made,
                                          cache.Get()),
              S_OK);
    const auto collection = RefPtr<DataCollection>::Adopt(made);
    for (const wchar_t* const name : {L"Model", L"Pages", L"Family", L"Now"}) {
      _variant_t value;
      EXPECT_HR(collection->GetValue(name, &value), S_OK) << name;
      EXPECT_EQ(name == std::wstring_view(L"Pages") ? VT_I4 : VT_BSTR, value.vt);
    }
    std::vector<std::wstring> calls = m_snmp.calls;
    std::erase_if(calls, [](const std::wstring& call) {
      return call == std::wstring(L"Get ") + FakeSnmp::kProbe;
    });
    return calls;
  }
  RefPtr<ICacheProvider> Registry(const wchar_t* path) {
    return RefPtr<ICacheProvider>::Adopt(CreateRegCacheProvider(path));
  }

  const TestStore m_store;
  const RegistryKey m_registry;
  FakeSnmp m_snmp;
};

using Calls = std::vector<std::wstring>;

TEST_F(CachedCollectionTest, SecondRunAnswersFromTheRegistry) {
  const std::wstring identity = std::wstring(L"Get ") + kSerialNumber;
  const wchar_t* const path = m_registry.Path().c_str();
  EXPECT_EQ((Calls{identity, L"Get 1.3.1", L"Get 1.3.2", L"Get 1.3.3", L"Get 1.3.4"}),
            Run(Registry(path), L"600"));
  EXPECT_EQ((Calls{identity, L"Get 1.3.4"}), Run(Registry(path), L"600"));

  // Longer ago than the lifespan that the specification gives by then.
  const auto stored = m_registry.Values(L"SN1\\OID");
  ASSERT_EQ(6u, stored.size());
  ASSERT_EQ(ERROR_SUCCESS, m_registry.Set(L"SN1\\OID", L"Model.Expires", RegistryKey::Text(L"1")));
  EXPECT_EQ((Calls{identity, L"Get 1.3.1", L"Get 1.3.4"}), Run(Registry(path), L"600"));
  EXPECT_NE(RegistryKey::Text(L"1"), m_registry.Values(L"SN1\\OID")[L"Model.Expires"]);

  m_snmp.Serve(kSerialNumber, _variant_t(L"SN2"));
  EXPECT_EQ(5u, Run(Registry(path), L"600").size()) << "another device's values are its own";
  EXPECT_EQ(5u, Run(Registry(L""), L"600").size() + 1) << "nobody asks who it is, nothing is kept";
}

TEST_F(CachedCollectionTest, SecondRunAnswersTextFromThePrinter) {
  const TestPrinter printer;
  if (!printer.Handle()) GTEST_SKIP() << printer.Problem();
  const auto cache = [&printer] {
    return RefPtr<ICacheProvider>::Adopt(CreatePrintDataCacheProvider(printer.Handle()));
  };
  EXPECT_EQ((Calls{L"Get 1.3.1", L"Get 1.3.2", L"Get 1.3.3", L"Get 1.3.4"}), Run(cache(), L"600"));
  EXPECT_EQ((Calls{L"Get 1.3.2", L"Get 1.3.4"}), Run(cache(), L"600")) << "but integers anew";
}

TEST_F(CachedCollectionTest, KeepsADevicesValuesUnderItsIdentity) {
  static const struct {
    const char* name;
    const wchar_t* protocol;
    std::uint32_t port;
    const wchar_t* path;
    const char* body;
    const wchar_t* key;
  } kDevices[] = {
      {"plain", L"PLSXML", 80, L"/zq/device/product_information.xml",
       "<p><ProductSerialNumber>QM1</ProductSerialNumber></p>", L"QM1\\PLSXML"},
      {"UUID", L"PLSXML", 80, L"/zq/device/product_information.xml",
       "<p><ProductSerialNumber>urn:uuid:12-uuid:34</ProductSerialNumber></p>",
       L"12-uuid:34\\PLSXML"},
      {"SOAP", L"WS", 7627, L"/device",
       "<e "
       "xmlns:dd='d'><dd:MakeAndModel>m</dd:MakeAndModel><dd:SerialNumber>QM2</dd:SerialNumber></"
       "e>",
       L"QM2\\WS"},
  };
  for (const auto& d : kDevices) {
    SCOPED_TRACE(d.name);
    const auto device = RefPtr<FakeDevice>::Share(new FakeDevice);
    device->Serve(d.port, d.path, d.body);
    const std::wstring spec = std::wstring(L"<DataMaps><XMLDataMap Protocol='") + d.protocol +
                              L"'><StaticDataItem Name='S'>1</StaticDataItem>"
                              L"</XMLDataMap></DataMaps>";
    const auto cache = Registry(m_registry.Path().c_str());
    DataCollection* made = nullptr;
    ASSERT_HR(CreateDataCollectionFromXML(device.Get(), spec.c_str(), &made, cache.Get()), S_OK);
    made->Release();
    EXPECT_EQ(1u, m_registry.Values(d.key).count(L"S"));
  }
}

TEST_F(CachedCollectionTest, AnIntegerIsAnIdentityAndNoAnswerIsNone) {
  m_snmp.Serve(kSerialNumber, _variant_t(4711L, VT_I4));
  Run(Registry(m_registry.Path().c_str()), L"600");
  EXPECT_EQ(6u, m_registry.Values(L"4711\\OID").size());
  m_snmp.values.erase(ParseOid(kSerialNumber).value());
  Run(Registry(m_registry.Path().c_str()), L"600");
  EXPECT_EQ(6u, m_registry.Values(L"").size()) << "the path itself is the key then";
}

}  // namespace
}  // namespace Corvane::Test
