// A network of a test program's own, where nobody else has a port (Linux).
#ifndef CORVANE_TESTS_SUPPORT_PEERS_PRIVATE_NETWORK_H_
#define CORVANE_TESTS_SUPPORT_PEERS_PRIVATE_NETWORK_H_

#include <string>

namespace Corvane::Test {

// Runs this program again, with the same arguments, in a user and network namespace of its own,
// where it may bind every port of 127.0.0.1 and [::1]; for main, before there are threads. Gives
// that run's exit status, or -1 where the tests are to run: in that run, and here if the kernel
// refuses it one. It dies with this process.
int RunInPrivateNetwork(char** arguments);

// Why this process has no such network; empty when it has.
std::string PrivateNetworkFailure();

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_PEERS_PRIVATE_NETWORK_H_
