// From a request's settings to what goes out.
#ifndef CORVANE_HOST_HTTP_WIRE_REQUEST_H_
#define CORVANE_HOST_HTTP_WIRE_REQUEST_H_

#include "host/common/request_base.h"
#include "host/http/curl_exchange.h"
#include "host/http/network_device.h"

namespace Corvane::Host {

// Fills all but the URL, which the caller has set; the body stays that of `settings`. Null, or why
// the settings cannot go out: a verb or header name that is no token (RFC 9110, 5.6.2), a control
// character in a value or a credential, or a header that frames the message, which is the host's to
// write (Host, Content-Length, Transfer-Encoding other than "chunked"). Without TLS the
// request loses what only the device should see, as far as the device's settings say so.
const wchar_t* BuildWireRequest(const RequestSettings& settings, const DeviceSettings& device,
                                bool forIPP, WireRequest* request);

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_WIRE_REQUEST_H_
