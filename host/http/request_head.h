// The head of a request, as it goes on the wire.
#ifndef CORVANE_HOST_HTTP_REQUEST_HEAD_H_
#define CORVANE_HOST_HTTP_REQUEST_HEAD_H_

#include <string>

#include "host/http/wire_request.h"

namespace Corvane::Host {

// With the empty line; with a body it tells the body's length.
std::string BuildHead(const WireRequest& request, const std::string& authorization);

// The same for a body that is streamed. Null, or why the request cannot be: a verb other than POST
// and PUT, a body of its own, not exactly one "Transfer-Encoding: chunked", which frames what
// follows, or a user name that Basic cannot carry.
//
// A streamed body cannot be sent again after a challenge: a password goes out at once, as Basic
// (RFC 7617), over TLS alone.
const wchar_t* BuildStreamedHead(const WireRequest& request, std::string* head);

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_REQUEST_HEAD_H_
