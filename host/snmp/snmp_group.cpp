#include "host/snmp/snmp_group.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "corvane/error_codes.h"
#include "host/snmp/snmp_errors.h"

namespace Corvane::Host {
namespace {

// A request in one Ethernet frame: a device need not put fragments together. Headers of version 3
// may take the rest.
constexpr std::size_t kMaxRequestBytes = 1'200;
// Against an agent that fails every request anew: single reads would not cost more.
constexpr std::size_t kRequestsPerOid = 2;
constexpr std::size_t kMoreRequests = 8;

// In a request: name, null value, and the headers of both and of the pair.
std::size_t WireBytes(const Oid& oid) {
  constexpr std::size_t kHeaders = 8;
  std::size_t bytes = kHeaders;
  for (const std::uint32_t arc : oid) {
    for (std::uint32_t rest = arc; rest >= 0x80; rest >>= 7) ++bytes;
    ++bytes;
  }
  return bytes;
}

bool IsAboutOneName(long status) {
  return status == SNMP_ERR_NOSUCHNAME || status == SNMP_ERR_NOACCESS ||
         status == SNMP_ERR_AUTHORIZATIONERROR;
}

const netsnmp_variable_list* FindInGroup(const SnmpReply& reply, const Oid& name) {
  const netsnmp_variable_list* variable = reply.variables.get();
  while (variable && !std::equal(name.begin(), name.end(), variable->name,
                                 variable->name + variable->name_length)) {
    variable = variable->next_variable;
  }
  return variable;
}

}  // namespace

SnmpGroupRead::SnmpGroupRead(SnmpAsk ask, const SnmpPatience& patience, SnmpGroupSizes* sizes,
                             const std::vector<const Oid*>& wanted)
    : m_ask(std::move(ask)),
      m_patience(patience),
      m_sizes(sizes),
      m_wanted(wanted),
      m_data(wanted.size()),
      m_requestsLeft(kRequestsPerOid * wanted.size() + kMoreRequests) {}

std::vector<SnmpDatum> SnmpGroupRead::Run() {
  std::vector<std::size_t> all(m_wanted.size());
  std::iota(all.begin(), all.end(), std::size_t{0});
  for (std::size_t first = 0; first < all.size();) {
    const std::size_t size = PartSize(first);
    Read(Part(all).subspan(first, size));
    first += size;
  }
  return std::move(m_data);
}

std::size_t SnmpGroupRead::PartSize(std::size_t first) const {
  std::size_t size = 0;
  for (std::size_t bytes = 0; first + size < m_wanted.size() && size < m_sizes->limit; ++size) {
    bytes += WireBytes(*m_wanted[first + size]);
    if (size > 0 && bytes > kMaxRequestBytes) break;
  }
  return size;
}

// True when a value, or the lack of one, came for every OID without the agent failing.
bool SnmpGroupRead::Read(Part part) {
  if (part.empty()) return true;
  if (part.size() > m_sizes->limit) return ReadHalves(part);
  const SnmpReply reply = Ask(part, m_patience.tries);
  if (reply.result == ResultFromError(kErrorTimeout) && part.size() > 1 &&
      part.size() > m_sizes->answered && !IsOver()) {
    return ReadAfterSilence(part, reply.result);
  }
  if (FAILED(reply.result)) m_over = reply.result;
  if (IsOver()) {
    FailAll(part, m_over);
    return false;
  }
  return Take(reply, part);
}

bool SnmpGroupRead::ReadHalves(Part part) {
  const std::size_t half = (part.size() + 1) / 2;
  const bool first = Read(part.first(half));
  return Read(part.subspan(half)) && first;
}

// Either the device is silent, or it drops what is too big for it: one OID, asked once, tells.
bool SnmpGroupRead::ReadAfterSilence(Part part, HRESULT failure) {
  const SnmpReply reply = Ask(part.first(1), 1);
  if (FAILED(reply.result) || IsOver()) {
    m_over = failure;
    FailAll(part, failure);
    return false;
  }
  Shrink(part.size());
  const bool first = Take(reply, part.first(1));
  return Read(part.subspan(1)) && first;
}

bool SnmpGroupRead::Take(const SnmpReply& reply, Part part) {
  m_sizes->answered = std::max(m_sizes->answered, part.size());
  if (reply.errorStatus != SNMP_ERR_NOERROR) return Resolve(reply, part);
  std::vector<std::size_t> missing;
  for (const std::size_t index : part) {
    if (const netsnmp_variable_list* const variable = FindInGroup(reply, *m_wanted[index])) {
      m_data[index] = DatumOf(*variable);
    } else {
      missing.push_back(index);
    }
  }
  if (missing.empty()) return true;
  if (missing.size() < part.size()) return Read(missing);
  if (part.size() > 1) return ReadHalves(part);
  FailAll(part, ResultFromError(kErrorInvalidResponse));
  return false;
}

bool SnmpGroupRead::Resolve(const SnmpReply& reply, Part part) {
  const HRESULT failure = ResultFromErrorStatus(reply.errorStatus);
  if (part.size() == 1) {
    FailAll(part, failure);
    return false;
  }
  if (reply.errorStatus == SNMP_ERR_TOOBIG) Shrink(part.size());
  const auto culprit = static_cast<std::size_t>(reply.errorIndex) - 1;
  if (IsAboutOneName(reply.errorStatus) && culprit < part.size()) {
    FailAll(part.subspan(culprit, 1), failure);
    std::vector<std::size_t> others(part.begin(), part.end());
    others.erase(others.begin() + static_cast<std::ptrdiff_t>(culprit));
    return Read(others);
  }
  const bool whole = ReadHalves(part);
  if (whole) Shrink(part.size());  // it was the size, not an OID
  return whole;
}

SnmpReply SnmpGroupRead::Ask(Part part, std::uint32_t tries) {
  SnmpReply reply;
  if (!IsOver() && m_requestsLeft == 0) m_over = ResultFromError(kErrorInvalidResponse);
  if (!IsOver() && std::chrono::steady_clock::now() >= m_patience.deadline) {
    m_over = ResultFromError(kErrorTimeout);
  }
  reply.result = m_over;
  if (IsOver()) return reply;
  --m_requestsLeft;
  SnmpRequest request;
  for (const std::size_t index : part) request.oids.push_back(m_wanted[index]);
  return m_ask(request, {m_patience.timeout, tries, m_patience.deadline});
}

void SnmpGroupRead::Shrink(std::size_t failedSize) {
  m_sizes->limit = std::min(m_sizes->limit, (failedSize + 1) / 2);
}

void SnmpGroupRead::FailAll(Part part, HRESULT failure) {
  for (const std::size_t index : part) m_data[index].result = failure;
}

}  // namespace Corvane::Host
