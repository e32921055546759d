// "corvane cache show" and "corvane cache clear".
#ifndef CORVANE_TOOLS_CACHE_CACHE_COMMANDS_H_
#define CORVANE_TOOLS_CACHE_CACHE_COMMANDS_H_

#include <string>

#include "tools/options/cache_location.h"
#include "tools/output/command_result.h"

namespace Corvane::Tool {

// Both end with kCacheFailure when there are problems. `specification` names a file, or is empty;
// the calling thread must hold COM. Throws Failure.
CommandResult ShowCache(const CacheLocation& location, const std::string& specification, bool json);

// Throws Failure.
CommandResult ClearCacheReporting(const CacheLocation& location);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_CACHE_CACHE_COMMANDS_H_
