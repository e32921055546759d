// Answers to a device that asks for credentials (RFC 9110, 11).
#ifndef CORVANE_HOST_HTTP_CHALLENGE_H_
#define CORVANE_HOST_HTTP_CHALLENGE_H_

#include <string>
#include <string_view>

#include "host/http/wire_request.h"

namespace Corvane::Host {

// The Authorization for `request` after a 401 with these values of WWW-Authenticate: Digest (RFC
// 7616) before Basic (RFC 7617), where that is allowed. Empty when the request has no credentials,
// nothing that is known here is asked for, or credentials that `again` says have gone out already
// are refused: only a nonce that is stale is worth another answer.
std::string AnswerChallenge(std::string_view challenges, const WireRequest& request, bool again);
// The same with a given nonce of the client's own.
std::string AnswerChallenge(std::string_view challenges, const WireRequest& request, bool again,
                            const std::string& clientNonce);

// Empty for a user name that Basic cannot carry.
std::string BasicAuthorization(const WireRequest& request);

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_CHALLENGE_H_
