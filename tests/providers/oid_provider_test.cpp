#include "corvane/oid_provider.h"

#include "tests/support/device_test.h"

namespace Corvane::Test {
namespace {

class OidProviderTest : public DeviceTest {
 protected:
  OidProviderTest() { m_device->snmp = &m_snmp; }
  RefPtr<OIDProvider> Open() {
    return RefPtr<OIDProvider>::Adopt(CreateOIDProvider(m_device.Get()));
  }
};

TEST_F(OidProviderTest, ExistsForADeviceThatDescribesItself) {
  for (const wchar_t* const probe : {L"x", L"i:7", L"", L"<vt 0>"}) {
    SCOPED_TRACE(probe);
    const bool qualifies = *probe != L'\0' && *probe != L'<';
    m_snmp.Serve(FakeSnmp::kProbe, probe);
    {
      const auto provider = Open();
      EXPECT_EQ(qualifies, static_cast<bool>(provider));
      EXPECT_EQ(qualifies ? 2u : 1u, m_snmp.References());
    }
    EXPECT_EQ(1u, m_snmp.References());
  }
  m_snmp.Serve(FakeSnmp::kProbe, L"<vt 13>");
  EXPECT_THROW(Open(), _com_error) << "a value that cannot become text";
  EXPECT_EQ(1u, m_snmp.References());
  m_snmp.values.clear();
  EXPECT_FALSE(Open()) << "no such object";
  m_device->snmp = nullptr;
  EXPECT_FALSE(Open()) << "no session";
  m_device->snmp = &m_snmp;
  m_device->snmpResult = S_FALSE;
  TakeCalls();
  EXPECT_FALSE(Open()) << "a session that comes with a result other than 0";
  EXPECT_EQ(L"", TakeCalls());
  SetLastError(0);
  EXPECT_EQ(nullptr, CreateOIDProvider(nullptr));
  EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_PARAMETER), GetLastError());
}

TEST_F(OidProviderTest, ReadsAndSetsTriggers) {
  m_snmp.Serve(L"1.3.1", L"v");
  const auto provider = Open();
  TakeCalls();
  for (const Case& c : ReadCases("providers/triggers.txt")) {
    SCOPED_TRACE(c.Where());
    m_snmp.setResult = c.Find("set fails") ? E_FAIL : S_OK;
    _variant_t value;
    EXPECT_EQ(c.Text("result"), HrText(provider->GetValue(c.Wide("oid").c_str(), &value)));
    EXPECT_EQ(c.Wide("value"), TextOf(value));
    EXPECT_EQ(c.Wide("calls"), TakeCalls());
  }
  EXPECT_EQ(VT_INT, m_snmp.lastSet.vt);
  EXPECT_EQ(1, m_snmp.lastSet.intVal);
}

TEST_F(OidProviderTest, RefusesMissingArgumentsBeforeTheSession) {
  const auto provider = Open();
  TakeCalls();
  _variant_t value;
  wchar_t next[8];
  const wchar_t* oids[] = {L"1.3"};
  EXPECT_HR(provider->GetValue(nullptr, &value), E_FAIL);
  EXPECT_HR(provider->GetValue(L"1.3", nullptr), E_FAIL);
  EXPECT_HR(provider->GetNextOidAndValue(nullptr, next, 8, &value), E_FAIL);
  EXPECT_HR(provider->GetNextOidAndValue(L"1.3", nullptr, 8, &value), E_FAIL);
  EXPECT_HR(provider->GetNextOidAndValue(L"1.3", next, 0, &value), E_FAIL);
  EXPECT_HR(provider->GetNextOidAndValue(L"1.3", next, 8, nullptr), E_FAIL);
  EXPECT_HR(provider->GetMultipleValues(nullptr, &value, 1), E_FAIL);
  EXPECT_HR(provider->GetMultipleValues(oids, nullptr, 1), E_FAIL);
  EXPECT_HR(provider->GetMultipleValues(oids, &value, 0), E_FAIL);
  EXPECT_EQ(L"", TakeCalls());
}

}  // namespace
}  // namespace Corvane::Test
