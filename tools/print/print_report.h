// How a print job ended, in words, which are escaped.
#ifndef CORVANE_TOOLS_PRINT_PRINT_REPORT_H_
#define CORVANE_TOOLS_PRINT_PRINT_REPORT_H_

#include <cstdint>
#include <string>

#include "corvane/ipp_provider.h"
#include "tools/output/failure.h"

namespace Corvane::Tool {

enum class CancelResult {
  kCancelled,  // the printer says so
  kNoJob,      // it lists none that is certainly this one, or the document's end was quicker
  kUnknown,    // it does not answer, or refuses
};

// What became of a Ctrl-C.
struct Cancellation {
  CancelResult result = CancelResult::kNoJob;
  std::string text;
};

// Cancels what `provider`, over `address`, is printing, on any thread. Six seconds at the longest.
Cancellation Cancel(IPPProvider& provider, Address& address);

std::string CancelledText(const Cancellation& cancellation);
std::string PerhapsPrintedText(const Cancellation& cancellation);

// Why there is no provider: `error` is the last error of its creation. kBadUsage where the URI is
// to blame, else kNotPrinted.
Failure CreationFailure(std::uint32_t error, Address& address);

// Why the library's PrintJob or PrintJobWrite failed, and what that means.
Failure PrintFailure(std::uint32_t error, IPPResponseBase& response, Address& address);

// "job 3, completed", as far as the printer tells.
std::string JobText(IPPResponseBase& response);
// Id, state and URI with tabs between them, "-" for what the printer does not tell.
std::string JobLine(IPPResponseBase& response);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_PRINT_PRINT_REPORT_H_
