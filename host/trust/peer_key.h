// The public key that the other end of a TLS connection has shown.
#ifndef CORVANE_HOST_TRUST_PEER_KEY_H_
#define CORVANE_HOST_TRUST_PEER_KEY_H_

#include <curl/curl.h>

#include <string>
#include <string_view>

namespace Corvane::Host {

// "sha256//" and the Base64 of the hash of the certificate's SubjectPublicKeyInfo (RFC 7469, 2.4),
// as CURLOPT_PINNEDPUBLICKEY takes it, of the handle's last handshake, also of one that curl gave
// up for the key's sake. Empty when there was none, or the handle was not told to keep it
// (CURLOPT_CERTINFO).
std::string PeerKey(CURL* handle);

// RFC 4648, 4.
std::string Base64(std::string_view bytes);

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_TRUST_PEER_KEY_H_
