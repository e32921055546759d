// SNMP sessions to a device on the network, by net-snmp.
#ifndef CORVANE_HOST_SNMP_MIB_CONNECTION_NETSNMP_H_
#define CORVANE_HOST_SNMP_MIB_CONNECTION_NETSNMP_H_

#include <memory>

#include "corvane/transport.h"
#include "host/common/last_failure.h"
#include "host/http/network_device.h"

namespace Corvane::Host {

// A session without a reference yet; it sends nothing before it is used. Null, with the reason in
// `lastFailure`, for options that no agent can be spoken to with. It may throw.
MIBConnection* MakeNetSnmpConnection(const NetworkDevice& device,
                                     std::shared_ptr<LastFailure> lastFailure);

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_SNMP_MIB_CONNECTION_NETSNMP_H_
