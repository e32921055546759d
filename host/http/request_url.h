// URLs of one device: nothing that a path holds can lead a request elsewhere.
#ifndef CORVANE_HOST_HTTP_REQUEST_URL_H_
#define CORVANE_HOST_HTTP_REQUEST_URL_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Corvane::Host {

// How a URL writes `host`: an IPv6 literal, with or without a zone, gets brackets. None when it is
// neither a literal nor a name of ASCII letters, digits, '-', '_' and '.'. A name in other scripts
// is given in its "xn--" form: mapping it here could yield characters that end the host of a URL.
std::optional<std::string> UrlHost(std::wstring_view host);

// "https://[::1]:443", of an already checked host.
std::string Origin(std::string_view urlHost, std::uint32_t port, bool tls);
// The same, of a URL that begins with one.
std::string OriginOf(const std::string& url);

// The request target for a resource path, UTF-8: a '/' in front where there is none, and
// percent-encoded what RFC 3986 has no place for in a path with a query: controls, '\', '#', stray
// '%', all beyond ASCII. Applying it again changes nothing.
std::string EncodeTarget(std::string_view path);

// What a request head says of a URL that was made of an origin and a target.
struct UrlInHead {
  std::string host;    // "[fe80::1]:631": no zone, and no port that is the scheme's own
  std::string target;  // with the query
};
// Empty for a URL that curl would not take.
UrlInHead SplitUrl(const std::string& url);

// The URL on the device that a redirect from `url` leads to, whose field Location (RFC
// 9110, 10.2.2) is given; none when scheme, host or port differ from those of `url`, or there is
// user information.
std::optional<std::string> RedirectWithinOrigin(const std::string& url,
                                                const std::string& location);

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_REQUEST_URL_H_
