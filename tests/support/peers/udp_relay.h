// Datagrams between a client and a server on loopback: counted, and lost, altered or invented to a
// script (Linux).
#ifndef CORVANE_TESTS_SUPPORT_PEERS_UDP_RELAY_H_
#define CORVANE_TESTS_SUPPORT_PEERS_UDP_RELAY_H_

#include <netinet/in.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Corvane::Test {

struct Datagram {
  Datagram(std::string content, int delay = 0, bool elsewhere = false)
      : bytes(std::move(content)), delayMs(delay), fromElsewhere(elsewhere) {}
  std::string bytes;
  int delayMs;         // holds up what comes after it, too
  bool fromElsewhere;  // from a port that the receiver never sent to
};

// A port of its own that clients send to. Every datagram goes through a script, on one thread,
// which gives what is sent on in its stead: none, it, or several.
class UdpRelay {
 public:
  using Script = std::function<std::vector<Datagram>(const std::string& bytes)>;

  // Between clients and the server at `serverPort`; an empty script lets everything pass.
  UdpRelay(std::uint16_t serverPort, Script toServer, Script toClient);
  // The script answers the clients itself.
  explicit UdpRelay(Script answer);
  UdpRelay(const UdpRelay&) = delete;
  UdpRelay& operator=(const UdpRelay&) = delete;
  ~UdpRelay();

  std::uint16_t Port() const { return m_port; }
  // Datagrams that clients sent so far.
  int Requests() const { return m_requests; }

 private:
  void Run();

  const Script m_fromClient;
  const Script m_fromServer;
  std::uint16_t m_port = 0;
  const int m_front;         // clients send here
  int m_back = -1;           // the server sees this one; -1: there is none
  int m_wake[2] = {-1, -1};  // a pipe that ends the thread
  std::atomic<int> m_requests{0};
  sockaddr_in m_server{};
  std::thread m_thread;
};

// An unconnected socket on a loopback port that the system chose; the caller's to close.
int BindToLoopback(std::uint16_t* port);
sockaddr_in LoopbackAddress(std::uint16_t port);

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_PEERS_UDP_RELAY_H_
