// Groups of values, against an agent that answers by a rule, without a network.
#include "host/snmp/snmp_group.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "base/utf8.h"
#include "corvane/error_codes.h"
#include "tests/support/hr.h"

namespace Corvane::Test {
namespace {

using Host::SnmpReply;
using Names = std::vector<Oid>;

constexpr HRESULT kTimedOut = ResultFromError(kErrorTimeout);

// The names that were asked for, in place of which others may be answered, unless the reply has a
// failure.
using Rule = std::function<void(Names* names, SnmpReply* reply)>;

Rule Fail(long status, long index = 0) {
  return [=](Names*, SnmpReply* reply) {
    reply->errorStatus = status;
    reply->errorIndex = index;
  };
}

Names::iterator Named(Names* names, std::uint32_t lastArc) {
  return std::find_if(names->begin(), names->end(),
                      [lastArc](const Oid& name) { return name.back() == lastArc; });
}

struct Agent {
  Rule rule;
  std::string requests{};  // "20 10x3": the OIDs of each, and its tries
  Host::SnmpGroupSizes sizes{};

  SnmpReply Answer(const Host::SnmpRequest& request, const Host::SnmpPatience& patience) {
    requests += (requests.empty() ? "" : " ") + std::to_string(request.oids.size());
    if (patience.tries != 1) requests += 'x' + std::to_string(patience.tries);
    Names names;
    for (const Oid* const name : request.oids) names.push_back(*name);
    SnmpReply reply;
    if (rule) rule(&names, &reply);
    if (FAILED(reply.result) || reply.errorStatus != SNMP_ERR_NOERROR) return reply;
    for (const Oid& name : names) {
      const std::vector<oid> arcs(name.begin(), name.end());
      const std::string text = std::to_string(name.back());
      netsnmp_variable_list* list = reply.variables.release();
      const int type = name.back() == 99 ? ASN_NULL : ASN_OCTET_STR;
      snmp_varlist_add_variable(&list, arcs.data(), arcs.size(), static_cast<u_char>(type),
                                text.data(), text.size());
      reply.variables.reset(list);
    }
    return reply;
  }

  // Of 1.3.6.1.1 and so on, each the text of its last arc, "-" for none, or a failure.
  std::string Read(std::uint32_t count, std::uint32_t tries = 1, std::size_t arcs = 5,
                   std::chrono::hours left = std::chrono::hours(1)) {
    Names names;
    std::vector<const Oid*> wanted;
    for (std::uint32_t i = 1; i <= count; ++i) {
      names.emplace_back(Oid{1, 3, 6, 1}).resize(arcs, 200);
      names.back().back() = i;
    }
    for (const Oid& name : names) wanted.push_back(&name);
    requests.clear();
    const Host::SnmpPatience patience = {std::chrono::seconds(1), tries,
                                         std::chrono::steady_clock::now() + left};
    const auto ask = [this](const auto& request, const auto& time) {
      return Answer(request, time);
    };
    std::string shown;
    for (const auto& datum : Host::SnmpGroupRead(ask, patience, &sizes, wanted).Run()) {
      const auto* const text = std::get_if<std::wstring>(&datum.value);
      const bool came = datum.result == S_OK && text;
      shown += (shown.empty() ? "" : " ") + (came ? ToUtf8(*text) : HrText(datum.result));
    }
    return shown;
  }
};

std::string Counted(int count) {
  std::string text = "1";
  for (int i = 2; i <= count; ++i) text += ' ' + std::to_string(i);
  return text;
}

TEST(SnmpGroup, KeepsNamesAndValuesTogether) {
  const struct {
    const char* name;
    Rule rule;
    std::string values, requests;
  } kCases[] = {
      {"as asked", {}, "1 2 3 4", "4"},
      {"in another order",
       [](Names* names, SnmpReply*) { std::reverse(names->begin(), names->end()); }, "1 2 3 4",
       "4"},
      {"too few at a time",
       [](Names* names, SnmpReply*) { names->resize((names->size() + 1) / 2); }, "1 2 3 4",
       "4 2 1"},
      {"too many",
       [](Names* names, SnmpReply*) {
         names->push_back(names->front());
         names->back().push_back(5);
       },
       "1 2 3 4", "4"},
      {"one of another name",
       [](Names* names, SnmpReply*) {
         if (const auto name = Named(names, 2); name != names->end()) name->back() = 9;
       },
       "1 0x80072F78 3 4", "4 1"},
      {"one longer by an arc",
       [](Names* names, SnmpReply*) {
         if (const auto name = Named(names, 2); name != names->end()) name->push_back(1);
       },
       "1 0x80072F78 3 4", "4 1"},
      {"other names only",
       [](Names* names, SnmpReply*) {
         for (Oid& name : *names) name.push_back(1);
       },
       "0x80072F78 0x80072F78 0x80072F78 0x80072F78", "4 2 1 1 2 1 1"},
      {"a culprit by its place",
       [](Names* names, SnmpReply* reply) {
         const auto name = Named(names, 3);
         if (name != names->end()) Fail(2, name - names->begin() + 1)(names, reply);
       },
       "1 2 0x80040602 4", "4 3"},
      {"a culprit without its place",
       [](Names* names, SnmpReply* reply) {
         if (Named(names, 3) != names->end()) Fail(2)(names, reply);
       },
       "1 2 0x80040602 4", "4 2 2 1 1"},
      {"a culprit beyond the end", Fail(6, 99), "0x80040606 0x80040606 0x80040606 0x80040606",
       "4 2 1 1 2 1 1"},
      {"always failing", Fail(5, 1), "0x80040605 0x80040605 0x80040605 0x80040605",
       "4 2 1 1 2 1 1"},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    Agent agent{row.rule};
    EXPECT_EQ(agent.Read(4), row.values);
    EXPECT_EQ(agent.requests, row.requests);
  }
}

// Each fails what has more than 6 names. The session remembers it.
TEST(SnmpGroup, LargeRequestsShrinkOnce) {
  const struct {
    const char* name;
    Rule rule;
    const char* requests;
  } kCases[] = {
      {"tooBig", Fail(1), "20x3 10x3 5x3 5x3 5x3 5x3"},
      {"genErr", Fail(5), "20x3 10x3 5x3 5x3 5x3 5x3"},
      {"tooBig about the first", Fail(1, 1), "20x3 10x3 5x3 5x3 5x3 5x3"},
      {"silence", [](Names*, SnmpReply* reply) { reply->result = kTimedOut; },
       "20x3 1 10x3 1 5x3 4x3 5x3 4x3"},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    Agent agent{[&row](Names* names, SnmpReply* reply) {
      if (names->size() > 6) row.rule(names, reply);
    }};
    EXPECT_EQ(agent.Read(20, 3), Counted(20));
    EXPECT_EQ(agent.requests, row.requests);
    EXPECT_EQ(agent.Read(20, 3), Counted(20));
    EXPECT_EQ(agent.requests, "5x3 5x3 5x3 5x3");
  }
}

TEST(SnmpGroup, IsBoundedByNumberAndSizeAndTime) {
  Agent agent;
  EXPECT_EQ(agent.Read(70), Counted(70));
  EXPECT_EQ(agent.requests, "60 10");
  agent.Read(25, 1, 100);  // 202 bytes each
  EXPECT_EQ(agent.requests, "5 5 5 5 5");
  EXPECT_EQ(agent.Read(1, 1, 5, std::chrono::hours(0)), HrText(kTimedOut));
  EXPECT_EQ(agent.requests, "");
}

TEST(SnmpGroup, SilenceEndsIt) {
  bool silent = true;
  Agent agent{[&silent](Names*, SnmpReply* reply) {
    if (silent) reply->result = kTimedOut;
  }};
  const std::string nothing = HrText(kTimedOut);
  EXPECT_EQ(agent.Read(3, 2), nothing + ' ' + nothing + ' ' + nothing);
  EXPECT_EQ(agent.requests, "3x2 1");
  silent = false;
  EXPECT_EQ(agent.Read(3, 2), "1 2 3");
  // Of one that answered as many it is no question of size.
  silent = true;
  EXPECT_EQ(agent.Read(3, 2), nothing + ' ' + nothing + ' ' + nothing);
  EXPECT_EQ(agent.requests, "3x2");
}

}  // namespace
}  // namespace Corvane::Test
