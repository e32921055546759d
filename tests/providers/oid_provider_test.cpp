#include "corvane/oid_provider.h"

#include "corvane/handles.h"
#include "tests/support/dom.h"
#include "tests/support/fake_device.h"
#include "tests/support/fake_snmp.h"
#include "tests/support/hr.h"

namespace Corvane::Test {
namespace {

class OidProviderTest : public testing::Test {
 protected:
  OidProviderTest() {
    m_snmp.AddRef();
    m_device->snmp = &m_snmp;
  }
  RefPtr<OIDProvider> Make() {
    return RefPtr<OIDProvider>::Adopt(CreateOIDProvider(m_device.Get()));
  }

  FakeSnmp m_snmp;
  RefPtr<FakeDevice> m_device = RefPtr<FakeDevice>::Share(new FakeDevice);
};

TEST_F(OidProviderTest, ExistsForADeviceThatDescribesItself) {
  static const struct {
    const char* name;
    _variant_t probe;
    bool qualifies;
  } kCases[] = {
      {"text", _variant_t(L"x"), true},
      {"empty text", _variant_t(L""), false},
      {"integer", _variant_t(7L, VT_I4), true},
      {"nothing", _variant_t(), false},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    m_snmp.Serve(FakeSnmp::kProbe, c.probe);
    {
      const auto provider = Make();
      EXPECT_EQ(c.qualifies, static_cast<bool>(provider));
      EXPECT_EQ(c.qualifies ? 2u : 1u, m_snmp.References());
    }
    EXPECT_EQ(1u, m_snmp.References());
  }
}

TEST_F(OidProviderTest, DoesNotExistOtherwise) {
  m_snmp.values.clear();
  EXPECT_FALSE(Make()) << "no such object";
  _variant_t unknown;
  unknown.vt = VT_UNKNOWN;
  unknown.punkVal = nullptr;
  m_snmp.Serve(FakeSnmp::kProbe, unknown);
  EXPECT_THROW(Make(), _com_error) << "a value that cannot become text";
  EXPECT_EQ(1u, m_snmp.References());

  m_device->snmp = nullptr;
  EXPECT_FALSE(Make()) << "no session";
  m_device->snmp = &m_snmp;
  m_device->snmpResult = S_FALSE;
  m_snmp.calls.clear();
  EXPECT_FALSE(Make()) << "a session that comes with a result other than 0";
  EXPECT_TRUE(m_snmp.calls.empty());
  SetLastError(0);
  EXPECT_EQ(nullptr, CreateOIDProvider(nullptr));
  EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_PARAMETER), GetLastError());
}

TEST_F(OidProviderTest, ReadsAndSetsTriggers) {
  m_snmp.Serve(L"1.3.1", _variant_t(L"v"));
  const auto provider = Make();
  using Calls = std::vector<std::wstring>;
  static const struct {
    const char* name;
    const wchar_t* oid;
    HRESULT setResult;
    HRESULT result;
    Calls calls;
  } kCases[] = {
      {"plain", L"1.3.1", S_OK, S_OK, {L"Get 1.3.1"}},
      {"nothing behind the semicolon", L"1.3.1;", S_OK, S_OK, {L"Get 1.3.1"}},
      {"trigger", L"1.3.1;1.3.2", S_OK, S_OK, {L"Get 1.3.1", L"Set 1.3.2"}},
      {"failed set", L"1.3.1;1.3.2", E_FAIL, E_FAIL, {L"Get 1.3.1", L"Set 1.3.2"}},
      {"two semicolons", L"1.3.1;1.3.2;3", S_OK, S_OK, {L"Get 1.3.1", L"Set 1.3.2;3"}},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    m_snmp.calls.clear();
    m_snmp.setResult = c.setResult;
    _variant_t value;
    EXPECT_HR(provider->GetValue(c.oid, &value), c.result);
    EXPECT_EQ(c.calls, m_snmp.calls);
    EXPECT_EQ(L"v", TextOf(value));
  }
  _variant_t value;
  EXPECT_HR(provider->GetValue(L"1.9;1.3.2", &value), S_OK) << "whatever the read gave";
  EXPECT_EQ(VT_INT, m_snmp.lastSet.vt);
  EXPECT_EQ(1, m_snmp.lastSet.intVal);
}

TEST_F(OidProviderTest, RefusesMissingArgumentsBeforeTheSession) {
  const auto provider = Make();
  m_snmp.calls.clear();
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
  EXPECT_TRUE(m_snmp.calls.empty());
}

}  // namespace
}  // namespace Corvane::Test
