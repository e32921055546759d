// The printer that the command line names.
#ifndef CORVANE_TOOLS_IPP_PRINTER_ADDRESS_H_
#define CORVANE_TOOLS_IPP_PRINTER_ADDRESS_H_

#include <string>

#include "tools/ipp/printer_uri.h"
#include "tools/options/options.h"

namespace Corvane::Tool {

// How the printer at `uri` is reached: `options` with the device, the host of the URI where none is
// given, the URI's port, the trust and the credentials. Throws Failure with kBadUsage for a
// recorded device, and an account without a password or without TLS.
Options ReachPrinter(const Options& options, const PrinterUri& uri);

// CORVANE_PASSWORD, or "password = TEXT" of a secrets file, which wins. Throws Failure with
// kBadUsage when there is none.
std::string AccountPassword(const std::string& secretsFile);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_IPP_PRINTER_ADDRESS_H_
