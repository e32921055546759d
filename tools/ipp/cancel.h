// "corvane cancel".
#ifndef CORVANE_TOOLS_IPP_CANCEL_H_
#define CORVANE_TOOLS_IPP_CANCEL_H_

#include "tools/options/options.h"
#include "tools/output/failure.h"

namespace Corvane::Tool {

// Cancels the job given, or the first that goes on, if the printer lists it as the user's. Throws
// Failure: kBadUsage; kNoAnswer when there is no such job or no answer; kNotPrinted when the
// printer refuses.
CommandResult CancelUserJob(const Options& options);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_IPP_CANCEL_H_
