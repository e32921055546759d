#include "collection/oid_data_mapper.h"

#include "corvane/corvane.h"
#include "tests/support/dom.h"
#include "tests/support/fake_device.h"
#include "tests/support/fake_snmp.h"
#include "tests/support/hr.h"
#include "tests/support/trace_recorder.h"

namespace Corvane::Test {
namespace {

constexpr wchar_t kSpec[] =
    L"<DataMaps><OIDDataMap>"
    L"<StaticDataItem Name='Family'>Office</StaticDataItem>"
    L"<DataItem Name='State' OID='1.3.1' LifeSpan='600'><Conversion Contains='3' "
    L"Value='Idle'/></DataItem>"
    L"<DataItem Name='Live' OID='1.3.2' Transient='true' GroupID='g'/>"
    L"<DataItem Name='Ack' OID='1.3.2;1.3.9' GroupID='g'/>"
    L"<DataItem Name='No.dots' OID='1.3.3'/>"
    L"<DataItem Name='Nowhere'/>"
    L"<DataItem Name='Mute' OID='1.3.77;1.3.9'/>"
    L"<NextDataItem Name='Walk.dots' OID='1.3.5' Count='1'/>"
    L"<DataItem Name='Black' Prefix='toner' OID='1.3.4.1' GroupID='g'/>"
    L"<DataItem Name='Cyan' Prefix='toner' OID='1.3.4.2' GroupID='g'>"
    L"<Conversion Contains='default' Value='?'/></DataItem>"
    L"<DataItem Name='Gone' OID='1.3.4.99' GroupID='g'/>"
    L"<DataItem Name='Alone' OID='1.3.4.3' GroupID='h'/>"
    L"<NextDataItem Name='Trays' OID='1.3.5' UntilEnd='true'/>"
    L"<NextDataItem Name='Two' OID='1.3.5' Count='2'/>"
    L"<NextDataItem Name='None' OID='1.3.5'/>"
    L"<NextDataItem Name='Now' OID='1.3.5' UntilEnd='true' Transient='true'/>"
    L"<NextDataItem Name='Bad' OID='1.3.x' UntilEnd='true'/>"
    L"</OIDDataMap></DataMaps>";

using Calls = std::vector<std::wstring>;

class OidDataMapperTest : public ParsingTest {
 protected:
  OidDataMapperTest() {
    m_snmp.AddRef();
    m_device->snmp = &m_snmp;
    m_snmp.Serve(L"1.3.1", _variant_t(3L, VT_I4));
    m_snmp.Serve(L"1.3.2", _variant_t(L"now"));
    m_snmp.Serve(L"1.3.3", _variant_t(L"dotted"));
    m_snmp.Serve(L"1.3.4.1", _variant_t(64L, VT_I4));
    m_snmp.Serve(L"1.3.4.2", _variant_t(L"low"));
    m_snmp.Serve(L"1.3.4.3", _variant_t(L"alone"));
    for (const wchar_t* const tray : {L"1.3.5.1", L"1.3.5.2.7", L"1.3.5.10"}) {
      m_snmp.Serve(tray, _variant_t(tray));
    }
    m_snmp.Serve(L"1.3.6", _variant_t(L"beyond"));
    DataCollection* made = nullptr;
    EXPECT_HR(CreateDataCollectionFromXML(m_device.Get(), kSpec, &made, nullptr), S_OK);
    m_collection = RefPtr<DataCollection>::Adopt(made);
    m_snmp.calls.clear();
  }

  // The value as text, or the result in brackets.
  std::wstring Get(const wchar_t* name) {
    _variant_t value(L"untouched");
    const HRESULT result = m_collection->GetValue(name, &value);
    if (result == S_OK) return std::wstring(static_cast<_bstr_t>(value));
    EXPECT_EQ(L"untouched", TextOf(value)) << "the output of a failure is left alone";
    wchar_t code[16];
    std::swprintf(code, 16, L"[%x]", static_cast<unsigned>(result));
    return code;
  }
  Calls TakeCalls() { return std::exchange(m_snmp.calls, {}); }

  FakeSnmp m_snmp;
  RefPtr<FakeDevice> m_device = RefPtr<FakeDevice>::Share(new FakeDevice);
  RefPtr<DataCollection> m_collection;
};

// In order: each sees what the ones before have stored.
TEST_F(OidDataMapperTest, AsksTheDeviceForWhatItDoesNotKnow) {
  static const struct {
    const wchar_t* name;
    const wchar_t* answer;
    Calls calls;
  } kQueries[] = {
      {L"Family", L"Office", {}},
      {L"State", L"Idle", {L"Get 1.3.1"}},
      {L"State", L"Idle", {}},
      {L"p:State", L"Idle", {L"Get 1.3.1"}},
      {L"p:State", L"Idle", {}},
      {L"Live", L"now", {L"Get 1.3.2"}},
      {L"Live", L"now", {L"Get 1.3.2"}},
      {L"Ack", L"now", {L"Get 1.3.2", L"Set 1.3.9"}},
      {L"Ack", L"now", {}},
      {L"No.dots", L"dotted", {L"Get 1.3.3"}},
      {L"Alone", L"alone", {L"Get 1.3.4.3"}},
      {L"toner:Cyan", L"?", {L"GetMany 1.3.4.1 1.3.4.2 1.3.4.99"}},
      {L"toner:Black", L"64", {}},
      {L"Black", L"64", {}},
      {L"Gone", L"[1]", {L"GetMany 1.3.4.1 1.3.4.2 1.3.4.99"}},
      {L"Nowhere", L"[80004005]", {}},
      {L"Unknown", L"[80004005]", {}},
      {L"State.001", L"[80004005]", {}},
      {L"Mute", L"[1]", {L"Get 1.3.77", L"Set 1.3.9"}},
      {L"Mute", L"[1]", {L"Get 1.3.77", L"Set 1.3.9"}},
      {L"state", L"[80004005]", {}},
      {L"", L"[80004005]", {}},
      {nullptr, L"[80004005]", {}},
  };
  for (const auto& query : kQueries) {
    EXPECT_EQ(query.answer, Get(query.name)) << (query.name ? query.name : L"null");
    EXPECT_EQ(query.calls, TakeCalls()) << (query.name ? query.name : L"null");
  }
  EXPECT_HR(m_collection->GetValue(L"State", nullptr), E_FAIL);
}

TEST_F(OidDataMapperTest, ReadsAnItemAloneWhenItsGroupFails) {
  m_snmp.groupResult = E_FAIL;
  EXPECT_EQ(L"64", Get(L"toner:Black"));
  EXPECT_EQ((Calls{L"GetMany 1.3.4.1 1.3.4.2 1.3.4.99", L"Get 1.3.4.1"}), TakeCalls());
  EXPECT_EQ(L"64", Get(L"toner:Black"));
  EXPECT_EQ(L"[80041002]", Get(L"Gone")) << "the session's code";
}

TEST_F(OidDataMapperTest, WalksBelowTheBase) {
  EXPECT_EQ(L"1.3.5.2.7", Get(L"in:Trays.002"));
  EXPECT_EQ(
      (Calls{L"GetNext 1.3.5", L"GetNext 1.3.5.1", L"GetNext 1.3.5.2.7", L"GetNext 1.3.5.10"}),
      TakeCalls());
  EXPECT_EQ(L"1.3.5.10", Get(L"in:Trays.003"));
  EXPECT_EQ(L"1.3.5.1", Get(L"in:Trays")) << "without a step, the first";
  EXPECT_EQ(Calls{}, TakeCalls());
  EXPECT_EQ(L"[1]", Get(L"in:Trays.004"));

  EXPECT_EQ(L"1.3.5.1", Get(L"Two"));
  EXPECT_EQ(2u, TakeCalls().size() - 4) << "beside the four of the walk before";
  for (const wchar_t* const name :
       {L"Two.003", L"None", L"Bad", L"Two.000", L"Two.2", L"Two.00x"}) {
    EXPECT_EQ(L'[', Get(name)[0]) << name;
  }
  EXPECT_EQ(Calls{}, TakeCalls());

  EXPECT_EQ(L"1.3.5.1", Get(L"Walk.dots.001"));
  EXPECT_EQ(1u, TakeCalls().size());

  EXPECT_EQ(L"1.3.5.2.7", Get(L"Now.002"));
  EXPECT_EQ(2u, TakeCalls().size()) << "a transient walk ends at the step";
  EXPECT_EQ(L"1.3.5.1", Get(L"Now"));
  EXPECT_EQ(1u, TakeCalls().size()) << "and leaves nothing behind";
}

TEST_F(OidDataMapperTest, ForgetsTheStepsThatAShorterWalkLacks) {
  EXPECT_EQ(L"1.3.5.10", Get(L"Trays.003"));
  m_snmp.values.erase(ParseOid(L"1.3.5.10").value());
  EXPECT_EQ(L"1.3.5.10", Get(L"Trays.003")) << "it never goes stale";
  EXPECT_EQ(L"[1]", Get(L"Trays.004")) << "so the device is asked";
  EXPECT_EQ(L"[1]", Get(L"Trays.003"));
  EXPECT_EQ(L"1.3.5.1", Get(L"Trays.001"));
}

TEST_F(OidDataMapperTest, OutlivesAnAgentThatWalksWrongly) {
  static const struct {
    const char* name;
    const wchar_t* after;  // this OID comes
    const wchar_t* comes;  // that one
    const wchar_t* second;
    std::size_t exchanges;
  } kAgents[] = {
      {"repeats itself", L"1.3.5.1", L"1.3.5.1", L"[1]", 2},
      {"goes backwards", L"1.3.5.2.7", L"1.3.5.1", L"1.3.5.2.7", 3},
      {"stays at the base", L"1.3.5", L"1.3.5", L"[1]", 1},
      {"leaves the subtree", L"1.3.5.1", L"1.4", L"[1]", 2},
      {"answers a sibling that begins alike", L"1.3.5.1", L"1.3.50.1", L"[1]", 2},
      {"answers text", L"1.3.5.1", L"iso.org", L"[1]", 2},
      {"answers nothing", L"1.3.5.1", L"", L"[1]", 2},
      {"answers an arc beyond 32 bits", L"1.3.5.1", L"1.3.5.4294967296", L"[1]", 2},
      {"writes a dot first", L"1.3.5.1", L".1.3.5.2.7", L"scripted", 4},
  };
  for (const auto& agent : kAgents) {
    SCOPED_TRACE(agent.name);
    m_collection->ClearValues(L"w");
    m_snmp.next = {{agent.after, agent.comes}};
    if (agent.comes[0] == L'.') m_snmp.next[agent.comes] = L"1.3.5.10";
    TakeCalls();
    EXPECT_EQ(agent.second, Get(L"w:Trays.002"));
    EXPECT_EQ(agent.exchanges, TakeCalls().size());
  }
}

TEST_F(OidDataMapperTest, EndsAWalkThatNeverEnds) {
  m_snmp.values.clear();
  for (std::uint32_t i = 1; i < 5000; ++i) m_snmp.values[{1, 3, 5, i}] = _variant_t(L"x");
  EXPECT_EQ(L"x", Get(L"Trays.999"));
  EXPECT_EQ(999u, TakeCalls().size());
}

TEST_F(OidDataMapperTest, TellsHowAWalkFailed) {
  m_snmp.values.clear();
  EXPECT_EQ(L"[80041003]", Get(L"Trays"));
  m_snmp.Serve(L"1.3.5.1", _variant_t(L"x"));
  EXPECT_EQ(L"[80041003]", Get(L"Trays.002"));
  EXPECT_EQ(L"x", Get(L"Trays.001"));
}

TEST_F(OidDataMapperTest, NamesItsMapAndTracesItsCom) {
  const TraceRecorder recorder(kTraceSevere);
  const auto spec = RefPtr<DataMapSpec>::Adopt(DataMapSpec::CreateDataMapSpec());
  const auto mapper = RefPtr<OIDDataMapper>::Share(new OIDDataMapper(nullptr, spec.Get()));
  EXPECT_EQ(L"OIDDataMap", mapper->GetDataMapName());
  EXPECT_TRUE(recorder.HasMessage(128, L"Corvane::OIDDataMapper::OIDDataMapper",
                                  L"CoInitialize returned 1"));
}

}  // namespace
}  // namespace Corvane::Test
