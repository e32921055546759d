#include "collection/oid_data_mapper.h"

#include "tests/support/device_test.h"

namespace Corvane::Test {
namespace {

class OidDataMapperTest : public DeviceTest {
 protected:
  OidDataMapperTest() {
    m_device->snmp = &m_snmp;
    for (const Case& c : ReadCases("collection/oid_device.txt")) {
      m_snmp.Serve(c.Wide("oid"), c.Wide("value"));
    }
    Make(ToWide(ReadData("collection/oid_map.xml")).c_str());
    TakeCalls();
  }
};

TEST_F(OidDataMapperTest, AsksTheDeviceForWhatItDoesNotKnow) {
  AskAll("collection/oid_values.txt");
  EXPECT_EQ(L"[E_FAIL]", Get(nullptr));
  EXPECT_HR(m_collection->GetValue(L"State", nullptr), E_FAIL);
}

TEST_F(OidDataMapperTest, ReadsAnItemAloneWhenItsGroupFails) {
  m_snmp.groupResult = E_FAIL;
  EXPECT_EQ(L"i:64", Get(L"toner:Black"));
  EXPECT_EQ(L"GetMany 1.3.4.1 1.3.4.2 1.3.4.99, Get 1.3.4.1", TakeCalls());
  EXPECT_EQ(L"i:64", Get(L"toner:Black"));
  EXPECT_EQ(L"", TakeCalls());
  EXPECT_EQ(L"[0x80041002]", Get(L"Gone")) << "the session's code";
}

TEST_F(OidDataMapperTest, ForgetsTheStepsThatAShorterWalkLacks) {
  EXPECT_EQ(L"tray three", Get(L"Trays.003"));
  m_snmp.values.erase({1, 3, 5, 10});
  EXPECT_EQ(L"tray three", Get(L"Trays.003")) << "it never goes stale";
  EXPECT_EQ(L"[S_FALSE]", Get(L"Trays.004")) << "so the device is asked";
  EXPECT_EQ(L"[S_FALSE]", Get(L"Trays.003"));
  EXPECT_EQ(L"tray one", Get(L"Trays.001"));
}

TEST_F(OidDataMapperTest, OutlivesAnAgentThatWalksWrongly) {
  for (const Case& c : ReadCases("collection/wrong_walks.txt")) {
    SCOPED_TRACE(c.Where());
    m_collection->ClearValues(L"w");
    m_snmp.next = {{c.Wide("after"), c.Wide("comes")}, {L".1.3.5.2.7", L"1.3.5.10"}};
    EXPECT_EQ(c.Wide("answer"), Get(L"w:Trays.002"));
    EXPECT_EQ(c.Number("exchanges"), std::ssize(std::exchange(m_snmp.calls, {})));
  }
}

TEST_F(OidDataMapperTest, EndsAWalkThatNeverEnds) {
  m_snmp.values.clear();
  for (std::uint32_t i = 1; i < 5000; ++i) m_snmp.values[{1, 3, 5, i}] = L"x";
  EXPECT_EQ(L"x", Get(L"Trays.999"));
  EXPECT_EQ(999u, m_snmp.calls.size());
}

TEST_F(OidDataMapperTest, TellsHowAWalkFailed) {
  m_snmp.values.clear();
  EXPECT_EQ(L"[0x80041003]", Get(L"Trays"));
  m_snmp.Serve(L"1.3.5.1", L"x");
  EXPECT_EQ(L"[0x80041003]", Get(L"Trays.002"));
  EXPECT_EQ(L"x", Get(L"Trays.001"));
}

}  // namespace
}  // namespace Corvane::Test
