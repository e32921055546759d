// From a request's settings to what goes out.
#ifndef CORVANE_HOST_HTTP_WIRE_REQUEST_H_
#define CORVANE_HOST_HTTP_WIRE_REQUEST_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/common/request_base.h"
#include "host/http/network_device.h"

namespace Corvane::Host {

// What goes out. All texts are checked: nothing in them can begin another line.
struct WireRequest {
  std::string verb;
  std::string url;
  std::vector<std::pair<std::string, std::string>> headers;
  std::string contentType;  // empty: none goes out
  std::string userName;     // both empty: no credentials
  std::string password;
  bool allowsBasic = true;  // to answer a challenge with
  std::string_view body;
  bool hasBody = false;  // an empty one counts

  // `name` in lower case.
  std::ptrdiff_t CountHeaders(std::string_view name) const;
  bool IsOverTls() const { return url.starts_with("https:"); }
};

// Fills all but the URL, which the caller has set; the body stays that of `settings`. Null, or why
// the settings cannot go out: a verb or header name that is no token (RFC 9110, 5.6.2), a control
// character in a value or a credential, or a header that frames the message, which is the host's to
// write (Host, Content-Length, Transfer-Encoding other than "chunked"). A header Authorization
// takes the place of credentials. Without TLS the request loses what only the device should see, as
// far as the device's settings say so.
const wchar_t* BuildWireRequest(const RequestSettings& settings, const DeviceSettings& device,
                                bool forIPP, WireRequest* request);

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_WIRE_REQUEST_H_
