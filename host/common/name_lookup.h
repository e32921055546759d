// Host names to socket addresses, within a limit.
#ifndef CORVANE_HOST_COMMON_NAME_LOOKUP_H_
#define CORVANE_HOST_COMMON_NAME_LOOKUP_H_

#include <netinet/in.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace Corvane::Host {

union SocketAddress {
  sockaddr any;
  sockaddr_in v4;
  sockaddr_in6 v6;
};

// The addresses of a name or literal, those of IPv4 first; empty when it has none. A literal needs
// no look-up; a name waits until `deadline` at most, and a resolver that hangs is left behind on a
// thread of its own. It may throw std::exception.
std::vector<SocketAddress> LookUp(const std::string& host, std::uint16_t port,
                                  std::chrono::steady_clock::time_point deadline);

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_COMMON_NAME_LOOKUP_H_
