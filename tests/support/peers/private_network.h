// A network of a test program's own, where nobody else has a port (Linux).
#ifndef CORVANE_TESTS_SUPPORT_PEERS_PRIVATE_NETWORK_H_
#define CORVANE_TESTS_SUPPORT_PEERS_PRIVATE_NETWORK_H_

#include <string>

namespace Corvane::Test {

// Begins this program again, with the same arguments, in a user and network namespace of its own,
// where it may bind every port of 127.0.0.1 and [::1]; for main. Returns in that run, and at once
// where the kernel refuses such a namespace.
void EnterPrivateNetwork(char** arguments);

// Why this process has no such network; empty when it has.
std::string PrivateNetworkFailure();

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_PEERS_PRIVATE_NETWORK_H_
