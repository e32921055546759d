// SNMP sessions against a real agent.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "corvane/error_codes.h"
#include "tests/host/mib_session.h"
#include "tests/support/peers/snmpd.h"
#include "tests/support/peers/udp_relay.h"

namespace Corvane::Test {
namespace {

using namespace std::string_literals;
using Host::SnmpAuth;
using Host::SnmpPrivacy;
using Host::SnmpVersion;

const std::wstring kBase = L"1.3.6.1.4.1.99999.1.";
constexpr HRESULT kTimedOut = ResultFromError(kErrorTimeout);

constexpr char kAgent[] = R"(
rocommunity public
rwcommunity private
createUser reader SHA reader-secret
createUser old MD5 reader-secret
createUser sealed SHA-256 sealed-secret AES sealed-private
createUser strong SHA-512 sealed-secret AES-256 sealed-private
createUser anyone
rouser reader auth
rouser old auth
rouser sealed priv
rouser strong priv
rouser anyone noauth
override 1.3.6.1.4.1.99999.1.1.0 integer -5
override 1.3.6.1.4.1.99999.1.2.0 octet_str "a printer"
override -rw 1.3.6.1.4.1.99999.1.3.0 integer 0
override -rw 1.3.6.1.4.1.99999.1.4.0 octet_str "old"
override 1.3.6.1.4.1.99999.1.5.0 counter 4000000000
override 1.3.6.1.4.1.99999.1.6.0 uinteger 7
override 1.3.6.1.4.1.99999.1.7.0 object_id 1.3.6.1.2.1.43
)";

class MibConnection : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    s_agent = std::make_unique<Snmpd>();
    std::string configuration = kAgent;
    for (int i = 0; i < 120; ++i) {
      configuration += "override 1.3.6.1.4.1.99999.2." + std::to_string(i) + " octet_str \"" +
                       std::string(i < 20 ? 4 : 1'000, 'v') + std::to_string(i) + "\"\n";
    }
    s_ready = s_agent->Start(configuration);
  }
  static void TearDownTestSuite() { s_agent.reset(); }
  void SetUp() override {
    ASSERT_TRUE(s_ready) << s_agent->Failure();
    m_options = AgentOptions(s_agent->Port());
  }

  void BecomeUser(const wchar_t* name, const wchar_t* authPassphrase,
                  const wchar_t* privacyPassphrase = L"") {
    m_options.snmp.version = SnmpVersion::kV3;
    m_options.snmp.user = name;
    m_options.snmp.authPassphrase = authPassphrase;
    m_options.snmp.privacyPassphrase = privacyPassphrase;
  }

  static std::unique_ptr<Snmpd> s_agent;
  static bool s_ready;
  Host::NetworkOptions m_options;
};

std::unique_ptr<Snmpd> MibConnection::s_agent;
bool MibConnection::s_ready = false;

TEST_F(MibConnection, ReadsValuesOfEveryVersion) {
  const struct {
    const wchar_t *arcs, *shown;
  } kValues[] = {
      {L"1.0", L"i:-5"}, {L"2.0", L"s:a printer"},      {L"5.0", L"s:4000000000"},
      {L"6.0", L"i:7"},  {L"7.0", L"s:1.3.6.1.2.1.43"},
  };
  const std::pair<const char*, std::function<void()>> kCases[] = {
      {"version 1", [this] { m_options.snmp.version = SnmpVersion::kV1; }},
      {"version 2c", [] {}},
      {"no authentication", [this] { BecomeUser(L"anyone", L""); }},
      {"MD5",
       [this] {
         BecomeUser(L"old", L"reader-secret");
         m_options.snmp.auth = SnmpAuth::kMd5;
       }},
      {"SHA", [this] { BecomeUser(L"reader", L"reader-secret"); }},
      {"SHA-256 and AES",
       [this] {
         BecomeUser(L"sealed", L"sealed-secret", L"sealed-private");
         m_options.snmp.auth = SnmpAuth::kSha256;
       }},
      {"SHA-512 and AES-256",
       [this] {
         BecomeUser(L"strong", L"sealed-secret", L"sealed-private");
         m_options.snmp.auth = SnmpAuth::kSha512;
         m_options.snmp.privacy = SnmpPrivacy::kAes256;
       }},
  };
  const Host::SnmpOptions plain = m_options.snmp;
  for (const auto& [name, configure] : kCases) {
    SCOPED_TRACE(name);
    m_options.snmp = plain;
    configure();
    const MibSession session(m_options);
    ASSERT_HR(session.Opened(), S_OK) << testing::PrintToString(session.Failure());
    for (const auto& value : kValues) {
      const Read read = session.Get(kBase + value.arcs);
      EXPECT_HR(read.result, S_OK) << testing::PrintToString(session.Failure());
      EXPECT_EQ(read.value, value.shown);
    }
    EXPECT_EQ(session.Failure(), L"");
    EXPECT_EQ(
        session.GetGroup({L'.' + kBase + L"1.0", kBase + L"0", L"no OID", kBase + L"2.0"}).values,
        (std::vector<std::wstring>{L"i:-5", L"empty", L"empty", L"s:a printer"}));
    EXPECT_EQ(session.GetGroup({kBase + L"0", L"no OID"}).values,
              std::vector<std::wstring>(2, L"s:before"));
  }
}

TEST_F(MibConnection, AGroupIsOneRequest) {
  UdpRelay relay(s_agent->Port(), {}, {});
  m_options.portMap = {{kSnmpPort, relay.Port()}};
  const MibSession session(m_options);
  ASSERT_HR(session.Opened(), S_OK);
  std::vector<std::wstring> names;
  std::vector<std::wstring> values;
  for (int i = 0; i < 20; ++i) {
    names.push_back(L"1.3.6.1.4.1.99999.2." + std::to_wstring(i));
    values.push_back(L"s:vvvv" + std::to_wstring(i));
  }
  EXPECT_EQ(relay.Requests(), 0);
  const GroupRead group = session.GetGroup(names);
  EXPECT_HR(group.result, S_OK);
  EXPECT_EQ(group.values, values);
  EXPECT_EQ(relay.Requests(), 1);
}

TEST_F(MibConnection, AGroupBeyondTheAgentsMessageSizeComesInParts) {
  const MibSession session(m_options);
  std::vector<std::wstring> names;
  for (int i = 20; i < 120; ++i) names.push_back(L"1.3.6.1.4.1.99999.2." + std::to_wstring(i));
  const GroupRead group = session.GetGroup(names);
  EXPECT_HR(group.result, S_OK) << testing::PrintToString(session.Failure());
  EXPECT_EQ(group.values.back().size(), 1'005U);
}

TEST_F(MibConnection, SetsWhatTheAgentLetsItSet) {
  m_options.snmp.community = L"private";
  const MibSession session(m_options);
  EXPECT_HR(session.Set(kBase + L"3.0", _variant_t(-7L)), S_OK);
  EXPECT_EQ(session.Get(kBase + L"3.0").value, L"i:-7");
  VARIANT one{};
  one.vt = VT_INT;
  one.intVal = 1;
  EXPECT_HR(session->SetValue((kBase + L"3.0").c_str(), &one), S_OK);
  EXPECT_EQ(session.Get(kBase + L"3.0").value, L"i:1");
  EXPECT_HR(session.Set(kBase + L"4.0", L"caf\u00E9"), S_OK);
  EXPECT_EQ(session.Get(kBase + L"4.0").value, L"s:caf\u00E9");
  EXPECT_HR(session.Set(kBase + L"3.0", L"text"), SnmpStatusResult(7));
  EXPECT_HR(session.Set(kBase + L"3.0", _variant_t(1.5)), DISP_E_TYPEMISMATCH);
  EXPECT_HR(session.Set(kBase + L"1.0", _variant_t(1L)), SnmpStatusResult(17));
  EXPECT_EQ(session.Failure(), L"SNMP set " + kBase + L"1.0 at 127.0.0.1:" +
                                   std::to_wstring(s_agent->Port()) +
                                   L": not writable (notWritable)");
  m_options.snmp.community = L"public";
  EXPECT_HR(MibSession(m_options).Set(kBase + L"3.0", _variant_t(1L)), SnmpStatusResult(6));
}

TEST_F(MibConnection, WalksToTheEnd) {
  for (const SnmpVersion version : {SnmpVersion::kV1, SnmpVersion::kV2c}) {
    m_options.snmp.version = version;
    const MibSession session(m_options);
    std::wstring oid = L"1.3.6.1.4.1.99999.2";
    wchar_t next[600] = L"";
    for (int i = 0; i < 3; ++i) {
      _variant_t value;
      ASSERT_HR(session->GetNextOidAndValue(oid.c_str(), next, 600, &value), S_OK);
      oid = next;
      EXPECT_EQ(oid, L"1.3.6.1.4.1.99999.2." + std::to_wstring(i));
      EXPECT_EQ(Shown(value), L"s:vvvv" + std::to_wstring(i));
    }
    _variant_t value(L"before");
    EXPECT_HR(session->GetNextOidAndValue(L"2.999", next, 600, &value), kSnmpEndOfMibView);
    EXPECT_EQ(Shown(value), L"s:before");
    EXPECT_EQ(next, oid);
  }
}

TEST_F(MibConnection, TellsWhyAnAgentRefuses) {
  const auto v3 = [this](const wchar_t* user, const wchar_t* auth, const wchar_t* privacy = L"") {
    return [=, this] {
      BecomeUser(user, auth, privacy);
      m_options.snmp.auth = user == L"sealed"s ? SnmpAuth::kSha256 : SnmpAuth::kSha;
      m_options.snmp.timeoutMs = privacy == L"wrong-private"s ? 100 : 5'000;
    };
  };
  const struct {
    const char* name;
    std::function<void()> configure;
    HRESULT result;
    const wchar_t* reason;
  } kCases[] = {
      {"wrong community",
       [this] {
         m_options.snmp.community = L"secret-community";
         m_options.snmp.timeoutMs = 100;
       },
       kTimedOut, L"timed out after 300 ms (a wrong community looks the same)"},
      {"unknown user", v3(L"stranger", L"reader-secret"), kSnmpUnknownUser,
       L"the agent does not know the user"},
      {"wrong passphrase", v3(L"reader", L"reader-secret!"), kSnmpWrongDigest,
       L"the authentication passphrase or protocol is wrong"},
      {"wrong privacy passphrase", v3(L"sealed", L"sealed-secret", L"wrong-private"), kTimedOut,
       L"timed out after 300 ms (a wrong privacy passphrase or context may look the same)"},
      {"no privacy", v3(L"sealed", L"sealed-secret"), SnmpStatusResult(16),
       L"not permitted (authorizationError)"},
      {"too much privacy", v3(L"reader", L"reader-secret", L"reader-secret"),
       kSnmpUnsupportedSecurityLevel, L"the user has another security level"},
      {"nothing there",
       [this] {
         m_options.portMap = {{kSnmpPort, 1}};
       },
       ResultFromError(kErrorCannotConnect), L"nothing listens there, or no way leads there"},
      {"no such name", [this] { m_options.host = L"device.invalid"; },
       ResultFromError(kErrorNameNotResolved), L"the name cannot be resolved"},
  };
  const Host::NetworkOptions plain = m_options;
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    m_options = plain;
    row.configure();
    const MibSession session(m_options);
    ASSERT_HR(session.Opened(), S_OK);
    const Read read = session.Get(kBase + L"1.0");
    EXPECT_HR(read.result, row.result);
    EXPECT_EQ(read.value, L"s:before");
    EXPECT_EQ(session.Failure(), L"SNMP get " + kBase + L"1.0 at " + m_options.host + L':' +
                                     std::to_wstring(m_options.portMap.at(161)) + L": " +
                                     row.reason);
    EXPECT_EQ(session.GetGroup({kBase + L"1.0"}).result, row.result);
    EXPECT_EQ(session.Failure().find(L"secret"), std::wstring::npos);
  }
}

TEST_F(MibConnection, TellsTheReportsOfAnAgentApart) {
  // usmStats (RFC 3414, 5), but for the last.
  const std::pair<std::string, HRESULT> kCases[] = {
      {"\x2B\x06\x01\x06\x03\x0F\x01\x01\x01\x00"s, kSnmpUnsupportedSecurityLevel},
      {"\x2B\x06\x01\x06\x03\x0F\x01\x01\x03\x00"s, kSnmpUnknownUser},
      {"\x2B\x06\x01\x06\x03\x0F\x01\x01\x04\x00"s, kSnmpUnknownEngine},
      {"\x2B\x06\x01\x06\x03\x0F\x01\x01\x05\x00"s, kSnmpWrongDigest},
      {"\x2B\x06\x01\x06\x03\x0F\x01\x01\x06\x00"s, kSnmpDecryptionError},
      {"\x2B\x06\x01\x06\x03\x0B\x02\x01\x01\x00"s, kSnmpOtherReport},
  };
  const std::string unknownUser = kCases[1].first;
  for (const auto& [report, result] : kCases) {
    UdpRelay relay(s_agent->Port(), {}, [&](std::string bytes) -> std::vector<Datagram> {
      const std::size_t at = bytes.find(unknownUser);
      if (at != std::string::npos) bytes.replace(at, report.size(), report);
      return {bytes};
    });
    BecomeUser(L"stranger", L"reader-secret");
    m_options.portMap = {{kSnmpPort, relay.Port()}};
    EXPECT_HR(MibSession(m_options).Get(kBase + L"1.0").result, result);
  }
}

TEST_F(MibConnection, SessionsOfOneUserKeepTheirOwnKeys) {
  BecomeUser(L"reader", L"wrong-secret");
  const MibSession wrong(m_options);
  BecomeUser(L"reader", L"reader-secret");
  const MibSession right(m_options);
  for (int round = 0; round < 3; ++round) {
    EXPECT_HR(wrong.Get(kBase + L"1.0").result, kSnmpWrongDigest);
    EXPECT_HR(right.Get(kBase + L"1.0").result, S_OK);
  }
}

// To version 3, an agent that forgot how often it has started looked like a replay, in every later
// session of the process.
TEST_F(MibConnection, FindsAnAgentAgainThatBeganAnew) {
  const std::string engine = "exactEngineID 0x80001f8804636f7276616e65\n";
  const std::pair<const char*, std::string> kCases[] = {
      {"with another engine ID", "exactEngineID 0x80001f8804616e6f74686572"},
      {"with fewer starts", engine}};
  for (const auto& [name, later] : kCases) {
    SCOPED_TRACE(name);
    Snmpd agent;
    ASSERT_TRUE(
        agent.Start(kAgent + engine + "oldEngineID 0x80001f8804636f7276616e65\nengineBoots 9"))
        << agent.Failure();
    BecomeUser(L"reader", L"reader-secret");
    m_options.portMap = {{kSnmpPort, agent.Port()}};
    m_options.snmp.timeoutMs = 500;
    const MibSession session(m_options);
    EXPECT_HR(session.Get(kBase + L"1.0").result, S_OK);
    ASSERT_TRUE(agent.Restart(kAgent + later)) << agent.Failure();
    EXPECT_TRUE(FAILED(session.Get(kBase + L"1.0").result));
    EXPECT_HR(session.Get(kBase + L"1.0").result, S_OK);
  }
}

TEST_F(MibConnection, RefusesOptionsThatNoAgentTakes) {
  const std::pair<const wchar_t*, std::function<void(Host::SnmpOptions*)>> kCases[] = {
      {L"the user name does not have 1 to 32 bytes", [](auto* o) { o->user = L""; }},
      {L"the user name does not have 1 to 32 bytes",
       [](auto* o) { o->user = std::wstring(33, L'u'); }},
      {L"a passphrase has fewer than 8 bytes", [](auto* o) { o->authPassphrase = L"7 chars"; }},
      {L"a passphrase has fewer than 8 bytes", [](auto* o) { o->privacyPassphrase = L"7 chars"; }},
      {L"privacy without authentication", [](auto* o) { o->authPassphrase = L""; }},
      {L"unknown authentication protocol", [](auto* o) { o->auth = static_cast<SnmpAuth>(9); }},
      {L"unknown privacy protocol", [](auto* o) { o->privacy = static_cast<SnmpPrivacy>(9); }},
      {L"unknown version", [](auto* o) { o->version = static_cast<SnmpVersion>(9); }},
      {L"the context name is longer than 255 bytes",
       [](auto* o) { o->contextName = std::wstring(256, L'c'); }},
      {L"the time-out is not 1 to 600000 ms, or there are more than 100 retries",
       [](auto* o) { o->timeoutMs = 0; }},
  };
  for (const auto& [reason, spoil] : kCases) {
    BecomeUser(L"user", L"long enough", L"long enough");
    m_options.snmp.contextName.clear();
    m_options.snmp.auth = SnmpAuth::kSha;
    m_options.snmp.privacy = SnmpPrivacy::kAes;
    spoil(&m_options.snmp);
    const MibSession session(m_options);
    EXPECT_HR(session.Opened(), E_INVALIDARG);
    EXPECT_FALSE(session);
    EXPECT_EQ(session.Failure(), L"SNMP at 127.0.0.1: "s + reason);
    m_options.snmp = {};
  }
}

TEST_F(MibConnection, WhatIsNoOidAsksNobody) {
  UdpRelay relay(s_agent->Port(), {}, {});
  m_options.portMap = {{kSnmpPort, relay.Port()}};
  const MibSession session(m_options);
  std::wstring long128 = L"1.3";
  for (int i = 2; i < 128; ++i) long128 += L".1";
  for (const std::wstring& oid :
       {L""s, L"."s, L"1"s, L"1."s, L"..1.3"s, L"1..3"s, L"1.3.x"s, L"1.3 "s, L"-1.3"s, L"1.-3"s,
        L"1.3.4294967296"s, L"1.3.99999999999999999999"s, L"3.1"s, L"1.40"s, L"2.4294967295"s,
        L"sysDescr.0"s, L"1.3.\u0661"s, long128 + L".1"}) {
    EXPECT_HR(session.Get(oid).result, E_INVALIDARG) << testing::PrintToString(oid);
    EXPECT_HR(session.GetGroup({oid}).result, E_INVALIDARG) << testing::PrintToString(oid);
    EXPECT_HR(session.Set(oid, _variant_t(1L)), E_INVALIDARG) << testing::PrintToString(oid);
  }
  EXPECT_EQ(relay.Requests(), 0);
  EXPECT_HR(session.Get(long128).result, kSnmpNoSuchObject);
  EXPECT_HR(session.Get(L"1.3.4294967295").result, kSnmpNoSuchObject);
  _variant_t value;
  EXPECT_HR(session->GetValue(nullptr, &value), E_POINTER);
  EXPECT_HR(session->GetValue(L"1.3", nullptr), E_POINTER);
  EXPECT_HR(session->GetMultipleValues(nullptr, &value, 1), E_POINTER);
  EXPECT_HR(session->SetTimeout(0, 1), E_INVALIDARG);
}

TEST_F(MibConnection, AClosedOneStaysClosed) {
  const MibSession session(m_options);
  EXPECT_TRUE(session->IsOpen());
  EXPECT_HR(session.Get(kBase + L"1.0").result, S_OK);
  session->Close();
  session->Close();
  EXPECT_FALSE(session->IsOpen());
  EXPECT_HR(session.Get(kBase + L"1.0").result, ResultFromError(kErrorInvalidHandle));
}

TEST_F(MibConnection, ManySessionsOnManyThreads) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([this, i, options = m_options]() mutable {
      if (i % 2 == 1) {
        options.snmp.version = SnmpVersion::kV3;
        options.snmp.user = i % 4 == 1 ? L"reader" : L"sealed";
        options.snmp.auth = i % 4 == 1 ? SnmpAuth::kSha : SnmpAuth::kSha256;
        options.snmp.authPassphrase = i % 4 == 1 ? L"reader-secret" : L"sealed-secret";
        options.snmp.privacyPassphrase = i % 4 == 1 ? L"" : L"sealed-private";
      }
      for (int round = 0; round < 10; ++round) {
        const MibSession session(options);
        EXPECT_EQ(session.Get(kBase + L"1.0").value, L"i:-5");
        EXPECT_EQ(session.GetGroup({kBase + L"2.0", kBase + L"1.0"}).values,
                  (std::vector<std::wstring>{L"s:a printer", L"i:-5"}));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST_F(MibConnection, ManyThreadsShareASession) {
  for (const bool isVersion3 : {false, true}) {
    if (isVersion3) BecomeUser(L"reader", L"reader-secret");
    const MibSession session(m_options);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([&session, i] {
        for (int round = 0; round < 20; ++round) {
          EXPECT_EQ(session.Get(kBase + (i % 2 == 0 ? L"1.0" : L"2.0")).value,
                    i % 2 == 0 ? L"i:-5" : L"s:a printer");
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
  }
}

}  // namespace
}  // namespace Corvane::Test
