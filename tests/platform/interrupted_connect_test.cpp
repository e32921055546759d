// A signal that comes while a connection is being made.
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>

#include <atomic>
#include <csignal>
#include <functional>
#include <thread>
#include <utility>

#include "platform/system.h"

namespace {

SOCKET Stream() { return socket(AF_INET, SOCK_STREAM, IPPROTO_TCP); }

// A listener with room for one connection, which is taken: the next one waits for room. The system
// asks again after a second.
class InterruptedConnectTest : public testing::Test {
 protected:
  InterruptedConnectTest() {
    EXPECT_EQ(0, WSAStartup(MAKEWORD(2, 2), &m_data));
    m_listener = Stream();
    m_first = Stream();
    m_address.sin_family = AF_INET;
    m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(m_address);
    EXPECT_EQ(0, bind(m_listener, Address(), length));
    EXPECT_EQ(0, getsockname(m_listener, Address(), &length));
    EXPECT_EQ(0, listen(m_listener, 0));
    EXPECT_EQ(0, connect(m_first, Address(), sizeof(m_address)));
  }
  ~InterruptedConnectTest() override {
    closesocket(m_first);
    closesocket(m_listener);
    EXPECT_EQ(0, WSACleanup());
  }

  // The error of a connect() in a thread that is interrupted twice before `react` decides how the
  // attempt ends; 0 when it succeeds.
  int Connect(const std::function<void()>& react) {
    static std::atomic<int> signalsTaken = 0;
    signalsTaken = 0;
    struct sigaction interrupting {};
    interrupting.sa_handler = [](int) { ++signalsTaken; };  // without SA_RESTART
    struct sigaction before {};
    sigaction(SIGUSR1, &interrupting, &before);
    int error = -1;
    std::thread connecting([&] {
      const SOCKET s = Stream();
      error = connect(s, Address(), sizeof(m_address)) == 0 ? 0 : WSAGetLastError();
      closesocket(s);
    });
    // Long enough for the thread to be inside connect() and, after the first signal, poll().
    constexpr int kSettleMs = 100;
    for (int i = 1; i <= 2; ++i) {
      poll(nullptr, 0, kSettleMs);
      pthread_kill(connecting.native_handle(), SIGUSR1);
      while (signalsTaken < i) poll(nullptr, 0, 1);
    }
    react();
    connecting.join();
    sigaction(SIGUSR1, &before, nullptr);
    return error;
  }

  sockaddr* Address() { return reinterpret_cast<sockaddr*>(&m_address); }

  WSADATA m_data{};
  SOCKET m_listener = INVALID_SOCKET;
  SOCKET m_first = INVALID_SOCKET;
  sockaddr_in m_address{};
};

TEST_F(InterruptedConnectTest, EndsAsTheConnectionDoes) {
  EXPECT_EQ(0, Connect([this] { closesocket(accept(m_listener, nullptr, nullptr)); }));
  EXPECT_EQ(WSAECONNREFUSED,
            Connect([this] { closesocket(std::exchange(m_listener, INVALID_SOCKET)); }));
}

}  // namespace
