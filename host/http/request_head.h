// The head of a request whose body is streamed.
#ifndef CORVANE_HOST_HTTP_REQUEST_HEAD_H_
#define CORVANE_HOST_HTTP_REQUEST_HEAD_H_

#include <string>

#include "host/http/curl_exchange.h"

namespace Corvane::Host {

// As it goes on the wire, with the empty line. Null, or why the request cannot be streamed: a verb
// other than POST and PUT, a body of its own, not exactly one "Transfer-Encoding: chunked", which
// frames what follows, or a user name that Basic cannot carry.
//
// A streamed body cannot be sent again after a challenge: a password goes out at once, as Basic
// (RFC 7617), over TLS alone, unless there is a field Authorization.
const wchar_t* BuildStreamedHead(const WireRequest& request, std::string* head);

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_REQUEST_HEAD_H_
