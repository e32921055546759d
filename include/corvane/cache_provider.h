// Caches: where fetched values outlive the run.
#ifndef CORVANE_CACHE_PROVIDER_H_
#define CORVANE_CACHE_PROVIDER_H_

#include <cstdint>
#include <map>
#include <string>

#include "corvane/code_unit_less.h"
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

}  // namespace Corvane

// Each returns a cache with one reference, the caller's; null when there is no memory. Make a new
// one for each collection: it remembers whose values it keeps.
//
// A value is stored with the moment of its fetch; whether it is fresh is told, when it is loaded,
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

}  // extern "C"

namespace Corvane {
using ::CreatePrintDataCacheProvider;
using ::CreateRegCacheProvider;
}  // namespace Corvane

#endif  // CORVANE_CACHE_PROVIDER_H_
