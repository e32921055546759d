#include "host/common/name_lookup.h"

#include <netdb.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstring>
#include <future>
#include <memory>
#include <thread>
#include <utility>

namespace Corvane::Host {
namespace {

using Addresses = std::vector<SocketAddress>;

Addresses Resolve(const std::string& host, std::uint16_t port, int flags) {
  addrinfo hints{};
  hints.ai_flags = flags;
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_DGRAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found) != 0) return {};
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owned(found, &freeaddrinfo);
  Addresses addresses;
  for (const addrinfo* each = found; each; each = each->ai_next) {
    SocketAddress address{};
    if (each->ai_addrlen > sizeof(address)) continue;
    std::memcpy(&address, each->ai_addr, each->ai_addrlen);
    addresses.push_back(address);
  }
  // A device often has an address of each family, and its agent listens at IPv4 alone.
  std::stable_partition(addresses.begin(), addresses.end(), [](const SocketAddress& address) {
    return address.any.sa_family == AF_INET;
  });
  return addresses;
}

}  // namespace

Addresses LookUp(const std::string& host, std::uint16_t port,
                 std::chrono::steady_clock::time_point deadline) {
  if (Addresses literal = Resolve(host, port, AI_NUMERICHOST | AI_NUMERICSERV); !literal.empty()) {
    return literal;
  }
  std::packaged_task<Addresses()> task(
      [host, port] { return Resolve(host, port, AI_NUMERICSERV); });
  std::future<Addresses> result = task.get_future();
  std::thread(std::move(task)).detach();
  if (result.wait_until(deadline) != std::future_status::ready) return {};
  return result.get();
}

}  // namespace Corvane::Host
