// Caches: where fetched values outlive the run.
#ifndef CORVANE_CACHE_PROVIDER_H_
#define CORVANE_CACHE_PROVIDER_H_

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "corvane/code_unit_less.h"
#include "corvane/data_map_spec_collection.h"
#include "corvane/disposable.h"

namespace Corvane {

// A value with its age. `timestamp` is the moment it was fetched, in ticks of 100 ns since
// 1601-01-01 UTC; `lifespan` is how long it stays fresh, in tenths of a second; lifespan 0 never
// goes stale.
struct CachedValue {
  _variant_t value;
  std::uint64_t timestamp = 0;
  std::uint32_t lifespan = 0;
};

// Keyed by item key: the item's name, or prefix + ":" + name.
using CachedValueMap = std::map<std::wstring, CachedValue, CodeUnitLess>;

// A data collection loads a cache's values when it is made and hands it its whole store when it
// goes. No locks: used by the thread of its collection. Results: 0 success, 1 failure or not found.
// Values that are neither VT_BSTR nor VT_I4 are not kept.
class ICacheProvider : public Corvane::IDisposable {
 public:
  virtual ~ICacheProvider() = default;
  // A copy of what was last read from the cache's place under `name`, whatever its age; the
  // companion of a key, its fetch time as text, is at key + ".Expires". `value` must be
  // initialised: on 0 it is cleared and filled, and the caller clears it; on 1 it is untouched.
  virtual std::uint32_t GetDataValue(const wchar_t* name, VARIANT* value) = 0;
  // Writes a value and the moment of its fetch (as CachedValue's; 0 never goes stale). 1 when
  // `name` is null or the cache's place cannot be had. 0 does not say that the system took the
  // value: a refusal is traced.
  virtual std::uint32_t SetDataValue(const wchar_t* name, const VARIANT* value,
                                     std::int64_t timestamp) = 0;
  // The same for every entry that is still fresh: all of them or, with 1, none where the system
  // can.
  virtual std::uint32_t SetDataValues(const CachedValueMap* values) = 0;
};

// What loading makes of a value in a cache's place.
enum class CacheVerdict : std::int32_t {
  kNeverStale,          // loaded, whatever the specification says: stored to stay for ever
  kFresh,               // loaded
  kStale,               // thrown away: older than the lifespan of its item, or from the future
  kDependsOnTheMap,     // loaded or not, by which of several maps, with lifespans that differ
  kNotInSpecification,  // thrown away: no item has the key
  kNoCompanion,         // thrown away: a value without the time of its fetch
  kNoValue,             // thrown away: the time of a fetch without its value
  kForeign,             // not a cache's: of another type, or such a value's companion
};

// A value with its companion, or what there is of the two.
struct CacheEntry {
  std::wstring key;  // the item key; of kNoValue that of the value that is missing
  CacheVerdict verdict = CacheVerdict::kForeign;
  // A value and its companion are there, but another name stands between or before, so that
  // loading, which takes names two by two, does not come upon them: thrown away, whatever the
  // verdict.
  bool isPassedOver = false;
  // As they lie there: VT_BSTR or VT_I4 (-1 too, which is loaded as an empty text), VT_EMPTY when
  // missing or of another type.
  _variant_t value;
  _variant_t companion;
  DWORD type = REG_NONE;  // of the value: REG_...
  std::size_t bytes = 0;  // of the value's data
  // As CachedValue's timestamp, 0 for ever; none unless the companion holds a time as caches write
  // it. Loading takes any other text for the number that it begins with, or for 1601.
  std::optional<std::uint64_t> fetchTime;
  // From the fetch to now, in ticks of 100 ns: negative when it lies in the future. None without a
  // time of the fetch, or with 0.
  std::optional<std::int64_t> age;
  // Of the item; none when no map has it, or maps disagree.
  std::optional<std::uint32_t> lifespan;
  // The names in the store, the companion last, of what is recognisably a cache's and may be
  // deleted; empty otherwise.
  std::vector<std::wstring> ownNames;
};

// What lies in one place: in a key, or with a printer.
struct CacheSection {
  std::wstring path;      // of the key, below HKEY_LOCAL_MACHINE; empty for a printer
  std::wstring device;    // as the key is named; empty for a device that tells no identity
  std::wstring protocol;  // as the key is named; empty for the cache's own key and for a printer
  // False for a key below the cache's that is no protocol's and has no keys below. It has no
  // entries here.
  bool isOfACache = true;
  std::vector<CacheEntry> entries;  // in the order of names
  // Why the key could not be read, or not to its end: a system error code.
  std::uint32_t error = 0;
};

// Keys that are looked at below a cache's own: against a walk through half the machine when a path
// is mistaken for a cache's.
constexpr std::size_t kMaxCacheKeys = 10'000;

class CacheVisitor {
 public:
  virtual ~CacheVisitor() = default;
  // `section` is the library's, and gone after the call. What this throws ends the review.
  virtual void Visit(const CacheSection& section) = 0;
};

// The key of a printer's data that is a cache's place.
inline constexpr wchar_t kPrintDataCacheKey[] = L"UBidiData";

}  // namespace Corvane

// Each returns a cache with one reference, the caller's; null when there is no memory. Make a new
// one for each collection: it remembers whose values it keeps.
//
// A value is stored with the moment of its fetch; whether it is fresh is decided when it is loaded,
// by the lifespan that the specification gives its item then. A key that is no item's, as that of a
// walk's step, comes back only if it was stored to stay for ever. Keys and companions are paired in
// their order, so a key that sorts between another and its companion ("Size-x" between "Size" and
// "Size.Expires") hides both.
extern "C" {

// The registry below HKEY_LOCAL_MACHINE (on Linux: corvane/linux/registry.h): a key for each
// device, by its serial number or UUID, and protocol, under the key `registryPath`. Devices that
// tell neither share one. Writing takes the right to make keys there. With a null or empty path
// nothing is kept. The integer -1 comes back as an empty text.
CORVANE_API Corvane::ICacheProvider* CreateRegCacheProvider(const wchar_t* registryPath);

// The driver data of an open printer (on Linux: corvane/linux/spooler.h), under the key
// "UBidiData", read now: one set of values, whatever the device. Writing takes
// PRINTER_ACCESS_ADMINISTER. Only texts are kept. The printer stays the caller's and must stay open
// while the cache lives.
CORVANE_API Corvane::ICacheProvider* CreatePrintDataCacheProvider(HANDLE printer);

// Show `visitor` what a cache holds and what loading would make of it now, by the same code. They
// read, and exchange nothing with a device.
// - specification: may be null, and has no items then. A key of a protocol is judged by the first
//   map of that protocol; the cache's own key and a printer, which tell none, by all maps.
// - now: the time from which ages are counted, as CachedValue's timestamp. Not null; written first.
// Results:
// - 0: also for a cache that is not there.
// - ERROR_OUTOFMEMORY: also when the visitor threw; it may have seen a part.
// - ERROR_MORE_DATA: more than kMaxCacheKeys keys lie below the path, which is no cache's then. Or
//   a printer's data grew while they were read, again and again.
// - The system's error code. After this and the one before nothing was shown.

// The keys of the cache at `registryPath`, in the order of devices and protocols; its own key,
// where values of devices lie that tell neither, first, and only if it has values.
CORVANE_API std::uint32_t ReviewRegCache(const wchar_t* registryPath,
                                         Corvane::DataMapSpecCollection* specification,
                                         Corvane::CacheVisitor* visitor, std::uint64_t* now);
// One section, if the printer has values. `printer` is open.
CORVANE_API std::uint32_t ReviewPrintDataCache(HANDLE printer,
                                               Corvane::DataMapSpecCollection* specification,
                                               Corvane::CacheVisitor* visitor, std::uint64_t* now);

}  // extern "C"

namespace Corvane {
using ::CreatePrintDataCacheProvider;
using ::CreateRegCacheProvider;
using ::ReviewPrintDataCache;
using ::ReviewRegCache;
}  // namespace Corvane

#endif  // CORVANE_CACHE_PROVIDER_H_
