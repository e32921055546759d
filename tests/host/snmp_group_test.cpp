// Groups of values, against agents that answer as the data say, without a network.
#include "host/snmp/snmp_group.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "base/utf8.h"
#include "corvane/error_codes.h"
#include "tests/support/cases.h"
#include "tests/support/hr.h"

namespace Corvane::Test {
namespace {

using Names = std::vector<Oid>;

struct Agent {
  Case behaviour{"", {}};
  std::string requests{};
  Host::SnmpGroupSizes sizes{};

  Host::SnmpReply Answer(const Host::SnmpRequest& request, const Host::SnmpPatience& patience) {
    requests += (requests.empty() ? "" : " ") + std::to_string(request.oids.size()) + 'x' +
                std::to_string(patience.tries);
    Names names;
    for (const Oid* const name : request.oids) names.push_back(*name);
    Host::SnmpReply reply;
    if (static_cast<long long>(names.size()) > behaviour.Number("above")) Spoil(&names, &reply);
    if (FAILED(reply.result) || reply.errorStatus != SNMP_ERR_NOERROR) return reply;
    for (const Oid& name : names) {
      const std::vector<oid> arcs(name.begin(), name.end());
      const std::string text = std::to_string(name.back());
      netsnmp_variable_list* list = reply.variables.release();
      snmp_varlist_add_variable(&list, arcs.data(), arcs.size(), ASN_OCTET_STR, text.data(),
                                text.size());
      reply.variables.reset(list);
    }
    return reply;
  }

  void Spoil(Names* names, Host::SnmpReply* reply) const {
    const auto about = behaviour.Number("about");
    auto culprit = names->begin();
    while (culprit != names->end() && about != 0 && culprit->back() != about) ++culprit;
    if (culprit == names->end()) return;
    const std::string change = behaviour.Text("change");
    if (change == "reversed") std::reverse(names->begin(), names->end());
    if (change == "half") names->resize((names->size() + 1) / 2);
    if (change == "more") names->emplace_back(names->front()).push_back(5);
    const auto end = about == 0 ? names->end() : culprit + 1;
    if (change == "renamed") culprit->back() = 9;
    if (change == "longer") std::for_each(culprit, end, [](Oid& name) { name.push_back(1); });
    if (behaviour.Text("status") == "silence") reply->result = ResultFromError(kErrorTimeout);
    reply->errorStatus = static_cast<long>(behaviour.Number("status"));
    reply->errorIndex = static_cast<long>(behaviour.Number("index"));
    if (behaviour.Text("index") == "place") reply->errorIndex = culprit - names->begin() + 1;
  }

  // Of 1.3.6.1.1 and so on, or of names of so many arcs.
  std::string Read(std::uint32_t count, std::size_t arcs = 5,
                   std::chrono::hours left = std::chrono::hours(1)) {
    Names names;
    std::vector<const Oid*> wanted;
    for (std::uint32_t i = 1; i <= count; ++i) {
      names.emplace_back(Oid{1, 3, 6, 1}).resize(arcs, 200);
      names.back().back() = i;
    }
    for (const Oid& name : names) wanted.push_back(&name);
    requests.clear();
    const Host::SnmpPatience patience = {std::chrono::seconds(1), 3,
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

TEST(SnmpGroup, KeepsNamesAndValuesTogetherInFewRequests) {
  for (const Case& c : ReadCases("host/snmp_groups.txt")) {
    SCOPED_TRACE(c.Where() + " " + c.Text("name"));
    Agent agent{c};
    const auto count = static_cast<std::uint32_t>(c.Number("count"));
    EXPECT_EQ(agent.Read(count), c.Text("values"));
    EXPECT_EQ(agent.requests, c.Text("requests"));
    EXPECT_EQ(agent.Read(count), c.Text("values"));
    EXPECT_EQ(agent.requests, c.Text("again"));
  }
}

TEST(SnmpGroup, IsBoundedByNumberAndSizeAndTime) {
  Agent agent;
  agent.Read(70);
  EXPECT_EQ(agent.requests, "60x3 10x3");
  agent.Read(25, 100);  // 202 bytes each
  EXPECT_EQ(agent.requests, "5x3 5x3 5x3 5x3 5x3");
  EXPECT_EQ(agent.Read(1, 5, std::chrono::hours(0)), "0x80072EE2");
  EXPECT_EQ(agent.requests, "");
  // Silence from one that has answered as many is no question of size.
  agent.behaviour = Case("", {{"status", "silence"}});
  agent.Read(60);
  EXPECT_EQ(agent.requests, "60x3");
}

}  // namespace
}  // namespace Corvane::Test
