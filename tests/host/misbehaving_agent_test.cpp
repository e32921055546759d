// Agents that keep to no rule: every operation ends in time, with its code, and no value comes
// under a name that it was not sent for.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "corvane/error_codes.h"
#include "tests/host/mib_session.h"
#include "tests/support/peers/scripted_agent.h"
#include "tests/support/peers/udp_relay.h"

namespace Corvane::Test {
namespace {

using namespace std::string_literals;
using Clock = std::chrono::steady_clock;

using Datagrams = std::vector<Datagram>;

const std::wstring kBase = L"1.3.6.1.4.1.99999.7.";
constexpr HRESULT kTimedOut = ResultFromError(kErrorTimeout);
constexpr HRESULT kNoAnswerToIt = ResultFromError(kErrorInvalidResponse);

// A message of another command than a response.
std::string WithCommand(std::string message, char command) {
  message[message.find('\xA2')] = command;
  return message;
}

// A short time-out, for agents that do not answer.
MibSession Session(const UdpRelay& agent, std::uint32_t timeoutMs = 5'000,
                   std::uint32_t retries = 0) {
  Host::NetworkOptions options = AgentOptions(agent.Port());
  options.snmp.timeoutMs = timeoutMs;
  options.snmp.retries = retries;
  return MibSession(options);
}

std::vector<std::wstring> Names(int count) {
  std::vector<std::wstring> names;
  for (int i = 1; i <= count; ++i) names.push_back(kBase + std::to_wstring(i));
  return names;
}

std::vector<std::wstring> LastArcs(int count) {
  std::vector<std::wstring> values;
  for (int i = 1; i <= count; ++i) values.push_back(L"s:" + std::to_wstring(i));
  return values;
}

TEST(MibValues, ReadEveryTypeOfTheWire) {
  const struct {
    std::string wire;
    const wchar_t* shown;
  } kCases[] = {
      {Ber(0x02, "\x05"), L"i:5"},
      {Ber(0x02, "\x80\x00\x00\x00"s), L"i:-2147483648"},
      {Ber(0x41, "\x7F\xFF\xFF\xFF"), L"i:2147483647"},
      {Ber(0x41, "\x00\x80\x00\x00\x00"s), L"s:2147483648"},
      {Ber(0x42, "\x00\xFF\xFF\xFF\xFF"s), L"s:4294967295"},
      {Ber(0x43, "\x01\x00"s), L"i:256"},
      {Ber(0x46, "\x07"), L"i:7"},
      {Ber(0x46, "\x00\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s), L"s:18446744073709551615"},
      {Ber(0x40, "\xC0\x00\x02\x07"s), L"s:192.0.2.7"},
      {Ber(0x06, "\x2B\x06\x01\x84\x80\x80\x80\x00"s), L"s:1.3.6.1.1073741824"},
      {Ber(0x06, "\x2B\x06\x8F\xFF\xFF\xFF\x7F"), L"s:1.3.6.4294967295"},
      {Ber(0x44, "\x9F\x78\x04\x3F\x00\x00\x00"s), L"s:0.5"},
      {Ber(0x44, "\x9F\x79\x08\x3F\xB9\x99\x99\x99\x99\x99\x9A"), L"s:0.1"},
      {Ber(0x04, ""), L"s:"},
      {Ber(0x04, "two\r\n\tlines"), L"s:two\r\n\tlines"},
      {Ber(0x04, "caf\xC3\xA9 \xF0\x9F\x96\xA8"), L"s:caf\u00E9 \U0001F5A8"},
      {Ber(0x04, "caf\xE9 noir"), L"s:caf\u00E9 noir"},
      {Ber(0x04, "padded\0\0"s), L"s:padded"},
      {Ber(0x04, "\0\0\0"s), L"s:"},
      {Ber(0x04, "\x00\x1B\x2C\x00\x00\x00"s), L"s:00:1B:2C:00:00:00"},
      {Ber(0x04, "a\0b"s), L"s:61:00:62"},
      {Ber(0x04, "a\x1B[2J"), L"s:61:1B:5B:32:4A"},
      {Ber(0x04, "\xC2\x9B"), L"s:C2:9B"},         // a C1 control
      {Ber(0x04, "\xC0\x80"), L"s:C0:80"},         // overlong
      {Ber(0x04, "\xED\xA0\x80"), L"s:ED:A0:80"},  // a surrogate
      {Ber(0x04, "\xF4\x90\x80\x80"), L"s:F4:90:80:80"},
      {Ber(0x04, "\xE2\x82"), L"s:E2:82"},
      {Ber(0x04, "1234\xFF\xFE"), L"s:31:32:33:34:FF:FE"},
      {Ber(0x44, "\x01\x02"), L"s:01:02"},
  };
  // The rows in turn, then texts with each octet.
  UdpRelay agent([&kCases, n = std::size_t{0}](const std::string& bytes) mutable -> Datagrams {
    const AgentRequest request(bytes);
    if (n < std::size(kCases)) return {request.Answer({kCases[n++].wire})};
    const auto octet = static_cast<char>(n++ - std::size(kCases));
    return {request.Answer({Ber(0x04, "x" + std::string(1, octet) + "yz")})};
  });
  const MibSession session = Session(agent);
  for (const auto& row : kCases) {
    const Read read = session.Get(kBase + L"1");
    EXPECT_HR(read.result, S_OK) << testing::PrintToString(row.shown);
    EXPECT_EQ(read.value, row.shown);
  }
  for (int octet = 0; octet < 256; ++octet) {
    EXPECT_HR(session.Get(kBase + L"1").result, S_OK) << octet;
  }
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
         return r.Answer({Ber(4, "a"), Ber(4, "b")});
       },
       kNoAnswerToIt},
      {"no value", [](AgentRequest r) { return r.Answer({Ber(5, "")}); }, kNoAnswerToIt},
      {"no object", [](AgentRequest r) { return r.Answer({Ber(0x80, "")}); }, kSnmpNoSuchObject},
      {"no instance", [](AgentRequest r) { return r.Answer({Ber(0x81, "")}); },
       kSnmpNoSuchInstance},
      {"no more", [](AgentRequest r) { return r.Answer({Ber(0x82, "")}); }, kSnmpEndOfMibView},
      {"genErr", [](AgentRequest r) { return r.Fail(5, 1); }, SnmpStatusResult(5)},
      {"an unknown status", [](AgentRequest r) { return r.Fail(99); }, SnmpStatusResult(5)},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    UdpRelay agent([&row](const std::string& bytes) -> Datagrams { return {row.answer(bytes)}; });
    const MibSession session = Session(agent);
    const Read read = session.Get(kBase + L"7");
    EXPECT_HR(read.result, row.result);
    EXPECT_EQ(read.value, row.result == S_OK ? L"s:7" : L"s:before");
    EXPECT_EQ(session.Failure().empty(), row.result == S_OK);
  }
}

TEST(MisbehavingAgent, WhatIsNotTheAnswerIsForgotten) {
  UdpRelay agent([random = std::mt19937(1), n = std::size_t{0}](const std::string& bytes) mutable {
    const AgentRequest request(bytes);
    const std::string right = request.AnswerLastArcs();
    const std::string wrong = request.Answer({Ber(0x04, "wrong")});
    AgentRequest other = request;
    other.id.back() ^= 1;
    AgentRequest older = request;
    older.version = "\0"s;
    Datagrams datagrams = {other.Answer({Ber(0x04, "wrong")}),
                           older.Answer({Ber(0x04, "wrong")}),
                           WithCommand(wrong, '\xA0'),
                           {wrong, 0, true},
                           ""s,
                           std::string(65'000, '\0'),
                           wrong.substr(0, n++ % wrong.size())};
    std::string damaged = wrong;
    for (int i = 0; i < 3; ++i) damaged[random() % damaged.size()] = static_cast<char>(random());
    damaged[4] = '\x02';  // the version: damage elsewhere could leave an answer
    datagrams.emplace_back(damaged);
    datagrams.emplace_back(right);
    datagrams.emplace_back(right);
    return datagrams;
  });
  const MibSession session = Session(agent);
  for (int round = 0; round < 200; ++round) {
    EXPECT_EQ(session.Get(kBase + L"7").value, L"s:7") << round;
    EXPECT_EQ(session.Get(kBase + L"8").value, L"s:8") << round;
  }
}

TEST(MisbehavingAgent, GroupsKeepNamesAndValuesTogether) {
  using Change = std::string (*)(AgentRequest);
  const auto missing = [](std::vector<std::wstring> values, std::size_t index) {
    values[index] = L"empty";
    return values;
  };
  const std::vector<std::wstring> before(4, L"s:before");
  const struct {
    const char* name;
    Change answer;
    HRESULT result;
    std::vector<std::wstring> values;
  } kCases[] = {
      {"in another order",
       [](AgentRequest r) {
         std::reverse(r.names.begin(), r.names.end());
         return r.AnswerLastArcs();
       },
       S_OK, LastArcs(4)},
      {"too few at a time",
       [](AgentRequest r) {
         r.names.resize((r.names.size() + 1) / 2);
         return r.AnswerLastArcs();
       },
       S_OK, LastArcs(4)},
      {"too many",
       [](AgentRequest r) {
         r.names.push_back(r.names[0] + '\x05');
         r.names.insert(r.names.begin(), r.names[0] + '\x05');
         return r.AnswerLastArcs();
       },
       S_OK, LastArcs(4)},
      {"one of another name",
       [](AgentRequest r) { return r.Rename('\x09', '\x02').AnswerLastArcs(); }, S_FALSE,
       missing(LastArcs(4), 1)},
      {"one of no type",
       [](AgentRequest r) {
         return r.Answer({Ber(0x04, "1"), Ber(0x04, "2"), Ber(0x05, ""), Ber(0x04, "4")});
       },
       S_FALSE, missing(LastArcs(4), 2)},
      {"a culprit by name (version 1)",
       [](AgentRequest r) {
         for (std::size_t i = 0; i < r.names.size(); ++i) {
           if (r.names[i].back() == '\x03') return r.Fail(2, static_cast<int>(i) + 1);
         }
         return r.AnswerLastArcs();
       },
       S_FALSE, missing(LastArcs(4), 2)},
      {"a culprit without a name",
       [](AgentRequest r) {
         const auto is3 = [](const std::string& name) { return name.back() == '\x03'; };
         return std::any_of(r.names.begin(), r.names.end(), is3) ? r.Fail(2) : r.AnswerLastArcs();
       },
       S_FALSE, missing(LastArcs(4), 2)},
      {"a culprit beyond the end", [](AgentRequest r) { return r.Fail(2, 99); },
       SnmpStatusResult(2), before},
      {"always failing", [](AgentRequest r) { return r.Fail(5, 1); }, SnmpStatusResult(5), before},
      {"other names only", [](AgentRequest r) { return r.Extend().AnswerLastArcs(); },
       kNoAnswerToIt, before},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    UdpRelay agent([&row](const std::string& request) -> Datagrams {
      return {row.answer(AgentRequest(request))};
    });
    const MibSession session = Session(agent);
    const GroupRead group = session.GetGroup(Names(4));
    EXPECT_HR(group.result, row.result);
    EXPECT_EQ(group.values, row.values);
    EXPECT_LE(agent.Requests(), 16);
    EXPECT_EQ(session.Failure().empty(), row.result == S_OK);
  }
}

TEST(MisbehavingAgent, LargeRequestsShrinkOnce) {
  const struct {
    const char* name;
    std::string (*answer)(const AgentRequest&);  // to more than 6 OIDs
    int firstRequests;
  } kCases[] = {
      // 20 | 10 | 5 5 | 5 5
      {"tooBig", [](const AgentRequest& r) { return r.Fail(1); }, 6},
      {"genErr", [](const AgentRequest& r) { return r.Fail(5); }, 6},
      {"tooBig about the first", [](const AgentRequest& r) { return r.Fail(1, 1); }, 6},
      // 20 | 1 | 10 of the 19 | 1 | 9 in 5 and 4 | 9 in 5 and 4
      {"silence", [](const AgentRequest&) { return std::string(); }, 8},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    UdpRelay agent([&row](const std::string& bytes) -> Datagrams {
      const AgentRequest request(bytes);
      if (request.names.size() <= 6) return {request.AnswerLastArcs()};
      const std::string answer = row.answer(request);
      return answer.empty() ? Datagrams() : Datagrams{answer};
    });
    const MibSession session = Session(agent, 600);
    const GroupRead first = session.GetGroup(Names(20));
    EXPECT_HR(first.result, S_OK) << testing::PrintToString(session.Failure());
    EXPECT_EQ(first.values, LastArcs(20));
    EXPECT_EQ(agent.Requests(), row.firstRequests);
    const int before = agent.Requests();
    EXPECT_EQ(session.GetGroup(Names(20)).values, LastArcs(20));
    EXPECT_EQ(agent.Requests() - before, 4);
  }
}

TEST(MisbehavingAgent, EndsWithinItsTimes) {
  const auto elapsed = [](auto operation) {
    const Clock::time_point start = Clock::now();
    operation();
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
  };
  UdpRelay silent([](const std::string&) { return Datagrams(); });
  UdpRelay dripping([](const std::string& bytes) {
    AgentRequest request(bytes);
    request.id.back() ^= 1;
    return Datagrams(40, Datagram(request.AnswerLastArcs(), 20));
  });
  // It answers, but takes its time: a group of many requests stops at its limit.
  UdpRelay slow([](const std::string& request) -> Datagrams {
    return {{AgentRequest(request).Fail(5), 80}};
  });
  constexpr int kSlackMs = 1'500;  // with a sanitizer on a busy machine
  for (UdpRelay* const agent : {&silent, &dripping}) {
    const MibSession session = Session(*agent, 100, 2);
    EXPECT_LT(elapsed([&] { EXPECT_HR(session.Get(kBase + L"1").result, kTimedOut); }),
              300 + kSlackMs);
    EXPECT_LT(elapsed([&] { EXPECT_HR(session.GetGroup(Names(20)).result, kTimedOut); }),
              400 + kSlackMs);
    EXPECT_LT(elapsed([&] { EXPECT_HR(session.Set(kBase + L"1", _variant_t(1L)), kTimedOut); }),
              300 + kSlackMs);
  }
  EXPECT_EQ(silent.Requests(), 3 + (3 + 1) + 1);
  // Silence from an agent that answered as many is no question of size.
  UdpRelay dying([n = 0](const std::string& bytes) mutable -> Datagrams {
    if (n++ > 0) return {};
    return {AgentRequest(bytes).AnswerLastArcs()};
  });
  const MibSession known = Session(dying, 100, 2);
  EXPECT_HR(known.GetGroup(Names(20)).result, S_OK);
  EXPECT_HR(known.GetGroup(Names(20)).result, kTimedOut);
  EXPECT_EQ(dying.Requests(), 1 + 3);
  const MibSession session = Session(slow, 100, 0);
  EXPECT_LT(elapsed([&] { EXPECT_TRUE(FAILED(session.GetGroup(Names(40)).result)); }),
            400 + kSlackMs);
  EXPECT_LE(slow.Requests(), 6);
}

TEST(MisbehavingAgent, RetriesFindAnAnswerThatWasLostOrLate) {
  int seen = 0;
  UdpRelay agent([&seen](const std::string& bytes) -> Datagrams {
    if (++seen % 3 != 0) return {};
    return {AgentRequest(bytes).AnswerLastArcs()};
  });
  const MibSession session = Session(agent, 100, 2);
  EXPECT_EQ(session.Get(kBase + L"3").value, L"s:3");
  EXPECT_EQ(agent.Requests(), 3);

  // The answer to the first get arrives while the second waits.
  UdpRelay late([](const std::string& bytes) -> Datagrams {
    const AgentRequest request(bytes);
    if (request.names[0].back() == '\x01') return {{request.AnswerLastArcs(), 300}};
    return {request.AnswerLastArcs()};
  });
  const MibSession patient = Session(late, 150, 0);
  EXPECT_HR(patient.Get(kBase + L"1").result, kTimedOut);
  ASSERT_HR(patient->SetTimeout(5'000, 0), S_OK);
  EXPECT_EQ(patient.Get(kBase + L"2").value, L"s:2");
}

TEST(MisbehavingAgent, NextOidsOnlyIncrease) {
  const struct {
    const char* name;
    char lastArc;
    std::uint32_t chars;
    HRESULT result;
  } kCases[] = {
      {"the next", 6, 64, S_OK},
      {"the same again", 5, 64, kNoAnswerToIt},
      {"an earlier one", 4, 64, kNoAnswerToIt},
      {"a buffer of its size", 6, 22, S_OK},
      {"a buffer too small by one", 6, 21, E_OUTOFMEMORY},
      {"no buffer", 6, 0, E_OUTOFMEMORY},
  };
  for (const auto& row : kCases) {
    UdpRelay agent([&row](const std::string& bytes) -> Datagrams {
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
