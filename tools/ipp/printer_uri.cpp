#include "tools/ipp/printer_uri.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "base/decimal.h"
#include "corvane/address.h"
#include "tools/output/failure.h"

namespace Corvane::Tool {
namespace {

constexpr std::size_t kMaxUriBytes = 1023;  // RFC 8011, 5.1.6
constexpr std::uint32_t kLastPort = 65535;

[[noreturn]] void RefuseUri(const std::string& text) {
  ThrowUsage("--uri " + text + ": expected ipp://HOST/PATH or ipps://HOST/PATH");
}

}  // namespace

PrinterUri ParsePrinterUri(const std::string& text) {
  const bool isPlain = std::all_of(text.begin(), text.end(), [](char c) {
    return c > ' ' && c < '\x7F' && c != '#' && c != '\\' && c != '"' && c != '<' && c != '>';
  });
  if (!isPlain || text.size() > kMaxUriBytes) RefuseUri(text);
  PrinterUri uri;
  uri.text = text;
  std::string_view rest = text;
  if (rest.starts_with("ipp://")) {
    uri.servicePort = kIppPort;
  } else if (rest.starts_with("ipps://")) {
    uri.servicePort = kIppsPort;
  } else {
    RefuseUri(text);
  }
  rest.remove_prefix(rest.find("://") + 3);
  const std::size_t pathBegin = std::min(rest.find_first_of("/?"), rest.size());
  std::string_view authority = rest.substr(0, pathBegin);
  uri.path = rest.substr(pathBegin);
  if (!uri.path.starts_with('/')) uri.path.insert(0, 1, '/');

  const std::size_t bracket = authority.rfind(']');  // of an IPv6 literal, which has colons
  const std::size_t colon = authority.rfind(':');
  if (colon != std::string_view::npos && (bracket == std::string_view::npos || colon > bracket)) {
    const std::uint64_t port = ParseDigits(authority.substr(colon + 1), kLastPort).value_or(0);
    if (port == 0) RefuseUri(text);
    uri.port = static_cast<std::uint32_t>(port);
    authority = authority.substr(0, colon);
  }
  // A user name would go to the printer within the URI, and to its log.
  if (authority.empty() || authority.find('@') != std::string_view::npos) RefuseUri(text);
  uri.host = authority;
  if (authority.starts_with('[') && authority.ends_with(']')) {
    uri.host = authority.substr(1, authority.size() - 2);
  }
  return uri;
}

}  // namespace Corvane::Tool
