// A signal that comes while a connection is being made.
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <thread>

#include "platform/system.h"

namespace {

// A listener with room for one connection, which is taken: the next one waits for room. No room is
// made unless `accept` is called; the system asks again after a second.
class FullListener {
 public:
  FullListener() {
    m_address.sin_family = AF_INET;
    m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(m_address);
    EXPECT_EQ(0, bind(m_listener, Address(), length));
    EXPECT_EQ(0, getsockname(m_listener, Address(), &length));
    EXPECT_EQ(0, listen(m_listener, 0));
    EXPECT_EQ(0, connect(m_first, Address(), Length()));
  }
  FullListener(const FullListener&) = delete;
  FullListener& operator=(const FullListener&) = delete;
  ~FullListener() {
    Close();
    closesocket(m_first);
  }

  sockaddr* Address() { return reinterpret_cast<sockaddr*>(&m_address); }
  static int Length() { return sizeof(sockaddr_in); }
  void MakeRoom() { closesocket(accept(m_listener, nullptr, nullptr)); }
  void Close() {
    if (m_listener != INVALID_SOCKET) closesocket(m_listener);
    m_listener = INVALID_SOCKET;
  }

 private:
  SOCKET m_listener = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  SOCKET m_first = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  sockaddr_in m_address{};
};

std::atomic<int> signalsTaken = 0;

// The error of a connect() in a thread that is interrupted twice before `react` decides how the
// attempt ends; 0 when it succeeds.
template <typename Reaction>
int InterruptedConnect(FullListener& listener, Reaction&& react) {
  struct sigaction interrupting {};
  interrupting.sa_handler = [](int) { ++signalsTaken; };  // without SA_RESTART
  struct sigaction before {};
  sigaction(SIGUSR1, &interrupting, &before);
  int error = -1;
  std::thread connecting([&] {
    const SOCKET s = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    error = connect(s, listener.Address(), listener.Length()) == 0 ? 0 : WSAGetLastError();
    closesocket(s);
  });
  // Long enough for the thread to be inside connect() and, after the first signal, poll().
  constexpr int kSettleMs = 100;
  for (int i = 1; i <= 2; ++i) {
    poll(nullptr, 0, kSettleMs);
    pthread_kill(connecting.native_handle(), SIGUSR1);
    while (signalsTaken < i) poll(nullptr, 0, 1);
  }
  signalsTaken = 0;
  react();
  connecting.join();
  sigaction(SIGUSR1, &before, nullptr);
  return error;
}

TEST(InterruptedConnectTest, EndsAsTheConnectionDoes) {
  WSADATA data{};
  ASSERT_EQ(0, WSAStartup(MAKEWORD(2, 2), &data));
  {
    FullListener listener;
    EXPECT_EQ(0, InterruptedConnect(listener, [&] { listener.MakeRoom(); }));
    EXPECT_EQ(WSAECONNREFUSED, InterruptedConnect(listener, [&] { listener.Close(); }));
  }
  EXPECT_EQ(0, WSACleanup());
}

}  // namespace
