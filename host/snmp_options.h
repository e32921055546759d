// How a device is spoken to over SNMP.
#ifndef CORVANE_HOST_SNMP_OPTIONS_H_
#define CORVANE_HOST_SNMP_OPTIONS_H_

#include <cstdint>
#include <string>

namespace Corvane::Host {

enum class SnmpVersion { kV1, kV2c, kV3 };
enum class SnmpAuth { kMd5, kSha, kSha224, kSha256, kSha384, kSha512 };  // RFC 3414, RFC 7860
enum class SnmpPrivacy { kDes, kAes, kAes192, kAes256 };                 // RFC 3414, RFC 3826

// A wait that nobody outlives.
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

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_SNMP_OPTIONS_H_
