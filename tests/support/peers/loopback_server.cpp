#include "tests/support/peers/loopback_server.h"

#include <arpa/inet.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace Corvane::Test {
namespace {

// Of the request that `bytes` begin with; 0 while it is not whole.
std::size_t RequestSize(std::string_view bytes) {
  constexpr std::string_view kLength = "\r\nContent-Length: ";
  constexpr std::string_view kLastChunk = "\r\n0\r\n\r\n";
  const std::size_t end = bytes.find("\r\n\r\n");
  if (end == bytes.npos) return 0;
  const std::string head(bytes.substr(0, end));
  if (head.find("\r\nTransfer-Encoding: chunked") != head.npos) {
    const std::size_t last = bytes.find(kLastChunk, end + 2);
    return last == bytes.npos ? 0 : last + kLastChunk.size();
  }
  const std::size_t at = head.find(kLength);
  const std::size_t length =
      at == head.npos ? 0 : std::strtoul(head.c_str() + at + kLength.size(), nullptr, 10);
  const std::size_t size = end + 4 + length;
  return size <= bytes.size() ? size : 0;
}

}  // namespace

sockaddr_in LoopbackAddress(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  return address;
}

int BindToLoopback(int type, std::uint16_t* port, int family) {
  sockaddr_in ip4 = LoopbackAddress(*port);
  sockaddr_in6 ip6{};
  ip6.sin6_family = AF_INET6;
  ip6.sin6_addr = in6addr_loopback;
  ip6.sin6_port = htons(*port);
  const bool isIp6 = family == AF_INET6;
  auto* const address =
      isIp6 ? reinterpret_cast<sockaddr*>(&ip6) : reinterpret_cast<sockaddr*>(&ip4);
  socklen_t size = isIp6 ? sizeof(ip6) : sizeof(ip4);
  const int bound = socket(family, type | SOCK_CLOEXEC, 0);
  const int reuse = *port != 0;  // what is left of a test before may still wait there
  if (setsockopt(bound, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof(reuse)) != 0 ||
      bind(bound, address, size) != 0 || getsockname(bound, address, &size) != 0) {
    throw std::system_error(errno, std::generic_category(), "bind");
  }
  *port = ntohs(isIp6 ? ip6.sin6_port : ip4.sin_port);
  return bound;
}

int ListenOnLoopback(int backlog, std::uint16_t* port) {
  *port = 0;
  const int listener = BindToLoopback(SOCK_STREAM, port);
  listen(listener, backlog);
  return listener;
}

bool AnswersHttp(std::uint16_t port) {
  constexpr int kTimeoutMs = 10'000;
  constexpr std::string_view kRequest =
      "HEAD / HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n";
  const int client = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const sockaddr_in address = LoopbackAddress(port);
  pollfd polled{client, POLLIN, 0};
  char byte = 0;
  const bool answered =
      connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0 &&
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
    if (const std::size_t size = RequestSize(m_buffered)) return TakeRequest(size);
  } while (ReceiveMore());
  return {};
}

std::string LoopbackConnection::ReadThrough(std::string_view mark) {
  std::size_t from = 0;
  do {
    const std::size_t at = m_buffered.find(mark, from);
    if (at != m_buffered.npos) return TakeRequest(at + mark.size());
    from = m_buffered.size() - std::min(m_buffered.size(), mark.size());
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
      m_listener(BindToLoopback(SOCK_STREAM, &m_port, family)) {
  listen(m_listener, SOMAXCONN);
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
