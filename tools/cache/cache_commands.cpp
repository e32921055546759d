#include "tools/cache/cache_commands.h"

#include <optional>
#include <vector>

#include "tools/cache/cache_clearing.h"
#include "tools/cache/cache_entries.h"
#include "tools/cache/cache_listing.h"
#include "tools/cache/cache_reader.h"

namespace Corvane::Tool {
namespace {

void AddProblems(const std::vector<std::string>& problems, CommandResult* result) {
  for (const std::string& problem : problems) {
    result->problems += problem + '\n';
    result->status = kCacheFailure;
  }
}

}  // namespace

CommandResult ShowCache(const CacheLocation& location, const std::string& specification,
                        bool json) {
  std::optional<Lifespans> lifespans;
  if (!specification.empty()) lifespans.emplace(LoadSpecification(specification));
  const Lifespans* const known = lifespans ? &*lifespans : nullptr;
  const CacheContents contents = ReadCache(location);
  const std::uint64_t now = CurrentTicks();
  CommandResult result;
  result.output =
      json ? ListingJson(location, contents, known, now) : ListingText(contents, known, now);
  AddProblems(contents.problems, &result);
  return result;
}

CommandResult ClearCacheReporting(const CacheLocation& location) {
  const CacheContents contents = ReadCache(location);
  const ClearResult cleared = ClearCache(location, contents);
  CommandResult result;
  result.output = "Removed " + std::to_string(cleared.values) + " values and " +
                  std::to_string(cleared.keys) + " keys.\n";
  for (const std::string& line : cleared.left) result.output += "Left: " + line + '\n';
  AddProblems(contents.problems, &result);
  AddProblems(cleared.problems, &result);
  return result;
}

}  // namespace Corvane::Tool
