// What every use of curl has in common.
#ifndef CORVANE_HOST_HTTP_CURL_SETTINGS_H_
#define CORVANE_HOST_HTTP_CURL_SETTINGS_H_

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "host/http/curl_handles.h"
#include "host/trust/pin_file.h"

namespace Corvane::Host {

struct TlsTrust {
  bool verify = true;
  std::string caFile;            // empty: the system's certificates
  std::string pinFile;           // empty: no keys are recorded
  std::optional<PinnedKey> pin;  // the one key to show, whoever vouches for it
};

// Nothing but HTTP/1.1 to the URL's own host, whatever the environment says; the certificates of
// `trust`, or its one key. With a pin file, PeerKey tells the key that was shown. False: the handle
// must not be used.
bool ConfigureSafety(CURL* handle, const TlsTrust& trust);

// As curl takes a limit: never its 0 for none.
long CurlMilliseconds(std::int64_t milliseconds);

using CurlMessage = std::array<char, CURL_ERROR_SIZE>;

// Why a transfer failed, in curl's words, which can quote the device: printable ASCII.
std::wstring Words(CURLcode code, const CurlMessage& message);

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_CURL_SETTINGS_H_
