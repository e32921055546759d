// Data collections over a real agent: OID maps as a client reads them.
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "corvane/corvane.h"
#include "host/network_address.h"
#include "tests/support/hr.h"
#include "tests/support/peers/snmpd.h"
#include "tests/support/peers/udp_relay.h"

namespace Corvane::Test {
namespace {

constexpr char kProbe[] = "override 1.3.6.1.2.1.25.3.2.1.3.1 octet_str \"Quillmere 420dn\"\n";

class SnmpCollectionTest : public testing::Test {
 protected:
  ~SnmpCollectionTest() override { Close(); }

  void Close() {
    if (m_collection) m_collection->Release();
    if (m_address) m_address->Release();
    m_collection = nullptr;
    m_address = nullptr;
  }

  // A collection over the agent at `port`: the result of its making.
  HRESULT Open(std::uint16_t port, Host::SnmpOptions snmp, const std::wstring& items) {
    Close();
    Host::NetworkOptions options;
    options.host = L"127.0.0.1";
    options.portMap[kSnmpPort] = port;
    options.snmp = std::move(snmp);
    m_address = Host::CreateNetworkAddress(options);
    const std::wstring spec = L"<DataMaps><OIDDataMap>" + items + L"</OIDDataMap></DataMaps>";
    return CreateDataCollectionFromXML(m_address, spec.c_str(), &m_collection, nullptr);
  }
  std::wstring Get(const std::wstring& name) {
    _variant_t value;
    const HRESULT result = m_collection->GetValue(name.c_str(), &value);
    return result == S_OK ? std::wstring(static_cast<_bstr_t>(value)) : L"<failed>";
  }

  Snmpd m_agent;
  Address* m_address = nullptr;
  DataCollection* m_collection = nullptr;
};

Host::SnmpOptions Community(const wchar_t* community) {
  Host::SnmpOptions snmp;
  snmp.community = community;
  return snmp;
}

TEST_F(SnmpCollectionTest, ReadsValuesGroupsWalksAndTriggers) {
  std::string configuration = std::string("rwcommunity public\n") + kProbe +
                              "override -rw 1.3.6.1.4.1.99999.9.0 integer 0\n"
                              "override 1.3.6.1.4.1.99999.3.0 integer 1\n";
  std::wstring items =
      L"<DataItem Name='Model' OID='1.3.6.1.2.1.25.3.2.1.3.1'/>"
      L"<DataItem Name='Ack' OID='1.3.6.1.2.1.25.3.2.1.3.1;1.3.6.1.4.1.99999.9.0' "
      L"Transient='true'/><DataItem Name='Acked' OID='1.3.6.1.4.1.99999.9.0'/>"
      L"<NextDataItem Name='Two' OID='1.3.6.1.4.1.99999.2' Count='2'/>"
      L"<NextDataItem Name='All' OID='1.3.6.1.4.1.99999.2' UntilEnd='true'/>";
  for (int i = 1; i <= 20; ++i) {
    const std::string n = std::to_string(i);
    configuration += "override 1.3.6.1.4.1.99999.1." + n + ".0 integer " + n + "\n";
    configuration += "override 1.3.6.1.4.1.99999.2." + n + " octet_str row" + n + "\n";
    const std::wstring w = std::to_wstring(i);
    items += L"<DataItem Name='G" + w + L"' GroupID='g' OID='1.3.6.1.4.1.99999.1." + w + L".0'/>";
  }
  ASSERT_TRUE(m_agent.Start(configuration)) << m_agent.Failure();
  UdpRelay relay(m_agent.Port(), {}, {});
  ASSERT_HR(Open(relay.Port(), Community(L"public"), items), S_OK);
  int seen = relay.Requests();
  const auto requests = [&] { return relay.Requests() - std::exchange(seen, relay.Requests()); };

  EXPECT_EQ(L"Quillmere 420dn", Get(L"Model"));
  EXPECT_EQ(1, requests());
  for (int i = 1; i <= 20; ++i) EXPECT_EQ(std::to_wstring(i), Get(L"G" + std::to_wstring(i)));
  EXPECT_EQ(1, requests()) << "a group of 20 is one request";

  EXPECT_EQ(L"row2", Get(L"Two.002"));
  EXPECT_EQ(L"<failed>", Get(L"Two.003"));
  EXPECT_EQ(2, requests());
  EXPECT_EQ(L"row20", Get(L"All.020"));
  EXPECT_EQ(L"row1", Get(L"All.001"));
  EXPECT_EQ(21, requests()) << "and one that leaves the subtree";

  EXPECT_EQ(L"Quillmere 420dn", Get(L"Ack"));
  EXPECT_EQ(2, requests());
  EXPECT_EQ(L"1", Get(L"Acked"));
}

TEST_F(SnmpCollectionTest, FitsWhoeverMayAsk) {
  ASSERT_TRUE(m_agent.Start(std::string("rocommunity public\n"
                                        "createUser reader SHA authphrase AES privphrase\n"
                                        "rouser reader priv\n") +
                            kProbe))
      << m_agent.Failure();
  Host::SnmpOptions reader;
  reader.version = Host::SnmpVersion::kV3;
  reader.user = L"reader";
  reader.authPassphrase = L"authphrase";
  reader.privacyPassphrase = L"privphrase";
  Host::SnmpOptions stranger = Community(L"canary");
  stranger.timeoutMs = 200;
  stranger.retries = 1;
  constexpr wchar_t kModel[] = L"<DataItem Name='Model' OID='1.3.6.1.2.1.25.3.2.1.3.1'/>";
  EXPECT_HR(Open(m_agent.Port(), reader, kModel), S_OK);
  EXPECT_EQ(L"Quillmere 420dn", Get(L"Model"));
  EXPECT_HR(Open(m_agent.Port(), stranger, kModel), E_FAIL);
  EXPECT_NE(nullptr, std::wcsstr(m_address->GetLastFailure(), L"127.0.0.1"));
  EXPECT_EQ(nullptr, std::wcsstr(m_address->GetLastFailure(), L"canary"));
  reader.authPassphrase = L"anotherphrase";
  EXPECT_HR(Open(m_agent.Port(), reader, kModel), E_FAIL);
}

TEST_F(SnmpCollectionTest, WaitsNoLongerThanToldForASilentAgent) {
  UdpRelay silent([](const std::string&) { return std::vector<Datagram>{}; });
  Host::SnmpOptions snmp = Community(L"public");
  snmp.timeoutMs = 100;
  snmp.retries = 2;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_HR(Open(silent.Port(), snmp, L"<DataItem Name='Model' OID='1.3'/>"), E_FAIL);
  EXPECT_EQ(3, silent.Requests());
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

}  // namespace
}  // namespace Corvane::Test
