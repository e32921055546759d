// Agents that keep to no rule: every operation ends in time, with its code, and no value comes
// under a name that it was not sent for.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "tests/host/mib_session.h"
#include "tests/support/cases.h"
#include "tests/support/peers/scripted_agent.h"

namespace Corvane::Test {
namespace {

using namespace std::string_literals;

const std::string kBase = "1.3.6.1.4.1.99999.7.";
const std::string kTimedOut = HrText(ResultFromError(kErrorTimeout));

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

std::string AnswerAsSaid(const Case& c, AgentRequest request) {
  if (c.Text("arc") == "longer") {
    request.Extend();
  } else {
    request.Rename(static_cast<char>(c.Number("arc")));
  }
  std::vector<std::string> values = c.Parts("values");
  std::erase(values, "none");
  const std::string answer = request.Answer(values, static_cast<int>(c.Number("status")));
  const auto command = static_cast<char>(c.Number("command"));
  return command == 0 ? answer : WithCommand(answer, command);
}

TEST(MisbehavingAgent, GivesOneValueOrTheCodeOfItsFault) {
  for (const Case& c : ReadCases("host/snmp_answers.txt")) {
    SCOPED_TRACE(c.Where() + " " + c.Text("name"));
    ScriptedAgent agent(
        [&c](const std::string& bytes) -> Datagrams { return {AnswerAsSaid(c, bytes)}; });
    const MibSession session = Session(agent);
    EXPECT_EQ(session.Read(c.Text("operation"), {kBase + "5"},
                           static_cast<std::uint32_t>(c.Number("room"))),
              c.Text("came"));
    EXPECT_EQ(session.Failure().empty(), c.Text("came").ends_with("s:5"));
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
    EXPECT_EQ(session.Get(kBase + "7"), "s:7") << round;
    EXPECT_EQ(session.Get(kBase + "8"), "s:8") << round;
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
    EXPECT_EQ(session.Get(kBase + "1"), kTimedOut);
    EXPECT_EQ(agent->Requests(), 3);
    EXPECT_EQ(session.Read("group", {kBase + "1", kBase + "2"}), kTimedOut);
    EXPECT_EQ(agent->Requests(), 3 + 3 + 1);
    EXPECT_EQ(session.Set(kBase + "1", "1"), kTimedOut);
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
  EXPECT_EQ(session.Get(kBase + "1"), kTimedOut);
  EXPECT_EQ(session.Get(kBase + "3"), "s:3");
  EXPECT_EQ(agent.Requests(), 6);
}

}  // namespace
}  // namespace Corvane::Test
