// How a device on the network is reached and spoken to.
#ifndef CORVANE_HOST_COMMON_NETWORK_OPTIONS_H_
#define CORVANE_HOST_COMMON_NETWORK_OPTIONS_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "corvane/address.h"

namespace Corvane::Host {

enum class SnmpVersion { kV1, kV2c, kV3 };
enum class SnmpAuth { kMd5, kSha, kSha224, kSha256, kSha384, kSha512 };  // RFC 3414, RFC 7860
enum class SnmpPrivacy { kDes, kAes, kAes192, kAes256 };                 // RFC 3414, RFC 3826

// The longest wait that still makes sense.
constexpr std::uint32_t kMaxSnmpTimeoutMs = 600'000;
constexpr std::uint32_t kMaxSnmpRetries = 100;

// The passphrases decide the security level of version 3: without the second nothing is encrypted,
// without the first nothing is signed either.
struct SnmpOptions {
  SnmpVersion version = SnmpVersion::kV2c;
  std::wstring community = L"public";  // versions 1 and 2c
  std::wstring user;                   // version 3: 1 to 32 bytes as UTF-8
  SnmpAuth auth = SnmpAuth::kSha;
  std::wstring authPassphrase;  // empty, or at least 8 bytes as UTF-8
  SnmpPrivacy privacy = SnmpPrivacy::kAes;
  std::wstring privacyPassphrase;  // the same; only beside an authPassphrase
  std::wstring contextName;
  std::uint32_t timeoutMs = 2'000;  // of one try: 1 to kMaxSnmpTimeoutMs
  std::uint32_t retries = 2;        // tries after the first: up to kMaxSnmpRetries
};

struct NetworkOptions {
  std::wstring host;  // an IP literal (IPv6 without brackets) or a host name
  // The IP literal that GetAddress returns, for callers that do not resolve names; empty: `host`
  // itself.
  std::wstring addressText;
  std::map<std::uint32_t, std::uint32_t> portMap;  // port asked for -> port connected to
  std::set<std::uint32_t> tlsPorts = {
      kIppsPort};      // ports, as asked for, that are spoken to with TLS
  std::string caFile;  // PEM certificates to trust instead of the system's; empty: the system's
  bool verifyCertificates = true;  // chain and host name
  std::string pinFile;  // UTF-8 path of the keys that devices are known by, as network_address.h
                        // tells; empty: none
  // A request without TLS goes without credentials: each when true, none when false, and when
  // nothing is said those for IPP.
  std::optional<bool> secretsOverTlsOnly;
  // A password may answer a challenge for Basic in clear, where anyone on the way reads it.
  bool basicInClear = false;
  std::uint32_t connectTimeoutMs = 5'000;  // one exchange's connecting
  std::uint32_t totalTimeoutMs = 30'000;   // one exchange in all, however slowly the device drips
  std::size_t maxResponseBytes = std::size_t{64}
                                 << 20;  // a longer body, decoded, fails the exchange: memory
  std::wstring userName;                 // for requests that set no password of their own
  std::wstring password;
  SnmpOptions snmp;
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_COMMON_NETWORK_OPTIONS_H_
