// A device on the network, as an Address.
#ifndef CORVANE_HOST_NETWORK_ADDRESS_H_
#define CORVANE_HOST_NETWORK_ADDRESS_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>

#include "corvane/transport.h"

namespace Corvane::Host {

struct NetworkOptions {
  std::wstring host;  // an IP literal (IPv6 without brackets) or a host name
  std::map<std::uint32_t, std::uint32_t> portMap;  // port asked for -> port connected to
  std::set<std::uint32_t> tlsPorts = {443};  // ports, as asked for, that are spoken to with TLS
  std::string caFile;  // PEM certificates to trust instead of the system's; empty: the system's
  bool verifyCertificates = true;          // chain and host name
  std::uint32_t connectTimeoutMs = 5'000;  // one exchange's connecting
  std::uint32_t totalTimeoutMs = 30'000;   // one exchange in all, however slowly the device drips
  std::size_t maxResponseBytes = std::size_t{64}
                                 << 20;  // a longer body, decoded, fails the exchange: memory
  std::wstring userName;                 // for requests that set no password of their own
  std::wstring password;
};

// One reference, the caller's; null for a missing or malformed host (a name is ASCII, one in other
// scripts in its "xn--" form), a mapped port outside 1 to 65535, or a time-out of 0. Requests of
// one address share their connections. Any thread may make and use requests; one request belongs to
// one thread, but for Cancel, which takes effect within about a second. GetLastFailure tells of the
// exchange that ended last on any thread; its text is the asking thread's until that asks again.
//
// A failed GetResponse returns 0x8007 and the low half of GetLastError, whose codes are those of
// error_codes.h. Every status is a response; only 200 leaves GetLastFailure empty.
//
// Credentials are sent only when the device asks for them, digest before basic, never anywhere
// else. A request that sets a password uses its own; any other uses the address's, and without
// those a bare user name answers with an empty password.
//
// A redirect of a GET is followed, at most 5 times, when scheme, host and port stay; any other
// redirect is the response. A body is sent a second time only after a 401.
//
// CreateIPPHTTPRequest and GetMIBConnection are still missing: E_NOTIMPL.
Address* CreateNetworkAddress(const NetworkOptions& options);

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_NETWORK_ADDRESS_H_
