// The connections of one address that wait for its next request.
#ifndef CORVANE_HOST_HTTP_CONNECTION_POOL_H_
#define CORVANE_HOST_HTTP_CONNECTION_POOL_H_

#include <cstdint>
#include <mutex>
#include <vector>

#include "host/http/curl_handles.h"

namespace Corvane::Host {

// A connection stays with the curl handle that opened it, and a handle serves one request at a
// time; so handles are lent. (A curl share is no substitute: it must not share connections between
// threads.) Any thread.
class ConnectionPool {
 public:
  // A handle without settings, with a connection to `port` if one waits on which the device has
  // said nothing since. Throws bad_alloc.
  CurlEasy Take(std::uint32_t port);
  // Keeps nothing when the connection is closed. Only after an exchange that ended cleanly; any
  // other handle is dropped by the caller, and its connections with it.
  void GiveBack(std::uint32_t port, CurlEasy handle);

 private:
  static bool HasSpoken(curl_socket_t socket);

  struct Idle {
    std::uint32_t port;
    curl_socket_t socket;  // of the connection, the handle's
    CurlEasy handle;
  };

  std::mutex m_mutex;
  std::vector<Idle> m_idle;  // guarded by m_mutex; the longest idle first
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_CONNECTION_POOL_H_
