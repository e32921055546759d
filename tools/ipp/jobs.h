// "corvane jobs" and "corvane cancel".
#ifndef CORVANE_TOOLS_IPP_JOBS_H_
#define CORVANE_TOOLS_IPP_JOBS_H_

#include "tools/options/options.h"
#include "tools/output/failure.h"

namespace Corvane::Tool {

// The user's jobs that the printer tells (Get-Jobs, RFC 8011, 4.2.6): id, state, its reasons, name,
// user and URI. As text a line each with tabs between them, escaped, "-" for what the printer does
// not tell; as JSON an array of objects with the names of RFC 8011, null for that. Throws Failure:
// kBadUsage, or kNoAnswer when no list came.
CommandResult ListJobs(const Options& options);

// Cancels the job given, or the first that goes on, if the printer lists it as the user's. Throws
// Failure: kBadUsage; kNoAnswer when there is no such job or no answer; kNotPrinted when the
// printer refuses.
CommandResult CancelUserJob(const Options& options);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_IPP_JOBS_H_
