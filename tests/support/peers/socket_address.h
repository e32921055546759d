// A host transport of the tests' own for IPP: HTTP/1.1 over plain blocking sockets (Windows, whose
// reference host has no network).
#ifndef CORVANE_TESTS_SUPPORT_PEERS_SOCKET_ADDRESS_H_
#define CORVANE_TESTS_SUPPORT_PEERS_SOCKET_ADDRESS_H_

#include <atomic>
#include <cstdint>

#include "corvane/address.h"

namespace Corvane::Test {

// The device at a port of 127.0.0.1, to which every port asked for leads, without TLS. Its host
// text is a USB printer port, which nobody probes. One reference, the caller's; null when there are
// no sockets.
//
// Each exchange has a connection of its own. SetOption is its limit of silence in milliseconds, 30
// seconds without one. Credentials are kept and never sent, and there is no SNMP. Failures are
// those of corvane/error_codes.h. Cancel takes effect with the next block, of 64 KB at most.
// `requests` counts the requests made, and outlives the address.
Address* CreateSocketAddress(std::uint16_t port, std::atomic<int>* requests);

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_PEERS_SOCKET_ADDRESS_H_
