// What the tests of connections share.
#ifndef CORVANE_TESTS_PLATFORM_NET_FIXTURE_H_
#define CORVANE_TESTS_PLATFORM_NET_FIXTURE_H_

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "platform/system.h"

namespace Corvane::Test {

// A Winsock of its own, so that no test lives off another's.
class WinsockTest : public testing::Test {
 protected:
  WinsockTest() { EXPECT_EQ(0, WSAStartup(MAKEWORD(2, 2), &m_data)); }
  ~WinsockTest() override { EXPECT_EQ(0, WSACleanup()); }

 private:
  WSADATA m_data{};
};

inline SOCKET StreamSocket(int family) { return socket(family, SOCK_STREAM, IPPROTO_TCP); }

// The error of one attempt with a socket of its own, 0 when it succeeds.
inline int TryConnect(int family, const void* address, INT length) {
  const SOCKET made = StreamSocket(family);
  const int result = connect(made, static_cast<const sockaddr*>(address), length);
  const int error = result == 0 ? 0 : WSAGetLastError();
  EXPECT_EQ(0, closesocket(made));
  return error;
}

// A socket bound to a free port of the loopback address; it listens when told to.
class Listener {
 public:
  explicit Listener(int family) : m_family(family), m_socket(StreamSocket(family)) {
    std::wstring loopback = family == AF_INET ? L"127.0.0.1" : L"::1";
    auto* address = reinterpret_cast<sockaddr*>(&m_address);
    WSAStringToAddressW(loopback.data(), family, nullptr, address, &m_length);
    auto length = static_cast<socklen_t>(m_length);
    EXPECT_EQ(0, bind(m_socket, address, length));
    EXPECT_EQ(0, getsockname(m_socket, address, &length));
  }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;
  ~Listener() { Close(); }

  void Listen(int backlog = 1) { EXPECT_EQ(0, listen(m_socket, backlog)); }
  void Accept() { closesocket(accept(m_socket, nullptr, nullptr)); }
  void Close() {
    if (m_socket != INVALID_SOCKET) closesocket(std::exchange(m_socket, INVALID_SOCKET));
  }
  int Connect() const { return TryConnect(m_family, Address(), m_length); }
  const sockaddr* Address() const { return reinterpret_cast<const sockaddr*>(&m_address); }
  INT Length() const { return m_length; }

 private:
  const int m_family;
  SOCKET m_socket;
  sockaddr_storage m_address{};
  INT m_length = sizeof(m_address);
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_PLATFORM_NET_FIXTURE_H_
