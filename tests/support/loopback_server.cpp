#include "tests/support/loopback_server.h"

#include <arpa/inet.h>
#include <fcntl.h>
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

[[noreturn]] void Fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

std::size_t ContentLength(std::string_view head) {
  constexpr std::string_view kName = "\r\nContent-Length: ";
  const std::size_t at = head.find(kName);
  return at == std::string_view::npos ? 0
                                      : std::strtoul(head.data() + at + kName.size(), nullptr, 10);
}

}  // namespace

int ListenOnLoopback(int backlog, std::uint16_t* port) {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (listener < 0) Fail("socket");
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof(address);
  if (bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
      listen(listener, backlog) != 0 ||
      getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    Fail("listen");
  }
  *port = ntohs(address.sin_port);
  return listener;
}

bool LoopbackConnection::WaitFor(short events, int milliseconds) {
  pollfd polled[2] = {{m_socket, events, 0}, {m_server->m_stop[0], POLLIN, 0}};
  return poll(polled, 2, milliseconds) > 0 && polled[1].revents == 0 &&
         (polled[0].revents & events) != 0;
}

std::string LoopbackConnection::ReadRequest() {
  while (true) {
    const std::size_t end = m_buffered.find("\r\n\r\n");
    if (end != std::string::npos) {
      const std::size_t size = end + 4 + ContentLength(m_buffered.substr(0, end));
      if (m_buffered.size() >= size) {
        std::string request = m_buffered.substr(0, size);
        m_buffered.erase(0, size);
        const std::lock_guard lock(m_server->m_mutex);
        m_server->m_requests.push_back(request);
        return request;
      }
    }
    char block[4096];
    if (!WaitFor(POLLIN, -1)) return {};
    const ssize_t bytes = recv(m_socket, block, sizeof(block), 0);
    if (bytes <= 0) return {};
    m_buffered.append(block, static_cast<std::size_t>(bytes));
  }
}

bool LoopbackConnection::Send(std::string_view bytes) {
  while (!bytes.empty()) {
    if (!WaitFor(POLLOUT, -1)) return false;
    const ssize_t sent = send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
  return true;
}

void LoopbackConnection::HalfClose() { shutdown(m_socket, SHUT_WR); }

bool LoopbackConnection::Pause(int milliseconds) {
  pollfd polled[2] = {{m_socket, POLLRDHUP, 0}, {m_server->m_stop[0], POLLIN, 0}};
  return poll(polled, 2, milliseconds) == 0;
}

void LoopbackConnection::WaitForClose() {
  char block[4096];
  while (WaitFor(POLLIN, -1) && recv(m_socket, block, sizeof(block), 0) > 0) {
  }
}

LoopbackServer::LoopbackServer(Script script) : m_script(std::move(script)) {
  if (pipe2(m_stop, O_CLOEXEC) != 0) Fail("pipe2");
  m_listener = ListenOnLoopback(SOMAXCONN, &m_port);
  m_acceptor = std::thread([this] { Accept(); });
}

LoopbackServer::~LoopbackServer() {
  close(m_stop[1]);  // the reading end becomes ready for everyone
  m_acceptor.join();
  for (std::thread& thread : m_threads) thread.join();
  close(m_listener);
  close(m_stop[0]);
}

void LoopbackServer::Accept() {
  while (true) {
    pollfd polled[2] = {{m_listener, POLLIN, 0}, {m_stop[0], POLLIN, 0}};
    if (poll(polled, 2, -1) < 0 || polled[1].revents != 0) return;
    const int socket = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) continue;
    m_threads.emplace_back([this, socket, number = m_threads.size() + 1] {
      LoopbackConnection connection(this, socket, number);
      m_script(connection);
      close(socket);
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
