// Many values of one agent in few requests.
#ifndef CORVANE_HOST_SNMP_SNMP_GROUP_H_
#define CORVANE_HOST_SNMP_SNMP_GROUP_H_

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

#include "host/snmp/snmp_session.h"
#include "host/snmp/snmp_value.h"

namespace Corvane::Host {

// What a connection has learned about its agent.
struct SnmpGroupSizes {
  std::size_t limit = 60;    // OIDs that a request may have: less once a larger one went wrong
  std::size_t answered = 0;  // OIDs of the largest request that was answered
};

// Asks the agent, as SnmpSession::Exchange does.
using SnmpAsk = std::function<SnmpReply(const SnmpRequest&, const SnmpPatience&)>;

// Reads the values of `wanted`, which outlive it, once. A request that is too big for the agent,
// makes it fail or gets no answer is asked in halves, and `sizes` remembers that. An agent that
// fails a request for one OID's sake is asked for the others again. The requests are bounded in
// number as well as in time, whatever the agent answers.
class SnmpGroupRead {
 public:
  SnmpGroupRead(SnmpAsk ask, const SnmpPatience& patience, SnmpGroupSizes* sizes,
                const std::vector<const Oid*>& wanted);

  // One for each OID: a value came for it only when the answer had its very name.
  std::vector<SnmpDatum> Run();

 private:
  using Part = std::span<const std::size_t>;  // indices into m_wanted

  std::size_t PartSize(std::size_t first) const;
  bool Read(Part part);
  bool ReadHalves(Part part);
  bool ReadAfterSilence(Part part, HRESULT failure);
  bool Take(const SnmpReply& reply, Part part);
  bool Resolve(const SnmpReply& reply, Part part);
  SnmpReply Ask(Part part, std::uint32_t tries);
  void Shrink(std::size_t failedSize);
  void FailAll(Part part, HRESULT failure);
  bool IsOver() const { return FAILED(m_over); }

  const SnmpAsk m_ask;
  const SnmpPatience m_patience;
  SnmpGroupSizes* const m_sizes;
  const std::vector<const Oid*>& m_wanted;
  std::vector<SnmpDatum> m_data;
  std::size_t m_requestsLeft;
  HRESULT m_over = S_OK;  // why nothing more is asked
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_SNMP_SNMP_GROUP_H_
