// One SNMP session to one agent over UDP (RFC 3417).
#ifndef CORVANE_HOST_SNMP_SNMP_SESSION_H_
#define CORVANE_HOST_SNMP_SNMP_SESSION_H_

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/oid.h"
#include "host/common/name_lookup.h"
#include "host/snmp/netsnmp.h"
#include "host/snmp/snmp_identity.h"
#include "host/snmp/snmp_value.h"
#include "host/snmp/usm_user.h"

namespace Corvane::Host {

struct SnmpRequest {
  int command = SNMP_MSG_GET;
  std::vector<const Oid*> oids;
  const SnmpSetting* setting = nullptr;  // SNMP_MSG_SET: of the one OID
};

// How long an exchange may take: `tries` of `timeout` each, but not beyond `deadline`.
struct SnmpPatience {
  std::chrono::milliseconds timeout{0};
  std::uint32_t tries = 1;
  std::chrono::steady_clock::time_point deadline;
};

struct VariablesDeleter {
  void operator()(netsnmp_variable_list* variables) const { snmp_free_varbind(variables); }
};

struct SnmpReply {
  HRESULT result = S_OK;  // S_OK: the agent answered, maybe with an error status
  long errorStatus = SNMP_ERR_NOERROR;
  long errorIndex = 0;  // from 1: the variable that the status is about; otherwise of all
  std::unique_ptr<netsnmp_variable_list, VariablesDeleter> variables;
};

// One thread at a time. Opens itself, at each exchange where it is not: resolves the name, then for
// version 3 asks for the engine ID. Only datagrams of the agent's own address and port reach it,
// and of these only the answer to the request at hand, by its numbers, counts; all else is read and
// forgotten. A failed exchange closes it, so that the next begins anew: a late answer finds no
// socket, and an agent that moved, or begins its clock again, is found.
class SnmpSession {
 public:
  SnmpSession(std::string host, std::uint16_t port, std::unique_ptr<SnmpIdentity> identity);
  SnmpSession(const SnmpSession&) = delete;
  SnmpSession& operator=(const SnmpSession&) = delete;
  ~SnmpSession() { Close(); }

  SnmpReply Exchange(const SnmpRequest& request, const SnmpPatience& patience);
  void Close();

 private:
  struct Pending;

  HRESULT Open(const SocketAddress& address);
  SnmpReply ExchangeOpen(const SnmpRequest& request, const SnmpPatience& patience);
  HRESULT DiscoverEngine(const SnmpPatience& patience);
  SnmpReply Transact(netsnmp_pdu* (*make)(const SnmpRequest&), const SnmpRequest& request,
                     const SnmpPatience& patience);
  bool Send(netsnmp_pdu* (*make)(const SnmpRequest&), const SnmpRequest& request,
            const SnmpPatience& patience, Pending* pending);
  void Await(Pending* pending, const SnmpPatience& patience);
  void Read(Pending* pending);

  const std::string m_host;
  const std::uint16_t m_port;
  const std::unique_ptr<SnmpIdentity> m_identity;

  void* m_handle = nullptr;              // net-snmp's, of its single-session API
  netsnmp_session* m_session = nullptr;  // its settings; valid with the handle
  int m_socket = -1;                     // the handle's
  UsmUser m_user;
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_SNMP_SNMP_SESSION_H_
