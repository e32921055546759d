// A device that misbehaves to a script: a small HTTP server on a loopback port (Linux).
#ifndef CORVANE_TESTS_SUPPORT_PEERS_LOOPBACK_SERVER_H_
#define CORVANE_TESTS_SUPPORT_PEERS_LOOPBACK_SERVER_H_

#include <netinet/in.h>
#include <sys/socket.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace Corvane::Test {

// One accepted connection, on its own thread. Every operation ends when the client goes or the
// server stops.
class LoopbackConnection {
 public:
  // The next request, head and body, of a length or in chunks; empty when the client is gone.
  std::string ReadRequest();
  // Everything through `mark`, raw; empty when the client is gone. Counts as a request, too.
  std::string ReadThrough(std::string_view mark);
  // False when the client is gone.
  bool Send(std::string_view bytes);
  // Ends this side; the client's stays open.
  void HalfClose();
  // Waits so long; false when the client went meanwhile.
  bool Pause(int milliseconds);
  void WaitForClose();

  bool ReceiveMore();
  std::string TakeRequest(std::size_t size);

  class LoopbackServer* const m_server;
  const int m_socket;
  const std::size_t m_number;  // of the server's connections, from 1
  std::string m_buffered;
};

// Runs `script` for every connection and closes it after that.
class LoopbackServer {
 public:
  using Script = std::function<void(LoopbackConnection&)>;

  // On a free port when `port` is 0; throws std::system_error when another has it.
  explicit LoopbackServer(Script script, std::uint16_t port = 0, int family = AF_INET);
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;
  ~LoopbackServer();

  // Answers every request with `response`.
  static Script AnswerEach(std::string response);

  std::uint16_t Port() const { return m_port; }
  // Whole requests read so far, on all connections.
  std::vector<std::string> Requests();

 private:
  friend class LoopbackConnection;
  void Accept();

  Script m_script;
  std::uint16_t m_port = 0;
  int m_listener;
  std::mutex m_mutex;  // guards the next two
  std::vector<std::string> m_requests;
  std::vector<int> m_sockets;          // -1: closed
  std::vector<std::thread> m_threads;  // the acceptor's own
  std::thread m_acceptor;
};

// A socket of this type bound to 127.0.0.1 or [::1], at the port wanted, or, where that is 0, at
// one that the system chose; the caller's to close. Throws std::system_error when it cannot be.
int BindToLoopback(int type, std::uint16_t* port, int family = AF_INET);
// The same, listening, with a port that the system chose.
int ListenOnLoopback(int backlog, std::uint16_t* port);
sockaddr_in LoopbackAddress(std::uint16_t port);
// Whether somebody sends anything there to an HTTP request, within ten seconds.
bool AnswersHttp(std::uint16_t port);

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_PEERS_LOOPBACK_SERVER_H_
