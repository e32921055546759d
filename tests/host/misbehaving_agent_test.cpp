// Agents that keep to no rule: every operation ends in time, with its code, and no value comes
// under a name that it was not sent for.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "corvane/error_codes.h"
#include "tests/host/mib_session.h"
#include "tests/support/peers/scripted_agent.h"

namespace Corvane::Test {
namespace {

using namespace std::string_literals;

const std::wstring kBase = L"1.3.6.1.4.1.99999.7.";
constexpr HRESULT kTimedOut = ResultFromError(kErrorTimeout);
constexpr HRESULT kNoAnswerToIt = ResultFromError(kErrorInvalidResponse);

// A message of another command than a response.
std::string WithCommand(std::string message, char command) {
  message[message.find('\xA2')] = command;
  return message;
}

MibSession Session(const ScriptedAgent& agent, std::uint32_t timeoutMs = 5'000,
                   std::uint32_t retries = 0) {
  Host::NetworkOptions options = AgentOptions(agent.Port());
  options.snmp.timeoutMs = timeoutMs;
  options.snmp.retries = retries;
  return MibSession(options);
}

TEST(MisbehavingAgent, OneValueOrTheCodeOfTheFault) {
  const struct {
    const char* name;
    std::string (*answer)(AgentRequest);
    HRESULT result;
  } kCases[] = {
      {"right", [](AgentRequest r) { return r.AnswerLastArcs(); }, S_OK},
      {"of another OID", [](AgentRequest r) { return r.Rename('\x09').AnswerLastArcs(); },
       kNoAnswerToIt},
      {"of a longer OID", [](AgentRequest r) { return r.Extend().AnswerLastArcs(); },
       kNoAnswerToIt},
      {"a report", [](AgentRequest r) { return WithCommand(r.AnswerLastArcs(), '\xA8'); },
       kNoAnswerToIt},
      {"no variable", [](AgentRequest r) { return r.Answer({}); }, kNoAnswerToIt},
      {"two variables",
       [](AgentRequest r) {
         return r.Answer({Ber(4, "7"), Ber(4, "7")});
       },
       kNoAnswerToIt},
      {"no value", [](AgentRequest r) { return r.Answer({Ber(5, "")}); }, kNoAnswerToIt},
      {"no instance", [](AgentRequest r) { return r.Answer({Ber(0x81, "")}); },
       kSnmpNoSuchInstance},
      {"genErr", [](AgentRequest r) { return r.Fail(5, 1); }, SnmpStatusResult(5)},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    ScriptedAgent agent(
        [&row](const std::string& bytes) -> Datagrams { return {row.answer(bytes)}; });
    const MibSession session = Session(agent);
    const Read read = session.Get(kBase + L"7");
    EXPECT_HR(read.result, row.result);
    EXPECT_EQ(read.value, row.result == S_OK ? L"s:7" : L"s:before");
    EXPECT_EQ(session.Failure().empty(), row.result == S_OK);
  }
}

TEST(MisbehavingAgent, WhatIsNotTheAnswerIsForgotten) {
  ScriptedAgent agent([random = std::mt19937(1),
                       n = std::size_t{0}](const std::string& bytes) mutable -> Datagrams {
    const AgentRequest request(bytes);
    const std::string right = request.AnswerLastArcs();
    const std::string wrong = request.Answer({Ber(0x04, "wrong")});
    AgentRequest other = request;
    other.id.back() ^= 1;
    AgentRequest older = request;
    older.version = "\0"s;
    std::string damaged = wrong;
    for (int i = 0; i < 3; ++i) damaged[random() % damaged.size()] = static_cast<char>(random());
    damaged[4] = '\x02';  // the version: damage elsewhere could leave an answer
    return {other.Answer({Ber(0x04, "wrong")}),
            older.Answer({Ber(0x04, "wrong")}),
            WithCommand(wrong, '\xA0'),
            {wrong, true},
            ""s,
            std::string(65'000, '\0'),
            wrong.substr(0, n++ % wrong.size()),
            damaged,
            right,
            right};
  });
  const MibSession session = Session(agent);
  for (int round = 0; round < 100; ++round) {
    EXPECT_EQ(session.Get(kBase + L"7").value, L"s:7") << round;
    EXPECT_EQ(session.Get(kBase + L"8").value, L"s:8") << round;
  }
}

TEST(MisbehavingAgent, SilenceEndsAfterItsTries) {
  ScriptedAgent silent([](const std::string&) { return Datagrams(); });
  // It answers each request with what is no answer to it.
  ScriptedAgent chattering([](const std::string& bytes) -> Datagrams {
    AgentRequest request(bytes);
    request.id.back() ^= 1;
    return {request.AnswerLastArcs()};
  });
  for (ScriptedAgent* const agent : {&silent, &chattering}) {
    const MibSession session = Session(*agent, 200, 2);
    EXPECT_HR(session.Get(kBase + L"1").result, kTimedOut);
    EXPECT_EQ(agent->Requests(), 3);
    EXPECT_HR(session.GetGroup({kBase + L"1", kBase + L"2"}).result, kTimedOut);
    EXPECT_EQ(agent->Requests(), 3 + 3 + 1);
    EXPECT_HR(session.Set(kBase + L"1", _variant_t(1L)), kTimedOut);
    EXPECT_EQ(agent->Requests(), 3 + 3 + 1 + 1);  // it may have been done
  }
}

TEST(MisbehavingAgent, RetriesFindAnAnswerThatWasLostOrLate) {
  std::string first;
  ScriptedAgent agent([&first, n = 0](const std::string& bytes) mutable -> Datagrams {
    const AgentRequest request(bytes);
    if (++n % 3 != 0) return {};
    if (!first.empty()) return {std::exchange(first, {}), request.AnswerLastArcs()};
    first = request.AnswerLastArcs();
    return {};
  });
  const MibSession session = Session(agent, 400, 2);
  EXPECT_HR(session.Get(kBase + L"1").result, kTimedOut);
  EXPECT_EQ(session.Get(kBase + L"3").value, L"s:3");
  EXPECT_EQ(agent.Requests(), 6);
}

TEST(MisbehavingAgent, NextOidsOnlyIncrease) {
  const struct {
    const char* name;
    char lastArc;
    std::uint32_t chars;
    HRESULT result;
  } kCases[] = {
      {"the same again", 5, 64, kNoAnswerToIt}, {"an earlier one", 4, 64, kNoAnswerToIt},
      {"a buffer of its size", 6, 22, S_OK},    {"a buffer too small by one", 6, 21, E_OUTOFMEMORY},
      {"no buffer", 6, 0, E_OUTOFMEMORY},
  };
  for (const auto& row : kCases) {
    ScriptedAgent agent([&row](const std::string& bytes) -> Datagrams {
      return {AgentRequest(bytes).Rename(row.lastArc).AnswerLastArcs()};
    });
    const MibSession session = Session(agent);
    wchar_t next[64] = L"before";
    _variant_t value(L"before");
    EXPECT_HR(session->GetNextOidAndValue((kBase + L"5").c_str(), next, row.chars, &value),
              row.result)
        << row.name;
    EXPECT_EQ(next, row.result == S_OK ? kBase + L"6" : L"before"s) << row.name;
    EXPECT_EQ(Shown(value), row.result == S_OK ? L"s:6" : L"s:before") << row.name;
  }
}

}  // namespace
}  // namespace Corvane::Test
