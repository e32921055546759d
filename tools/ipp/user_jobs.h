// A user's jobs of a printer.
#ifndef CORVANE_TOOLS_IPP_USER_JOBS_H_
#define CORVANE_TOOLS_IPP_USER_JOBS_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "corvane/address.h"
#include "ipp/wire/job.h"
#include "ipp/wire/message.h"
#include "tools/ipp/printer_uri.h"

namespace Corvane::Tool {

// `user`, or the login name. Throws Failure with kBadUsage when there is none, or it is longer than
// printers take.
std::string RequestingUser(const std::string& user);

// What "jobs" tells of a job.
inline constexpr std::string_view kJobAttributes[] = {
    "job-id", "job-state", "job-state-reasons", "job-name", "job-originating-user-name", "job-uri"};

// Get-Jobs (RFC 8011, 4.2.6). Nothing when the printer does not answer or refuses; *problem then
// says why, escaped, in one line.
std::optional<IPPMessage> AskForJobs(Address& address, const PrinterUri& uri,
                                     const std::string& user, bool completed, std::string* problem);

// Whether it has ended, or is about to without being printed.
bool IsEnding(const IPPJob& job);

// Cancel-Job (RFC 8011, 4.3.3). False when the printer does not answer or refuses; with *problem as
// above.
bool CancelJobAt(Address& address, const PrinterUri& uri, const std::string& user,
                 std::int32_t jobId, std::string* problem);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_IPP_USER_JOBS_H_
