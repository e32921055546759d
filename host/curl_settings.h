// What every use of curl has in common.
#ifndef CORVANE_HOST_CURL_SETTINGS_H_
#define CORVANE_HOST_CURL_SETTINGS_H_

#include <array>
#include <cstdint>
#include <string>

#include "host/curl_handles.h"

namespace Corvane::Host {

struct TlsTrust {
  bool verify = true;
  std::string caFile;  // empty: the system's certificates
};

// Nothing but HTTP/1.1 to the URL's own host, whatever the environment says; the certificates of
// `trust`. `trust` must outlive the exchange. False: the handle must not be used.
bool ConfigureSafety(CURL* handle, const TlsTrust& trust);

// As curl takes a limit: never its 0 for none.
long CurlMilliseconds(std::int64_t milliseconds);

using CurlMessage = std::array<char, CURL_ERROR_SIZE>;

// Why a transfer failed, in curl's words, which can quote the device: printable ASCII.
std::wstring Words(CURLcode code, const CurlMessage& message);

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_CURL_SETTINGS_H_
