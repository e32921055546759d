#include "tests/support/peers/loopback_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace Corvane::Test {
namespace {

std::size_t ContentLength(std::string_view head) {
  constexpr std::string_view kName = "\r\nContent-Length: ";
  const std::size_t at = head.find(kName);
  return at == head.npos ? 0 : std::strtoul(head.data() + at + kName.size(), nullptr, 10);
}

}  // namespace

int ListenOnLoopback(int backlog, std::uint16_t* port) {
  *port = 0;
  return ListenOnLoopbackPort(backlog, AF_INET, port);
}

int ListenOnLoopbackPort(int backlog, int family, std::uint16_t* port) {
  sockaddr_in ip4{};
  ip4.sin_family = AF_INET;
  ip4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  ip4.sin_port = htons(*port);
  sockaddr_in6 ip6{};
  ip6.sin6_family = AF_INET6;
  ip6.sin6_addr = in6addr_loopback;
  ip6.sin6_port = htons(*port);
  const bool isIp6 = family == AF_INET6;
  auto* const address =
      isIp6 ? reinterpret_cast<sockaddr*>(&ip6) : reinterpret_cast<sockaddr*>(&ip4);
  socklen_t size = isIp6 ? sizeof(ip6) : sizeof(ip4);
  const int listener = socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int reuse = *port != 0;  // what is left of a test before may still wait there
  if (setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof(reuse)) != 0 ||
      bind(listener, address, size) != 0 || listen(listener, backlog) != 0 ||
      getsockname(listener, address, &size) != 0) {
    throw std::system_error(errno, std::generic_category(), "listen");
  }
  *port = ntohs(isIp6 ? ip6.sin6_port : ip4.sin_port);
  return listener;
}

bool AnswersHttp(std::uint16_t port) {
  constexpr int kTimeoutMs = 10'000;
  constexpr std::string_view kRequest =
      "HEAD / HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n";
  const int client = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  pollfd polled{client, POLLIN, 0};
  char byte = 0;
  const bool answered =
      connect(client, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0 &&
      send(client, kRequest.data(), kRequest.size(), MSG_NOSIGNAL) > 0 &&
      poll(&polled, 1, kTimeoutMs) > 0 && recv(client, &byte, 1, 0) == 1;
  close(client);
  return answered;
}

bool LoopbackConnection::ReceiveMore() {
  char block[4096];
  const ssize_t bytes = recv(m_socket, block, sizeof(block), 0);
  if (bytes > 0) m_buffered.append(block, static_cast<std::size_t>(bytes));
  return bytes > 0;
}

std::string LoopbackConnection::TakeRequest(std::size_t size) {
  const std::lock_guard lock(m_server->m_mutex);
  m_server->m_requests.push_back(m_buffered.substr(0, size));
  m_buffered.erase(0, size);
  return m_server->m_requests.back();
}

std::string LoopbackConnection::ReadRequest() {
  do {
    const std::size_t end = m_buffered.find("\r\n\r\n");
    if (end == m_buffered.npos) continue;
    const std::size_t size = end + 4 + ContentLength(m_buffered.substr(0, end));
    if (m_buffered.size() >= size) return TakeRequest(size);
  } while (ReceiveMore());
  return {};
}

std::string LoopbackConnection::ReadThrough(std::string_view mark) {
  do {
    const std::size_t at = m_buffered.find(mark);
    if (at != m_buffered.npos) return TakeRequest(at + mark.size());
  } while (ReceiveMore());
  return {};
}

bool LoopbackConnection::Send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
  return true;
}

void LoopbackConnection::HalfClose() { shutdown(m_socket, SHUT_WR); }

bool LoopbackConnection::Pause(int milliseconds) {
  pollfd polled{m_socket, POLLRDHUP, 0};
  return poll(&polled, 1, milliseconds) == 0;
}

void LoopbackConnection::WaitForClose() {
  char block[4096];
  while (recv(m_socket, block, sizeof(block), 0) > 0) {
  }
}

LoopbackServer::LoopbackServer(Script script, std::uint16_t port, int family)
    : m_script(std::move(script)),
      m_port(port),
      m_listener(ListenOnLoopbackPort(SOMAXCONN, family, &m_port)) {
  m_acceptor = std::thread([this] { Accept(); });
}

LoopbackServer::~LoopbackServer() {
  shutdown(m_listener, SHUT_RDWR);  // ends accept
  m_acceptor.join();
  {
    const std::lock_guard lock(m_mutex);
    for (const int socket : m_sockets) shutdown(socket, SHUT_RDWR);
  }
  for (std::thread& thread : m_threads) thread.join();
  close(m_listener);
}

void LoopbackServer::Accept() {
  for (int socket; (socket = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
    const std::lock_guard guard(m_mutex);
    m_sockets.push_back(socket);
    m_threads.emplace_back([this, socket, number = m_sockets.size()] {
      LoopbackConnection connection{this, socket, number, {}};
      m_script(connection);
      const std::lock_guard lock(m_mutex);
      close(std::exchange(m_sockets[number - 1], -1));
    });
  }
}

LoopbackServer::Script LoopbackServer::Answer(std::string response) {
  return [response = std::move(response)](LoopbackConnection& connection) {
    if (connection.ReadRequest().empty()) return;
    connection.Send(response);
    connection.WaitForClose();
  };
}

LoopbackServer::Script LoopbackServer::AnswerEach(std::string response) {
  return [response = std::move(response)](LoopbackConnection& connection) {
    while (!connection.ReadRequest().empty() && connection.Send(response)) {
    }
  };
}

std::vector<std::string> LoopbackServer::Requests() {
  const std::lock_guard lock(m_mutex);
  return m_requests;
}

}  // namespace Corvane::Test
