// The URI of a printer (RFC 3510, RFC 7472).
#ifndef CORVANE_TOOLS_IPP_PRINTER_URI_H_
#define CORVANE_TOOLS_IPP_PRINTER_URI_H_

#include <cstdint>
#include <optional>
#include <string>

namespace Corvane::Tool {

struct PrinterUri {
  std::string text;
  std::string host;                   // without the brackets of an IPv6 literal
  std::uint32_t servicePort = 0;      // as the library asks for it: 631, or 443 of an ipps URI
  std::optional<std::uint32_t> port;  // that stands in the URI
  std::string path;                   // with the query; "/" when there is none

  bool IsSecure() const { return text.starts_with("ipps:"); }
};

// "ipp://192.0.2.7/ipp/print". Throws Failure with kBadUsage.
PrinterUri ParsePrinterUri(const std::string& text);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_IPP_PRINTER_URI_H_
