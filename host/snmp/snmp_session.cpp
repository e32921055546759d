#include "host/snmp/snmp_session.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "corvane/error_codes.h"
#include "host/snmp/snmp_errors.h"
#include "host/snmp/snmp_library.h"

namespace Corvane::Host {
namespace {

using Clock = std::chrono::steady_clock;

// From then on the socket takes datagrams of the peer alone, and tells when it is unreachable.
bool ConnectToPeer(int socket, const SocketAddress& peer) {
  const socklen_t size = peer.any.sa_family == AF_INET ? sizeof(peer.v4) : sizeof(peer.v6);
  return fcntl(socket, F_SETFD, FD_CLOEXEC) == 0 && fcntl(socket, F_SETFL, O_NONBLOCK) == 0 &&
         connect(socket, &peer.any, size) == 0;
}

// With SnmpLock held.
netsnmp_pdu* MakeSnmpRequest(const SnmpRequest& request) {
  netsnmp_pdu* const pdu = snmp_pdu_create(request.command);
  if (!pdu) return nullptr;
  for (const Oid* const name : request.oids) {
    const SnmpSetting* const setting = request.setting;
    const bool isNumber = setting && setting->type != ASN_OCTET_STR;
    const void* const content = !setting   ? nullptr
                                : isNumber ? static_cast<const void*>(&setting->number)
                                           : setting->octets.data();
    const std::size_t size = !setting   ? 0
                             : isNumber ? sizeof(setting->number)
                                        : setting->octets.size();
    const std::vector<oid> arcs(name->begin(), name->end());
    snmp_pdu_add_variable(pdu, arcs.data(), arcs.size(), setting ? setting->type : ASN_NULL,
                          content, size);
  }
  return pdu;
}

// A message without a user, which the agent answers with a report that has its engine ID (RFC 3414,
// 4). With SnmpLock held.
netsnmp_pdu* MakeSnmpProbe(const SnmpRequest&) {
  netsnmp_pdu* const pdu = snmp_pdu_create(SNMP_MSG_GET);
  if (!pdu) return nullptr;
  pdu->version = SNMP_VERSION_3;
  pdu->securityName = strdup("");
  pdu->securityLevel = SNMP_SEC_LEVEL_NOAUTH;
  pdu->securityModel = SNMP_SEC_MODEL_USM;
  return pdu;
}

int MillisecondsUntil(Clock::time_point when) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(when - Clock::now()).count();
  return static_cast<int>(std::clamp<std::int64_t>(left, 0, 60'000));
}

}  // namespace

// The request at hand, as net-snmp's callback sees it.
struct SnmpSession::Pending {
  bool done = false;
  bool abandoned = false;  // net-snmp still waits for it
  SnmpReply reply;
  Clock::time_point tryEnds;

  // The first word counts: closing the session ends an abandoned request as timed out.
  void Finish(HRESULT result) {
    if (!done) reply.result = result;
    done = true;
  }
  void Abandon(HRESULT result) {
    abandoned = true;
    Finish(result);
  }

  static int OnEvent(int operation, netsnmp_session* session, int, netsnmp_pdu* pdu,
                     void* context) {
    auto* const self = static_cast<Pending*>(context);
    switch (operation) {
      case NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE:
        self->Receive(pdu);
        break;
      case NETSNMP_CALLBACK_OP_TIMED_OUT:
        self->Finish(ResultFromError(kErrorTimeout));
        break;
      case NETSNMP_CALLBACK_OP_SEND_FAILED:
        self->Finish(ResultFromNetSnmp(session->s_snmp_errno, session->s_errno));
        break;
      case NETSNMP_CALLBACK_OP_RESEND:
        self->tryEnds = Clock::now() + std::chrono::microseconds(session->timeout);
        break;
      default:  // a security error: what was received follows
        break;
    }
    return 1;  // the request is finished with
  }

  void Receive(netsnmp_pdu* pdu) {
    if (pdu->command == SNMP_MSG_RESPONSE) {
      reply.errorStatus = pdu->errstat;
      reply.errorIndex = pdu->errindex;
      reply.variables.reset(std::exchange(pdu->variables, nullptr));
      Finish(S_OK);
    } else if (pdu->version == SNMP_VERSION_3) {
      Finish(ResultFromNetSnmp(snmpv3_get_report_type(pdu), 0));
    } else {
      Finish(ResultFromError(kErrorInvalidResponse));
    }
  }
};

SnmpSession::SnmpSession(std::string host, std::uint16_t port,
                         std::unique_ptr<SnmpIdentity> identity)
    : m_host(std::move(host)), m_port(port), m_identity(std::move(identity)) {}

void SnmpSession::Close() {
  if (!m_handle) return;
  const SnmpLock lock;
  if (m_user.IsMade()) {
    // What is known of the agent's clock is shared, too: an agent that began anew with an earlier
    // one is otherwise refused for ever.
    free_enginetime(m_session->securityEngineID, m_session->securityEngineIDLen);
    m_user.Forget();
  }
  snmp_sess_close(std::exchange(m_handle, nullptr));
}

HRESULT SnmpSession::Open(const SocketAddress& address) {
  const SnmpLock lock;
  netsnmp_ep endpoint{};
  netsnmp_transport* transport = nullptr;
  if (address.any.sa_family == AF_INET) {
    endpoint.a.sin = address.v4;
    transport = netsnmp_udp_transport(&endpoint, 0);
  } else {
    endpoint.a.sin6 = address.v6;
    transport = netsnmp_udp6_transport(&endpoint, 0);
  }
  if (!transport) return ResultFromNetSnmp(SNMPERR_NO_SOCKET, errno);
  if (!ConnectToPeer(transport->sock, address)) {
    transport->f_close(transport);
    netsnmp_transport_free(transport);
    return ResultFromError(kErrorCannotConnect);
  }
  m_socket = transport->sock;
  netsnmp_session settings;
  snmp_sess_init(&settings);
  m_identity->Lend(&settings);
  m_handle = snmp_sess_add(&settings, transport, nullptr, nullptr);  // owns the transport
  explicit_bzero(&settings, sizeof(settings));
  if (!m_handle) return E_OUTOFMEMORY;
  m_session = snmp_sess_session(m_handle);
  // A probe of its own would wait with the lock held.
  m_session->flags |= SNMP_FLAGS_DONT_PROBE;
  return S_OK;
}

SnmpReply SnmpSession::Exchange(const SnmpRequest& request, const SnmpPatience& patience) {
  if (m_handle) return ExchangeOpen(request, patience);
  const Clock::time_point lookUpEnds =
      std::min(patience.deadline, Clock::now() + patience.timeout * patience.tries);
  SnmpReply reply;
  reply.result = ResultFromError(kErrorNameNotResolved);
  for (const SocketAddress& address : LookUp(m_host, m_port, lookUpEnds)) {
    reply.result = Open(address);
    if (SUCCEEDED(reply.result)) reply = ExchangeOpen(request, patience);
    if (reply.result != ResultFromError(kErrorCannotConnect)) break;
  }
  return reply;
}

SnmpReply SnmpSession::ExchangeOpen(const SnmpRequest& request, const SnmpPatience& patience) {
  SnmpReply reply;
  if (m_identity->IsVersion3() && !m_user.IsMade()) reply.result = DiscoverEngine(patience);
  if (SUCCEEDED(reply.result)) reply = Transact(&MakeSnmpRequest, request, patience);
  if (FAILED(reply.result)) Close();
  return reply;
}

HRESULT SnmpSession::DiscoverEngine(const SnmpPatience& patience) {
  const SnmpReply reply = Transact(&MakeSnmpProbe, {}, patience);
  if (!m_handle) return reply.result;
  const SnmpLock lock;
  if (m_session->securityEngineIDLen == 0) {
    return FAILED(reply.result) ? reply.result : ResultFromError(kErrorInvalidResponse);
  }
  return m_user.Make(m_session) ? S_OK : E_OUTOFMEMORY;
}

SnmpReply SnmpSession::Transact(netsnmp_pdu* (*make)(const SnmpRequest&),
                                const SnmpRequest& request, const SnmpPatience& patience) {
  Pending pending;
  if (Send(make, request, patience, &pending)) Await(&pending, patience);
  if (pending.abandoned) Close();  // while the pointer that net-snmp has is good
  return std::move(pending.reply);
}

bool SnmpSession::Send(netsnmp_pdu* (*make)(const SnmpRequest&), const SnmpRequest& request,
                       const SnmpPatience& patience, Pending* pending) {
  int earlierError = 0;  // of the last datagram, as "port unreachable"; it would fail this one
  socklen_t size = sizeof(earlierError);
  getsockopt(m_socket, SOL_SOCKET, SO_ERROR, &earlierError, &size);

  const SnmpLock lock;
  const UsmUser::InList user(m_user);
  m_session->timeout = std::chrono::microseconds(patience.timeout).count();
  m_session->retries = static_cast<int>(patience.tries) - 1;
  netsnmp_pdu* const pdu = make(request);
  if (!pdu) {
    pending->Finish(E_OUTOFMEMORY);
    return false;
  }
  pending->tryEnds = Clock::now() + patience.timeout;
  if (snmp_sess_async_send(m_handle, pdu, &Pending::OnEvent, pending) != 0) return true;
  snmp_free_pdu(pdu);
  const HRESULT failure = ResultFromNetSnmp(m_session->s_snmp_errno, m_session->s_errno);
  pending->Finish(failure);
  return false;
}

void SnmpSession::Await(Pending* pending, const SnmpPatience& patience) {
  const Clock::time_point end =
      std::min(patience.deadline, Clock::now() + patience.timeout * patience.tries);
  while (!pending->done) {
    pollfd polled{m_socket, POLLIN, 0};
    const int events = poll(&polled, 1, MillisecondsUntil(std::min(pending->tryEnds, end)));
    const SnmpLock lock;
    const UsmUser::InList user(m_user);
    if (events > 0) Read(pending);
    const Clock::time_point now = Clock::now();
    if (!pending->done && now >= end) pending->Abandon(ResultFromError(kErrorTimeout));
    if (!pending->done && now >= pending->tryEnds) snmp_sess_timeout(m_handle);  // sends it again
  }
}

void SnmpSession::Read(Pending* pending) {
  netsnmp_large_fd_set ready;
  netsnmp_large_fd_set_init(&ready, FD_SETSIZE);
  netsnmp_large_fd_setfd(m_socket, &ready);
  const int read = snmp_sess_read2(m_handle, &ready);
  netsnmp_large_fd_set_cleanup(&ready);
  // A datagram that is no answer fails, too, and is forgotten; a refusal of the network is not.
  if (read != 0 && !pending->done && m_session->s_snmp_errno == SNMPERR_BAD_RECVFROM &&
      m_session->s_errno != EAGAIN) {
    pending->Abandon(ResultFromNetSnmp(SNMPERR_BAD_RECVFROM, m_session->s_errno));
  }
}

}  // namespace Corvane::Host
