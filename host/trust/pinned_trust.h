// Trust on first use: which key a device must show.
#ifndef CORVANE_HOST_TRUST_PINNED_TRUST_H_
#define CORVANE_HOST_TRUST_PINNED_TRUST_H_

#include <atomic>
#include <cstdint>
#include <string>

#include "host/http/curl_settings.h"

namespace Corvane::Host {

struct SettledTrust {
  TlsTrust trust;
  std::uint32_t error = 0;  // then nothing may be sent
  std::wstring remark;
};

// What a connection for `url` has to show before anything of a request goes out: `trust`, and with
// a pin file, for TLS, the key that is recorded. Where none is, a connection that carries nothing
// fetches the key, and that is recorded; the exchange itself is then held to it like every later
// one. Takes up to twice `connectMs`: for that connection, and for other writers of the file.
// Throws bad_alloc.
SettledTrust SettleTrust(const TlsTrust& trust, const std::string& url, std::int64_t connectMs,
                         const std::atomic<bool>& cancelled);

// Why curl refused the key that the device showed on `handle`, which was set to `trust`.
std::wstring KeyChanged(CURL* handle, const TlsTrust& trust);

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_TRUST_PINNED_TRUST_H_
