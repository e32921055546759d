// SNMP sessions against a real agent.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <thread>
#include <vector>

#include "tests/host/mib_session.h"
#include "tests/support/cases.h"
#include "tests/support/peers/snmpd.h"

namespace Corvane::Test {
namespace {

using namespace std::string_literals;

const std::string kNumber = "1.3.6.1.4.1.99999.1.1.0";
const std::string kText = "1.3.6.1.4.1.99999.1.2.0";

const std::string kAgent = ReadData("host/snmpd.conf");

// The agent of all tests; null when it did not start.
const Snmpd* Agent() {
  static Snmpd agent;
  static const bool isReady = agent.Start(kAgent);
  EXPECT_TRUE(isReady) << agent.Failure();
  return isReady ? &agent : nullptr;
}

struct MibConnection : testing::Test {
  void SetUp() override {
    ASSERT_TRUE(Agent());
    m_options = AgentOptions(Agent()->Port());
  }
  void BecomeReader() {
    m_options.snmp.version = Host::SnmpVersion::kV3;
    m_options.snmp.user = L"reader";
    m_options.snmp.authPassphrase = L"reader-secret";
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

// Twice: sessions of one user keep their own keys.
TEST_F(MibConnection, IsWhoItsOptionsSay) {
  std::map<std::string, MibSession> sessions;
  for (int round = 0; round < 2; ++round) {
    for (const Case& c : ReadCases("host/snmp_sessions.txt")) {
      SCOPED_TRACE(c.Where() + " " + c.Text("name"));
      const MibSession& session =
          sessions.try_emplace(c.Where(), OptionsOf(c, m_options)).first->second;
      const std::string code = HrText(static_cast<HRESULT>(c.Number("result")));
      const std::string came = code == "S_OK" ? "i:-5" : code;
      EXPECT_EQ(session.Get(kNumber), came);
      EXPECT_EQ(session.Read("group", {kNumber}), came);
      EXPECT_TRUE(session.Failure().ends_with(c.Text("reason"))) << session.Failure();
      EXPECT_EQ(session.Failure().empty(), code == "S_OK");
      EXPECT_EQ(session.Failure().find("secret"), std::string::npos);
    }
  }
}

TEST_F(MibConnection, DoesEachOperation) {
  for (const Case& c : ReadCases("host/snmp_operations.txt")) {
    SCOPED_TRACE(c.Where());
    m_options.snmp.community = c.Wide("community");
    m_options.snmp.version = static_cast<Host::SnmpVersion>(c.Number("version") - 1);
    const MibSession session(m_options);
    const std::vector<std::string> oids = c.Parts("oids");
    const std::string operation = c.Text("operation");
    EXPECT_EQ(
        operation == "set" ? session.Set(oids[0], c.Text("value")) : session.Read(operation, oids),
        c.Text("came"));
    std::string failure = session.Failure();
    const std::size_t port = failure.find(':');
    if (port != failure.npos) failure.erase(port, failure.find(": ") - port);
    EXPECT_EQ(failure, c.Text("why"));
    if (c.Text("then") != "-") {
      EXPECT_EQ(session.Get(oids[0]), c.Text("then"));
    }
  }
}

// To version 3, an agent that forgot how often it has started looked like a replay, in every later
// session of the process.
TEST_F(MibConnection, FindsAnAgentAgainThatBeganAnew) {
  const std::string engine = "exactEngineID 0x80001f8804636f7276616e65\n";
  BecomeReader();
  m_options.snmp.timeoutMs = 1'000;
  for (const std::string& later : {"exactEngineID 0x80001f8804616e6f74686572"s, engine}) {
    SCOPED_TRACE(later);
    Snmpd agent;
    ASSERT_TRUE(
        agent.Start(kAgent + engine + "oldEngineID 0x80001f8804636f7276616e65\nengineBoots 9"))
        << agent.Failure();
    m_options.portMap = {{kSnmpPort, agent.Port()}};
    const MibSession session(m_options);
    EXPECT_EQ(session.Get(kNumber), "i:-5");
    ASSERT_TRUE(agent.Restart(kAgent + later)) << agent.Failure();
    EXPECT_TRUE(session.Get(kNumber).starts_with("0x8"));
    EXPECT_EQ(session.Get(kNumber), "i:-5");
  }
}

TEST_F(MibConnection, RefusesWhatIsNoOperation) {
  const MibSession session(m_options);
  EXPECT_EQ(session.Get(""), "E_INVALIDARG");
  EXPECT_EQ(session.Set("", "1"), "E_INVALIDARG");
  _variant_t value(1.5);
  EXPECT_HR(session->SetValue(L"1.3.6.1.4.1.99999.1.3.0", &value), DISP_E_TYPEMISMATCH);
  EXPECT_HR(session->GetValue(nullptr, &value), E_POINTER);
  EXPECT_HR(session->GetValue(L"1.3", nullptr), E_POINTER);
  EXPECT_HR(session->GetMultipleValues(nullptr, &value, 1), E_POINTER);
  EXPECT_HR(session->SetTimeout(0, 1), E_INVALIDARG);
  EXPECT_TRUE(session->IsOpen());
  session->Close();
  session->Close();
  EXPECT_FALSE(session->IsOpen());
  EXPECT_EQ(session.Get(kNumber), HrText(ResultFromError(kErrorInvalidHandle)));
}

TEST_F(MibConnection, ManySessionsOnManyThreads) {
  const MibSession shared(m_options);
  std::vector<std::thread> threads;
  for (int i = 0; i < 6; ++i) {
    if (i == 3) BecomeReader();
    threads.emplace_back([&shared, options = m_options] {
      const MibSession own(options);
      for (int round = 0; round < 20; ++round) {
        EXPECT_EQ(own.Get(kNumber), "i:-5");
        EXPECT_EQ(shared.Get(kText), "s:a printer");
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace Corvane::Test
