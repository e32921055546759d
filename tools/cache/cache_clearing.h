// Emptying a cache.
#ifndef CORVANE_TOOLS_CACHE_CACHE_CLEARING_H_
#define CORVANE_TOOLS_CACHE_CACHE_CLEARING_H_

#include <cstddef>
#include <string>
#include <vector>

#include "tools/cache/cache_reader.h"

namespace Corvane::Tool {

struct ClearResult {
  std::size_t values = 0;             // deleted, companions counted
  std::size_t keys = 0;               // deleted
  std::vector<std::string> left;      // what was not touched, escaped, a line each
  std::vector<std::string> problems;  // what could not be deleted, escaped, a line each
};

// Deletes what the library writes and nothing else, so that a mistaken path costs nothing: in the
// sections of a device and protocol, or of a printer, values with a companion that holds a number,
// and such companions alone; then the keys that this leaves without values and keys, from the
// section's up to the cache's own.
ClearResult ClearCache(const CacheLocation& location, const CacheContents& contents);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_CACHE_CACHE_CLEARING_H_
