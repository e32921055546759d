// One IPP operation over HTTP (RFC 8010, 4).
#ifndef CORVANE_TOOLS_IPP_IPP_EXCHANGE_H_
#define CORVANE_TOOLS_IPP_IPP_EXCHANGE_H_

#include <cstdint>
#include <optional>
#include <string>

#include "corvane/address.h"
#include "tools/ipp/ipp_message.h"

namespace Corvane::Tool {

namespace IPPOperation {
constexpr int kCancelJob = 0x08;
constexpr int kGetJobs = 0x0A;
constexpr int kGetPrinterAttributes = 0x0B;
}  // namespace IPPOperation

// Sends `message` to `path` on the port, 631 or 443, of the device, whose limits of time hold. The
// answer may be a refusal. Nothing when no IPP answer came; *problem then says why, escaped, in one
// line.
std::optional<IPPAnswer> ExchangeIPP(Address& address, std::uint32_t port, const std::string& path,
                                     const std::string& message, std::string* problem);

// "IPP status 0x0406: no such printer", with what the printer says of it: escaped, in one line.
std::string StatusText(const IPPAnswer& answer);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_IPP_IPP_EXCHANGE_H_
