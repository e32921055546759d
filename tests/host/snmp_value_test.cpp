// What an agent's values and errors are told as, and what a set sends.
#include "host/snmp/snmp_value.h"

#include <gtest/gtest.h>

#include <string>

#include "host/snmp/snmp_errors.h"
#include "host/snmp/snmp_session.h"
#include "tests/host/mib_session.h"
#include "tests/support/cases.h"
#include "tests/support/peers/scripted_agent.h"

namespace Corvane::Test {
namespace {

// Of a response that has this one value, by net-snmp.
std::string ShownFromWire(int tag, const std::string& content) {
  const std::string zero = Ber(0x02, std::string(1, '\0'));
  std::string wire =
      Ber(0xA2, zero + zero + zero + Ber(0x30, Ber(0x30, Ber(0x06, "\x2B") + Ber(tag, content))));
  netsnmp_pdu* const pdu = snmp_pdu_create(SNMP_MSG_RESPONSE);
  std::size_t size = wire.size();
  EXPECT_EQ(snmp_pdu_parse(pdu, reinterpret_cast<u_char*>(wire.data()), &size), 0);
  const Host::SnmpDatum datum = Host::DatumOf(*pdu->variables);
  snmp_free_pdu(pdu);
  if (datum.result != S_OK) return HrText(datum.result);
  _variant_t value(L"before");
  EXPECT_HR(Host::StoreDatum(datum, &value), S_OK);
  return Shown(value);
}

TEST(SnmpValue, ComesFromEveryTypeOfTheWire) {
  for (const Case& c : ReadCases("host/snmp_values.txt")) {
    SCOPED_TRACE(c.Where());
    const auto tag = static_cast<int>(c.Number("tag"));
    EXPECT_EQ(ShownFromWire(tag, c.Text("content")), c.Text("shown"));
  }
  for (int octet = 0; octet < 256; ++octet) {
    const std::string text = {'x', static_cast<char>(octet), 'y', 'z'};
    EXPECT_TRUE(ShownFromWire(0x04, text).starts_with("s:")) << octet;
  }
}

TEST(SnmpSetting, IsWhatAVariantHolds) {
  Host::SnmpSetting setting;
  for (const Case& c : ReadCases("host/snmp_settings.txt")) {
    VARIANT value{};
    value.vt = static_cast<VARTYPE>(c.Number("type"));
    value.llVal = -2;
    EXPECT_HR(Host::SettingFrom(value, &setting), S_OK);
    EXPECT_EQ(setting.type, c.Number("tag")) << c.Where();
    EXPECT_EQ(setting.number, c.Number("number")) << c.Where();
  }
  EXPECT_HR(Host::SettingFrom(_variant_t(L"caf\u00E9"), &setting), S_OK);
  EXPECT_EQ(setting.type, ASN_OCTET_STR);
  EXPECT_EQ(setting.octets, "caf\xC3\xA9");
  _variant_t octets;
  octets.vt = VT_ARRAY | VT_UI1;
  octets.parray = SafeArrayCreateVector(VT_UI1, 0, 3);
  void* content = nullptr;
  ASSERT_HR(SafeArrayAccessData(octets.parray, &content), S_OK);
  std::string("a\0b", 3).copy(static_cast<char*>(content), 3);
  SafeArrayUnaccessData(octets.parray);
  EXPECT_HR(Host::SettingFrom(octets, &setting), S_OK);
  EXPECT_EQ(setting.octets, std::string("a\0b", 3));
  EXPECT_HR(Host::SettingFrom(_variant_t(1.5), &setting), DISP_E_TYPEMISMATCH);
}

TEST(SnmpError, HasACodeAndAReason) {
  for (const Case& c : ReadCases("host/snmp_errors.txt")) {
    SCOPED_TRACE(c.Where());
    const HRESULT result = Host::ResultFromNetSnmp(static_cast<int>(c.Number("number")),
                                                   static_cast<int>(c.Number("errno")));
    EXPECT_HR(result, static_cast<HRESULT>(c.Number("result")));
    EXPECT_EQ(Host::SnmpReason(result), c.Wide("reason"));
  }
  for (const long status : {1L, 18L}) {
    EXPECT_HR(Host::ResultFromErrorStatus(status),
              SnmpStatusResult(static_cast<std::uint32_t>(status)));
  }
  for (const long status : {19L, -1L}) {
    EXPECT_HR(Host::ResultFromErrorStatus(status), SnmpStatusResult(5));
  }
}

}  // namespace
}  // namespace Corvane::Test
