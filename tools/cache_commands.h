// "corvane cache show" and "corvane cache clear".
#ifndef CORVANE_TOOLS_CACHE_COMMANDS_H_
#define CORVANE_TOOLS_CACHE_COMMANDS_H_

#include <string>

#include "tools/cache_location.h"
#include "tools/failure.h"

namespace Corvane::Tool {

// What a command prints, and how it ends. Problems are kCacheFailure.
struct CommandResult {
  ExitStatus status = kAllAnswered;
  std::string output;
  std::string problems;  // lines
};

// `specification` names a file, or is empty; the calling thread must hold COM. Throws Failure.
CommandResult ShowCache(const CacheLocation& location, const std::string& specification, bool json);

// Throws Failure.
CommandResult ClearCacheReporting(const CacheLocation& location);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_CACHE_COMMANDS_H_
