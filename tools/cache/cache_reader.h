// What a cache holds, as the library tells it.
#ifndef CORVANE_TOOLS_CACHE_CACHE_READER_H_
#define CORVANE_TOOLS_CACHE_CACHE_READER_H_

#include <cstddef>
#include <string>
#include <vector>

#include "corvane/cache_provider.h"
#include "tools/options/cache_location.h"

namespace Corvane::Tool {

struct CacheContents {
  std::vector<CacheSection> sections;
  std::size_t otherKeys = 0;  // that are not of a cache's protocol
  std::string problems;       // what could not be read, escaped, each line ended
  std::uint64_t now = 0;      // FILETIME ticks
};

// A cache that is not there is empty; `specification` may be null. Throws Failure: kCacheFailure
// when nothing can be read, or when there is more than any cache would hold; kBadUsage for a
// printer that cannot be opened.
CacheContents ReadCache(const CacheLocation& location, DataMapSpecCollection* specification);

// "QM42-0071934, QUARN", escaped.
std::string TitleOf(const CacheSection& section);

struct VerdictWords {
  bool isPair;       // a value and its .Expires
  const char* kind;  // "pair"
  const char* text;  // of a pair "stale", else "a value without its .Expires"
};
VerdictWords WordsOf(CacheVerdict verdict);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_CACHE_CACHE_READER_H_
