// SNMP sessions against a real agent.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "corvane/error_codes.h"
#include "tests/host/mib_session.h"
#include "tests/support/cases.h"
#include "tests/support/peers/snmpd.h"

namespace Corvane::Test {
namespace {

using namespace std::string_literals;

const std::wstring kBase = L"1.3.6.1.4.1.99999.1.";

const std::string kAgent = ReadData("host/snmpd.conf");

// The agent of all tests; null when it did not start.
const Snmpd* Agent() {
  static Snmpd agent;
  static const bool isReady = [] {
    std::string configuration = kAgent;
    for (int i = 0; i < 100; ++i) {
      configuration += "override 1.3.6.1.4.1.99999.2." + std::to_string(i) + " octet_str \"" +
                       std::string(1'000, 'v') + "\"\n";
    }
    return agent.Start(configuration);
  }();
  EXPECT_TRUE(isReady) << agent.Failure();
  return isReady ? &agent : nullptr;
}

struct MibConnection : testing::Test {
  void SetUp() override {
    ASSERT_TRUE(Agent());
    m_options = AgentOptions(Agent()->Port());
  }
  void BecomeReader(const wchar_t* passphrase) {
    m_options.snmp.version = Host::SnmpVersion::kV3;
    m_options.snmp.user = L"reader";
    m_options.snmp.authPassphrase = passphrase;
  }

  Host::NetworkOptions m_options;
};

Host::NetworkOptions OptionsOf(const Case& c, Host::NetworkOptions options) {
  const auto number = [&c](const char* field, auto other) {
    return c.Find(field) ? static_cast<decltype(other)>(c.Number(field)) : other;
  };
  Host::SnmpOptions& snmp = options.snmp;
  snmp.version = static_cast<Host::SnmpVersion>(number("version", 2) - 1);
  if (c.Find("community")) snmp.community = c.Wide("community");
  snmp.user = c.Wide("user");
  snmp.auth = number("auth", snmp.auth);
  snmp.authPassphrase = c.Wide("passphrase");
  snmp.privacy = number("privacy", snmp.privacy);
  snmp.privacyPassphrase = c.Wide("privacy passphrase");
  snmp.contextName = c.Wide("context");
  snmp.timeoutMs = number("timeout", snmp.timeoutMs);
  if (c.Find("host")) options.host = c.Wide("host");
  options.portMap[kSnmpPort] = number("port", options.portMap[kSnmpPort]);
  return options;
}

TEST_F(MibConnection, IsWhoItsOptionsSay) {
  for (const Case& c : ReadCases("host/snmp_sessions.txt")) {
    SCOPED_TRACE(c.Where() + " " + c.Text("name"));
    const MibSession session(OptionsOf(c, m_options));
    Read read{session.Opened(), L"s:before"};
    if (session) read = session.Get(kBase + L"1.0");
    EXPECT_HR(read.result, static_cast<HRESULT>(c.Number("result")));
    EXPECT_EQ(read.value, read.result == S_OK ? L"i:-5" : L"s:before");
    EXPECT_TRUE(session.Failure().ends_with(c.Wide("reason")) &&
                session.Failure().empty() == c.Wide("reason").empty())
        << testing::PrintToString(session.Failure());
    EXPECT_EQ(session.Failure().find(L"secret"), std::wstring::npos);
    if (session) {
      EXPECT_HR(session.GetGroup({kBase + L"1.0"}).result, read.result);
    }
  }
}

TEST_F(MibConnection, AGroupHasAValueForEachOidThatHasOne) {
  const MibSession session(m_options);
  const Read some =
      session.GetGroup({L'.' + kBase + L"1.0", kBase + L"0", L"no OID", kBase + L"2.0"});
  EXPECT_HR(some.result, S_FALSE);
  EXPECT_EQ(some.value, L"i:-5 empty empty s:a printer");
  EXPECT_EQ(session.Failure(), L"SNMP get of 4 OIDs (2 without a value, as " + kBase +
                                   L"0) at 127.0.0.1:" + std::to_wstring(Agent()->Port()) +
                                   L": no such object");
  const Read none = session.GetGroup({kBase + L"0", L"no OID"});
  EXPECT_HR(none.result, kSnmpNoSuchObject);
  EXPECT_EQ(none.value, L"s:before s:before");
  EXPECT_HR(session.GetGroup({L"no OID"}).result, E_INVALIDARG);
  // Beyond the agent's largest message.
  std::vector<std::wstring> names;
  for (int i = 0; i < 100; ++i) names.push_back(L"1.3.6.1.4.1.99999.2." + std::to_wstring(i));
  const Read large = session.GetGroup(names);
  EXPECT_HR(large.result, S_OK) << testing::PrintToString(session.Failure());
  EXPECT_EQ(large.value.size(), 100 * 1'003U - 1);
  EXPECT_EQ(session.Failure(), L"");
}

TEST_F(MibConnection, SetsWhatTheAgentLetsItSet) {
  m_options.snmp.community = L"private";
  const MibSession session(m_options);
  EXPECT_HR(session.Set(kBase + L"3.0", _variant_t(-7L)), S_OK);
  EXPECT_EQ(session.Get(kBase + L"3.0").value, L"i:-7");
  EXPECT_HR(session.Set(kBase + L"4.0", L"caf\u00E9"), S_OK);
  EXPECT_EQ(session.Get(kBase + L"4.0").value, L"s:caf\u00E9");
  EXPECT_HR(session.Set(kBase + L"3.0", L"text"), SnmpStatusResult(7));
  EXPECT_HR(session.Set(kBase + L"3.0", _variant_t(1.5)), DISP_E_TYPEMISMATCH);
  EXPECT_HR(session.Set(kBase + L"1.0", _variant_t(1L)), SnmpStatusResult(17));
  EXPECT_EQ(session.Failure(), L"SNMP set " + kBase + L"1.0 at 127.0.0.1:" +
                                   std::to_wstring(Agent()->Port()) +
                                   L": not writable (notWritable)");
  m_options.snmp.community = L"public";
  EXPECT_HR(MibSession(m_options).Set(kBase + L"3.0", _variant_t(1L)), SnmpStatusResult(6));
}

TEST_F(MibConnection, WalksToTheEnd) {
  for (const auto version : {Host::SnmpVersion::kV1, Host::SnmpVersion::kV2c}) {
    m_options.snmp.version = version;
    const MibSession session(m_options);
    wchar_t next[600] = L"";
    _variant_t value;
    EXPECT_HR(session->GetNextOidAndValue((kBase + L"1").c_str(), next, 600, &value), S_OK);
    EXPECT_EQ(next, kBase + L"1.0");
    EXPECT_HR(session->GetNextOidAndValue(next, next, 600, &value), S_OK);
    EXPECT_EQ(next, kBase + L"2.0");
    EXPECT_EQ(Shown(value), L"s:a printer");
    EXPECT_HR(session->GetNextOidAndValue(L"2.999", next, 600, &value), kSnmpEndOfMibView);
    EXPECT_EQ(Shown(value), L"s:a printer");
    EXPECT_EQ(next, kBase + L"2.0");
  }
}

TEST_F(MibConnection, SessionsOfOneUserKeepTheirOwnKeys) {
  BecomeReader(L"wrong-secret");
  const MibSession wrong(m_options);
  BecomeReader(L"reader-secret");
  const MibSession right(m_options);
  for (int round = 0; round < 2; ++round) {
    EXPECT_HR(wrong.Get(kBase + L"1.0").result, kSnmpWrongDigest);
    EXPECT_HR(right.Get(kBase + L"1.0").result, S_OK);
  }
}

// To version 3, an agent that forgot how often it has started looked like a replay, in every later
// session of the process.
TEST_F(MibConnection, FindsAnAgentAgainThatBeganAnew) {
  const std::string engine = "exactEngineID 0x80001f8804636f7276616e65\n";
  BecomeReader(L"reader-secret");
  m_options.snmp.timeoutMs = 1'000;
  for (const std::string& later : {"exactEngineID 0x80001f8804616e6f74686572"s, engine}) {
    SCOPED_TRACE(later);
    Snmpd agent;
    ASSERT_TRUE(
        agent.Start(kAgent + engine + "oldEngineID 0x80001f8804636f7276616e65\nengineBoots 9"))
        << agent.Failure();
    m_options.portMap = {{kSnmpPort, agent.Port()}};
    const MibSession session(m_options);
    EXPECT_HR(session.Get(kBase + L"1.0").result, S_OK);
    ASSERT_TRUE(agent.Restart(kAgent + later)) << agent.Failure();
    EXPECT_TRUE(FAILED(session.Get(kBase + L"1.0").result));
    EXPECT_HR(session.Get(kBase + L"1.0").result, S_OK);
  }
}

TEST_F(MibConnection, RefusesWhatIsNoOperation) {
  const MibSession session(m_options);
  std::wstring longest = L"1.3";
  for (int i = 2; i < 128; ++i) longest += L".1";
  for (const std::wstring& oid : {L""s, L"1.3.x"s, longest + L".1"}) {
    EXPECT_HR(session.Get(oid).result, E_INVALIDARG) << testing::PrintToString(oid);
    EXPECT_HR(session.Set(oid, _variant_t(1L)), E_INVALIDARG) << testing::PrintToString(oid);
  }
  EXPECT_HR(session.Get(longest).result, kSnmpNoSuchObject);
  _variant_t value;
  EXPECT_HR(session->GetValue(nullptr, &value), E_POINTER);
  EXPECT_HR(session->GetValue(L"1.3", nullptr), E_POINTER);
  EXPECT_HR(session->GetMultipleValues(nullptr, &value, 1), E_POINTER);
  EXPECT_HR(session->SetTimeout(0, 1), E_INVALIDARG);
  EXPECT_TRUE(session->IsOpen());
  session->Close();
  session->Close();
  EXPECT_FALSE(session->IsOpen());
  EXPECT_HR(session.Get(kBase + L"1.0").result, ResultFromError(kErrorInvalidHandle));
}

TEST_F(MibConnection, ManySessionsOnManyThreads) {
  const MibSession shared(m_options);
  std::vector<std::thread> threads;
  for (int i = 0; i < 6; ++i) {
    if (i == 3) BecomeReader(L"reader-secret");
    threads.emplace_back([&shared, options = m_options] {
      const MibSession own(options);
      for (int round = 0; round < 20; ++round) {
        EXPECT_EQ(own.Get(kBase + L"1.0").value, L"i:-5");
        EXPECT_EQ(shared.Get(kBase + L"2.0").value, L"s:a printer");
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace Corvane::Test
