// A signal that comes while a connection is being made.
#include <poll.h>
#include <pthread.h>

#include <atomic>
#include <csignal>
#include <functional>
#include <thread>

#include "tests/platform/net_fixture.h"

namespace Corvane::Test {
namespace {

// The error of a connect() in a thread that is interrupted twice before `react` decides how the
// attempt ends; 0 when it succeeds.
int InterruptedConnect(const Listener& listener, const std::function<void()>& react) {
  static std::atomic<int> signalsTaken = 0;
  signalsTaken = 0;
  struct sigaction interrupting {};
  interrupting.sa_handler = [](int) { ++signalsTaken; };  // without SA_RESTART
  struct sigaction before {};
  sigaction(SIGUSR1, &interrupting, &before);
  constexpr int kConnecting = -1;
  std::atomic<int> error = kConnecting;
  std::thread connecting([&] { error = listener.Connect(); });
  // Long enough for the thread to be inside connect() and, after the first signal, poll().
  constexpr int kSettleMs = 100;
  for (int i = 1; i <= 2; ++i) {
    poll(nullptr, 0, kSettleMs);
    pthread_kill(connecting.native_handle(), SIGUSR1);
    while (signalsTaken < i && error == kConnecting) poll(nullptr, 0, 1);
  }
  react();
  connecting.join();
  sigaction(SIGUSR1, &before, nullptr);
  return error;
}

// There is room for one connection, which is taken: the next one waits for room. The system asks
// again after a second.
TEST_F(WinsockTest, AnInterruptedConnectEndsAsTheConnectionDoes) {
  Listener listener(AF_INET);
  listener.Listen(0);
  const SOCKET first = StreamSocket(AF_INET);
  EXPECT_EQ(0, connect(first, listener.Address(), listener.Length()));
  EXPECT_EQ(0, InterruptedConnect(listener, [&] { listener.Accept(); }));
  EXPECT_EQ(WSAECONNREFUSED, InterruptedConnect(listener, [&] { listener.Close(); }));
  closesocket(first);
}

}  // namespace
}  // namespace Corvane::Test
