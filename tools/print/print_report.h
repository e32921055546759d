// How a print job ended, in words.
#ifndef CORVANE_TOOLS_PRINT_PRINT_REPORT_H_
#define CORVANE_TOOLS_PRINT_PRINT_REPORT_H_

#include <cstdint>
#include <string>

#include "corvane/address.h"
#include "corvane/ipp_response.h"
#include "tools/output/failure.h"
#include "tools/print/own_job.h"

namespace Corvane::Tool {

// What became of a Ctrl-C; the text is escaped.
struct Cancellation {
  CancelResult result = CancelResult::kNoJob;
  std::string text;
};

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
