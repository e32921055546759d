// A device on the network, as an Address.
#ifndef CORVANE_HOST_NETWORK_ADDRESS_H_
#define CORVANE_HOST_NETWORK_ADDRESS_H_

#include "corvane/transport.h"
#include "host/common/network_options.h"

namespace Corvane::Host {

// One reference, the caller's; null for a missing or malformed host (a name is ASCII, one in other
// scripts in its "xn--" form), a mapped port outside 1 to 65535, or a time-out of 0. Requests of
// one address share their connections. Any thread may make and use requests; one request belongs to
// one thread, but for Cancel, which takes effect within about a second while connecting, and within
// 100 ms later. GetLastFailure tells of the exchange that ended last on any thread; its text is the
// asking thread's until that asks again.
//
// A failed GetResponse returns 0x8007 and the low half of GetLastError, whose codes are those of
// error_codes.h. Every status is a response; only 200 leaves GetLastFailure empty.
//
// Credentials are sent only when the device asks for them, digest before basic, never anywhere
// else; but for a streamed body, see below. A request that sets a password uses its own; any other
// uses the address's, and without those a bare user name answers with an empty password.
//
// Without TLS, a request of CreateIPPHTTPRequest goes without any user name and password, its own
// or the address's, and without a header Authorization: the device's 401 is the response. So does
// every request with `secretsOverTlsOnly` true, and none with it false. In clear, credentials
// answer a digest challenge, and one for Basic only with `basicInClear`.
//
// With a `pinFile`, trust is by first use. The first key that a host and port show over TLS is
// recorded there, and every later connection, of any program with this file, must show it; who
// signed the certificate does not count, neither do `caFile` and `verifyCertificates`. The first
// use makes one connection more, which carries nothing. Another key, a file that is broken or
// larger than 1 MiB, or one that a new key cannot be written to fails the exchange with
// kErrorSecureFailure before a byte of the request has gone out, and GetLastFailure tells which
// line of which file to remove. A line is "HOST:PORT sha256//BASE64": the host as given here, in
// lower case (an IPv6 literal in brackets); the port connected to; the hash of the key as
// CURLOPT_PINNEDPUBLICKEY takes it. Readers and writers lock the file (flock); a lock that somebody
// keeps is a kErrorTimeout.
//
// A redirect of a GET is followed, at most 5 times, when scheme, host and port stay; any other
// redirect is the response. A body is sent again only after a 401, at most twice.
//
// CreateIPPHTTPRequest gives a request that is a TqHTTPRequestEx, too.
// - Its SetOption is a limit in milliseconds. For a body of SetRequestData or none, that of the
//   exchange in all, in place of `totalTimeoutMs`. For one of SendBody or a streamed one, that of
//   silence: how long the body may wait without the device taking a byte, and the response without
//   one coming; without it, `totalTimeoutMs` is. Such a document may take any time in all. The
//   response is waited for, from GetResponse on or from the end of the body of SendBody, no longer
//   in all than the longer of the two, however the device drips. A status from 300 on that comes
//   before the whole body of SendBody is out ends the sending; when the device resets the
//   connection at once, kErrorConnection may be seen in its place.
// - A streamed exchange has a connection of its own, which is closed behind it. A failed step
//   returns 0x8007 and the low half of GetLastError: kErrorInvalidParameter for a verb other than
//   POST and PUT, a body of SetRequestData, or not exactly one "Transfer-Encoding: chunked";
//   kErrorOutOfOrder for one that is not its turn.
// - A streamed body cannot be sent again in answer to a challenge. So a password (the request's,
//   else the address's) goes out with it at once, as Basic, over TLS alone, unless there is a
//   header Authorization. Over plain HTTP none goes out, whatever the options say.
//
// GetMIBConnection gives an SNMP session to UDP port 161, without asking the network anything yet.
// E_INVALIDARG, with the reason in GetLastFailure, for SnmpOptions that no agent can be spoken to
// with. Any thread may use a session; a second one waits until the operation of the first ends.
// - A request takes `timeoutMs` times `retries` + 1 at most; an operation twice that, for a name to
//   look up or version 3's question for the engine ID, and GetMultipleValues four times. An agent
//   whose port is closed is reported at once.
// - GetMultipleValues asks for 60 OIDs at once, as far as they fit a datagram of 1200 bytes. When
//   the agent answers tooBig or genErr, or is silent to a large request and answers a small one,
//   requests are halved, for the life of the session. A malformed OID has no value.
// - OCTET STRING is text when it is UTF-8 or mostly ASCII Latin-1, without control characters but
//   tab, CR and LF and NULs at the end; all else is pairs of hexadecimal digits, "00:1B:2C". Opaque
//   reals are decimal text, as are integers that VT_I4 does not hold.
// - SetValue takes integers of up to 32 bits, VT_BSTR, and arrays of VT_UI1; for the rest
//   DISP_E_TYPEMISMATCH. It is sent once, and after a time-out may have been done.
// - Failures: E_INVALIDARG for what is no OID; the error statuses, exceptions and reports of
//   error_codes.h; ResultFromError of kErrorTimeout, kErrorNameNotResolved, kErrorCannotConnect,
//   kErrorInvalidResponse (the answer is to another OID, has no known type or, of
//   GetNextOidAndValue, an OID that does not follow), kErrorInvalidHandle after Close. A wrong
//   community is a time-out: the agent does not answer.
Address* CreateNetworkAddress(const NetworkOptions& options);

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_NETWORK_ADDRESS_H_
