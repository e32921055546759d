#include "tests/support/peers/udp_relay.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace Corvane::Test {
namespace {

constexpr std::size_t kMaxDatagram = 65'536;

std::vector<Datagram> Pass(const std::string& bytes) { return {bytes}; }

void SendTo(int from, const Datagram& datagram, const sockaddr_in& to) {
  if (datagram.delayMs > 0) poll(nullptr, 0, datagram.delayMs);
  std::uint16_t port = 0;
  const int sender = datagram.fromElsewhere ? BindToLoopback(&port) : from;
  sendto(sender, datagram.bytes.data(), datagram.bytes.size(), 0,
         reinterpret_cast<const sockaddr*>(&to), sizeof(to));
  if (sender != from) close(sender);
}

}  // namespace

sockaddr_in LoopbackAddress(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  return address;
}

int BindToLoopback(std::uint16_t* port) {
  const int bound = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = LoopbackAddress(0);
  socklen_t size = sizeof(address);
  if (bind(bound, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
      getsockname(bound, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    throw std::system_error(errno, std::generic_category(), "bind");
  }
  *port = ntohs(address.sin_port);
  return bound;
}

UdpRelay::UdpRelay(std::uint16_t serverPort, Script toServer, Script toClient)
    : m_fromClient(toServer ? std::move(toServer) : Pass),
      m_fromServer(toClient ? std::move(toClient) : Pass),
      m_front(BindToLoopback(&m_port)) {
  if (serverPort != 0) {
    std::uint16_t own = 0;
    m_back = BindToLoopback(&own);
    m_server = LoopbackAddress(serverPort);
  }
  if (pipe(m_wake) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
  m_thread = std::thread([this] { Run(); });
}

UdpRelay::UdpRelay(Script answer) : UdpRelay(0, std::move(answer), {}) {}

UdpRelay::~UdpRelay() {
  close(m_wake[1]);
  m_thread.join();
  close(m_wake[0]);
  close(m_front);
  if (m_back >= 0) close(m_back);
}

void UdpRelay::Run() {
  std::string block(kMaxDatagram, '\0');
  sockaddr_in client{};
  pollfd polled[] = {{m_wake[0], POLLIN, 0}, {m_front, POLLIN, 0}, {m_back, POLLIN, 0}};
  while (poll(polled, 3, -1) >= 0 && polled[0].revents == 0) {
    for (const pollfd& each : polled) {
      if (each.revents == 0) continue;
      const bool isClient = each.fd == m_front;
      socklen_t size = sizeof(client);
      const ssize_t bytes = recvfrom(each.fd, block.data(), block.size(), 0,
                                     isClient ? reinterpret_cast<sockaddr*>(&client) : nullptr,
                                     isClient ? &size : nullptr);
      if (bytes < 0) continue;
      if (isClient) ++m_requests;
      const std::string datagram = block.substr(0, static_cast<std::size_t>(bytes));
      for (const Datagram& next : (isClient ? m_fromClient : m_fromServer)(datagram)) {
        const bool answer = !isClient || m_back < 0;
        SendTo(answer ? m_front : m_back, next, answer ? client : m_server);
      }
    }
  }
}

}  // namespace Corvane::Test
