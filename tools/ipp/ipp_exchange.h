// One IPP operation over HTTP (RFC 8010, 4).
#ifndef CORVANE_TOOLS_IPP_IPP_EXCHANGE_H_
#define CORVANE_TOOLS_IPP_IPP_EXCHANGE_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "corvane/address.h"
#include "ipp/wire/codes.h"
#include "ipp/wire/message.h"

namespace Corvane::Tool {

// A longer answer is none; a thousand jobs of a talkative printer are 4 MB.
constexpr std::size_t kMaxIPPAnswerBytes = std::size_t{4} << 20;

// A request to the printer at `printerUri`, with UTF-8 text in English; AppendIPPValue adds to it.
std::string BeginIPPRequest(int operation, const std::string& printerUri);

// Ends `request` and sends it to `path` on the port, 631 or 443, of the device, whose limits of
// time hold. The answer may be a refusal. Nothing when no IPP answer came; *problem then says why,
// escaped, in one line.
std::optional<IPPMessage> ExchangeIPP(Address& address, std::uint32_t port, const std::string& path,
                                      std::string request, std::string* problem);

inline bool IsSuccessful(const IPPMessage& answer) {
  return answer.Header().code <= IPPStatus::kLastSuccess;
}
// "IPP status 0x0406: no such printer", with what the printer says of it: escaped, in one line.
std::string StatusText(const IPPMessage& answer);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_IPP_IPP_EXCHANGE_H_
