#include "tests/support/peers/scripted_agent.h"

#include <sys/socket.h>
#include <unistd.h>

#include "tests/support/peers/loopback_server.h"

namespace Corvane::Test {

ScriptedAgent::ScriptedAgent(std::function<Datagrams(const std::string&)> answer)
    : m_answer(std::move(answer)), m_socket(BindToLoopback(SOCK_DGRAM, &m_port)) {
  m_thread = std::thread([this] { Run(); });
}

ScriptedAgent::~ScriptedAgent() {
  shutdown(m_socket, SHUT_RDWR);  // ends recvfrom
  m_thread.join();
  close(m_socket);
}

void ScriptedAgent::Run() {
  std::string block(65'536, '\0');
  sockaddr_in client{};
  auto* const address = reinterpret_cast<sockaddr*>(&client);
  socklen_t size = sizeof(client);
  for (ssize_t bytes;
       (bytes = recvfrom(m_socket, block.data(), block.size(), 0, address, &size)) > 0;) {
    ++m_requests;
    for (const Datagram& next : m_answer(block.substr(0, static_cast<std::size_t>(bytes)))) {
      std::uint16_t port = 0;
      const int sender = next.fromElsewhere ? BindToLoopback(SOCK_DGRAM, &port) : m_socket;
      sendto(sender, next.bytes.data(), next.bytes.size(), 0, address, size);
      if (sender != m_socket) close(sender);
    }
  }
}

}  // namespace Corvane::Test
