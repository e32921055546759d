// What a cache holds, as text and as JSON.
#ifndef CORVANE_TOOLS_CACHE_CACHE_LISTING_H_
#define CORVANE_TOOLS_CACHE_CACHE_LISTING_H_

#include <cstdint>
#include <string>

#include "tools/cache/cache_entries.h"
#include "tools/cache/cache_reader.h"

namespace Corvane::Tool {

// `lifespans` is null without a specification; `now` in FILETIME ticks. UTF-8, each line ended.

// A line "DEVICE, PROTOCOL:" for each section and below it, indented, a line for each value: key,
// value, age and, with a specification, freshness, between tabs and escaped.
std::string ListingText(const CacheContents& contents, const Lifespans* lifespans,
                        std::uint64_t now);

// One object with everything that is known; times and ages are exact, in ticks of 100 ns.
std::string ListingJson(const CacheLocation& location, const CacheContents& contents,
                        const Lifespans* lifespans, std::uint64_t now);

// "QM42-0071934, QUARN", escaped.
std::string TitleOf(const CacheSection& section);

// "a value without its .Expires": what an entry other than a pair is.
const char* DescriptionOf(EntryKind kind);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_CACHE_CACHE_LISTING_H_
