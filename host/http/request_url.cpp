#include "host/http/request_url.h"

#include <arpa/inet.h>
#include <curl/curl.h>

#include <algorithm>

#include "base/letter_case.h"
#include "base/utf8.h"
#include "host/http/curl_handles.h"

namespace Corvane::Host {
namespace {

constexpr std::size_t kMaxHostNameChars = 253;  // RFC 1035, 2.3.4, as text

bool IsAlphanumeric(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool IsHexDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

bool ConsistsOf(std::string_view text, std::string_view punctuation) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [punctuation](char c) {
    return IsAlphanumeric(c) || punctuation.find(c) != std::string_view::npos;
  });
}

// "fe80::1%eth0" (RFC 4007, 11) is "[fe80::1%25eth0]" in a URL (RFC 6874, 2).
std::optional<std::string> UrlHostOfIpv6(std::string_view literal) {
  const std::size_t percent = literal.find('%');
  const std::string address(literal.substr(0, percent));
  in6_addr parsed{};
  if (inet_pton(AF_INET6, address.c_str(), &parsed) != 1) return std::nullopt;
  if (percent == std::string_view::npos) return '[' + address + ']';
  const std::string_view zone = literal.substr(percent + 1);
  if (!ConsistsOf(zone, "-._~")) return std::nullopt;
  return '[' + address + "%25" + std::string(zone) + ']';
}

std::string UrlPart(const CurlUrl& url, CURLUPart part, unsigned int flags = 0) {
  char* text = nullptr;
  if (curl_url_get(url.get(), part, &text, flags) != CURLUE_OK) return {};
  const CurlText owned(text);
  return text;
}

// None when it is no URL, or none that is spoken here.
CurlUrl ParseUrl(const std::string& base, const std::string& relative) {
  CurlUrl url(curl_url());
  for (const std::string& text : {base, relative}) {
    if (url && curl_url_set(url.get(), CURLUPART_URL, text.c_str(),
                            CURLU_PATH_AS_IS | CURLU_URLENCODE) != CURLUE_OK) {
      url.reset();
    }
  }
  return url;
}

std::size_t UrlPathBegin(const std::string& url) { return url.find('/', url.find("//") + 2); }

}  // namespace

std::optional<std::string> UrlHost(std::wstring_view host) {
  const std::string text = ToUtf8(host);
  if (text.find(':') != std::string::npos) return UrlHostOfIpv6(text);
  if (text.size() > kMaxHostNameChars || !ConsistsOf(text, "-._") || !IsAlphanumeric(text[0])) {
    return std::nullopt;
  }
  return text;
}

std::string Origin(std::string_view urlHost, std::uint32_t port, bool tls) {
  return (tls ? "https://" : "http://") + std::string(urlHost) + ':' + std::to_string(port);
}

std::string OriginOf(const std::string& url) { return url.substr(0, UrlPathBegin(url)); }

std::string EncodeTarget(std::string_view path) {
  constexpr std::string_view kPlain = "-._~!$&'()*+,;=:@/?";  // RFC 3986, 3.3 and 3.4
  constexpr char kHex[] = "0123456789ABCDEF";
  std::string target;
  target.reserve(path.size() + 1);
  if (path.empty() || path[0] != '/') target.push_back('/');
  for (std::size_t i = 0; i < path.size(); ++i) {
    const char c = path[i];
    const bool escape =
        c == '%' && i + 2 < path.size() && IsHexDigit(path[i + 1]) && IsHexDigit(path[i + 2]);
    if (escape || IsAlphanumeric(c) || kPlain.find(c) != std::string_view::npos) {
      target.push_back(c);
    } else {
      const auto byte = static_cast<unsigned char>(c);
      target += {'%', kHex[byte >> 4], kHex[byte & 0xF]};
    }
  }
  return target;
}

UrlInHead SplitUrl(const std::string& url) {
  UrlInHead split;
  const CurlUrl parsed = ParseUrl(url, url);
  if (!parsed) return split;
  split.host = UrlPart(parsed, CURLUPART_HOST);
  const std::string port = UrlPart(parsed, CURLUPART_PORT, CURLU_NO_DEFAULT_PORT);
  if (!port.empty()) split.host += ':' + port;
  split.target = url.substr(UrlPathBegin(url));
  return split;
}

std::optional<std::string> RedirectWithinOrigin(const std::string& url,
                                                const std::string& location) {
  const CurlUrl source = ParseUrl(url, url);
  const CurlUrl target = ParseUrl(url, location);
  if (!source || !target) return std::nullopt;
  for (const CURLUPart part : {CURLUPART_SCHEME, CURLUPART_HOST, CURLUPART_PORT}) {
    if (!EqualsIgnoreAsciiCase(UrlPart(source, part, CURLU_DEFAULT_PORT),
                               UrlPart(target, part, CURLU_DEFAULT_PORT))) {
      return std::nullopt;
    }
  }
  if (!UrlPart(target, CURLUPART_USER).empty() || !UrlPart(target, CURLUPART_PASSWORD).empty()) {
    return std::nullopt;
  }
  // Only the path and the query are the device's word; the rest stays as it was.
  std::string path = UrlPart(target, CURLUPART_PATH);
  if (const std::string query = UrlPart(target, CURLUPART_QUERY); !query.empty())
    path += '?' + query;
  return OriginOf(url) + EncodeTarget(path);
}

}  // namespace Corvane::Host
