// From what a cache's store holds to fresh values of a data map: the walk that all caches share.
#ifndef CORVANE_CACHE_PAIRING_WALK_H_
#define CORVANE_CACHE_PAIRING_WALK_H_

#include "corvane/cache_provider.h"
#include "corvane/data_map_spec.h"

namespace Corvane {

// `stored` is taken two entries at a time, in key order: a value K and its companion K.Expires,
// which must be the very next entry. Where it is not, both are passed over: an orphan hides its
// neighbour. A pair whose companion is the text "0" goes into `out` as a value that never goes
// stale; any other only when an item of the map has the key and the value is still fresh by that
// item's lifespan. Numbers stay VT_I4, but for -1, which comes back as an empty text.
//
// 0, or 1 when there is neither a stored value nor an item, or no `out`. Moves the map's iteration.
std::uint32_t FillFromPairs(const CachedValueMap& stored, DataMapSpec* spec, CachedValueMap* out);

}  // namespace Corvane

#endif  // CORVANE_CACHE_PAIRING_WALK_H_
