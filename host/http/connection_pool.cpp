#include "host/http/connection_pool.h"

#include <poll.h>

#include <algorithm>
#include <new>
#include <utility>

namespace Corvane::Host {
namespace {

// Sockets kept open between requests, here and in the device, which has few of them.
constexpr std::size_t kMaxIdle = 8;

}  // namespace

// The end of the connection, or an answer to no question, as 408: the next request must not take it
// for its own.
bool ConnectionPool::HasSpoken(curl_socket_t socket) {
  pollfd polled{socket, POLLIN, 0};
  return poll(&polled, 1, 0) != 0;
}

CurlEasy ConnectionPool::Take(std::uint32_t port) {
  std::vector<CurlEasy> dropped;  // closes its sockets outside the lock
  const std::lock_guard lock(m_mutex);
  for (std::size_t i = m_idle.size(); i-- > 0;) {
    if (m_idle[i].port != port) continue;
    const bool spoken = HasSpoken(m_idle[i].socket);
    CurlEasy handle = std::move(m_idle[i].handle);
    m_idle.erase(m_idle.begin() + static_cast<std::ptrdiff_t>(i));
    if (!spoken) return handle;
    dropped.push_back(std::move(handle));
  }
  CurlEasy handle(curl_easy_init());
  if (!handle) throw std::bad_alloc();
  return handle;
}

void ConnectionPool::GiveBack(std::uint32_t port, CurlEasy handle) {
  curl_socket_t socket = CURL_SOCKET_BAD;
  curl_easy_getinfo(handle.get(), CURLINFO_ACTIVESOCKET, &socket);
  if (socket == CURL_SOCKET_BAD) return;
  curl_easy_reset(handle.get());  // keeps the connections; forgets credentials and callbacks
  CurlEasy surplus;               // closes its sockets outside the lock
  const std::lock_guard lock(m_mutex);
  if (m_idle.size() >= kMaxIdle) {
    surplus = std::move(m_idle.front().handle);
    m_idle.erase(m_idle.begin());
  }
  m_idle.push_back({port, socket, std::move(handle)});
}

}  // namespace Corvane::Host
