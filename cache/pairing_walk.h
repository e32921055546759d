// From what a cache's store holds to fresh values of a data map: the walk and the judgement that
// all caches share.
#ifndef CORVANE_CACHE_PAIRING_WALK_H_
#define CORVANE_CACHE_PAIRING_WALK_H_

#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "cache/stored_value.h"
#include "corvane/cache_provider.h"
#include "corvane/data_map_spec.h"

namespace Corvane {

// How long items stay fresh, by item key. More than one map when any of them may be the one that a
// device is read by.
class LifespanTable {
 public:
  // Null entries are empty maps.
  explicit LifespanTable(std::vector<DataMapSpec*> maps) : m_maps(std::move(maps)) {}

  // Of the maps that have an item with the key; 0, never, is the longest of all.
  struct Range {
    std::uint32_t shortest;
    std::uint32_t longest;
  };
  // None without such an item. The first call reads the maps, and moves their iteration.
  std::optional<Range> Of(const std::wstring& key);

 private:
  std::vector<DataMapSpec*> m_maps;
  std::vector<std::unordered_map<std::wstring, std::uint32_t>> m_byKey;  // a table a map
};

// Takes `stored` two entries at a time, in key order: calls `onPair(key, value, companion)` for a
// value K and its companion K.Expires, which must be the very next entry. Where it is not, both are
// passed over: an orphan hides its neighbour.
template <typename OnPair>
void WalkPairs(const CachedValueMap& stored, OnPair onPair) {
  for (auto entry = stored.begin(); entry != stored.end();) {
    const auto& [key, data] = *entry++;
    if (entry == stored.end()) return;
    const auto& [companionName, companion] = *entry++;
    if (IsCompanionOf(key, companionName)) onPair(key, data.value, companion.value);
  }
}

// What a pair is worth now. Of a pair that is loaded the timestamp and lifespan that it gets.
struct Judgement {
  CacheVerdict verdict;
  std::uint64_t timestamp = 0;
  std::uint32_t lifespan = 0;
};
// A companion that is the text "0" never goes stale; any other is a time by its number up to the
// first character that is none, or 0.
Judgement JudgePair(const std::wstring& key, const VARIANT& companion, LifespanTable* lifespans);

// Adds the pairs of the walk that are fresh to `out`. Numbers stay VT_I4, but for -1, which comes
// back as an empty text.
//
// 0, or 1 when there is neither a stored value nor an item, or no `out`. Moves the map's iteration.
std::uint32_t FillFromPairs(const CachedValueMap& stored, DataMapSpec* spec, CachedValueMap* out);

}  // namespace Corvane

#endif  // CORVANE_CACHE_PAIRING_WALK_H_
