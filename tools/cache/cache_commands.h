// "corvane cache show" and "corvane cache clear".
#ifndef CORVANE_TOOLS_CACHE_CACHE_COMMANDS_H_
#define CORVANE_TOOLS_CACHE_CACHE_COMMANDS_H_

#include <string>

#include "tools/options/cache_location.h"
#include "tools/output/failure.h"

namespace Corvane::Tool {

// Both end with kCacheFailure when there are problems, and throw Failure.

// `specification` names a file, or is empty; the calling thread must hold COM.
CommandResult ShowCache(const CacheLocation& location, const std::string& specification, bool json);

// Deletes what the library says is a cache's own and nothing else, so that a mistaken path costs
// nothing; then the keys that this leaves without values and keys, from the section's up to the
// cache's own.
CommandResult ClearCache(const CacheLocation& location);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_CACHE_CACHE_COMMANDS_H_
