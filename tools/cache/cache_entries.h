// What the values of a cache's store mean: pairs of a value K and its companion K.Expires, which
// holds the time of its fetch, and what is left over.
#ifndef CORVANE_TOOLS_CACHE_CACHE_ENTRIES_H_
#define CORVANE_TOOLS_CACHE_CACHE_ENTRIES_H_

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/cache/cache_reader.h"
#include "tools/map/specification.h"

namespace Corvane::Tool {

enum class EntryKind {
  kPair,            // value and companion
  kValueAlone,      // no companion
  kCompanionAlone,  // no value
  kForeign,         // of a type that no cache writes; or the companion of such a value
};

struct CacheEntry {
  EntryKind kind = EntryKind::kForeign;
  std::wstring key;                        // of a companion alone: without its ".Expires"
  const StoredValue* value = nullptr;      // null for a companion alone
  const StoredValue* companion = nullptr;  // of kPair and kCompanionAlone
  // Of kPair: the library, which takes the values of a store two by two in the order of their
  // names, does not come upon this one as a pair, because another name stands between or before.
  bool isPassedOver = false;

  bool NeverGoesStale() const;
  // FILETIME ticks, when the companion is a decimal number.
  std::optional<std::uint64_t> Timestamp() const;
  // A pair or a companion alone as the library writes them: what may be deleted.
  bool IsOfACache() const;
};

// `values` must be sorted by name, and outlive the entries.
std::vector<CacheEntry> EntriesOf(const std::vector<StoredValue>& values);

// REG_SZ as the library reads it: up to its first NUL.
std::wstring TextOf(const StoredValue& value);
// REG_DWORD of 4 bytes.
std::optional<std::int32_t> NumberOf(const StoredValue& value);

// FILETIME ticks: 100 ns since 1601-01-01 UTC.
std::uint64_t CurrentTicks();

enum class Freshness { kFresh, kStale, kNotInSpecification, kDependsOnTheMap };

struct Judgement {
  Freshness freshness = Freshness::kNotInSpecification;
  std::optional<std::uint32_t> lifespan;  // tenths of a second, when the specification tells one
};

// The lifespans that a specification gives its items.
class Lifespans {
 public:
  explicit Lifespans(const std::vector<DataMap>& maps);

  // Of a pair of the section, by the library's rule and the first data map of its protocol; of a
  // printer's, whose protocol the store does not tell, by all data maps that have the item.
  Judgement Judge(const CacheEntry& pair, const CacheSection& section, std::uint64_t now) const;

 private:
  struct Map {
    std::wstring protocol;
    std::map<std::wstring, std::uint32_t> lifespans;  // by item key
  };

  std::vector<Map> m_maps;
};

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_CACHE_CACHE_ENTRIES_H_
