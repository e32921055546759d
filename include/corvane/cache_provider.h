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
class ICacheProvider : public Corvane::IDisposable {
 public:
  virtual ~ICacheProvider() = default;
  // A copy of the value read from the store under `name`; the caller clears it.
  virtual std::uint32_t GetDataValue(const wchar_t* name, VARIANT* value) = 0;
  virtual std::uint32_t SetDataValue(const wchar_t* name, const VARIANT* value,
                                     std::int64_t timestamp) = 0;
  // Writes every entry that is still fresh.
  virtual std::uint32_t SetDataValues(const CachedValueMap* values) = 0;
};

}  // namespace Corvane

// Each returns a cache with one reference, the caller's; null when there is no memory. Give it to
// one collection, or to one after the other: it keeps the identity of the collection's device.
//
// Both keep VT_BSTR and VT_I4 values alone. A value is stored with the moment of its fetch; whether
// it is fresh is told, when it is loaded, by the lifespan that the specification gives its item
// then.
extern "C" {

// The registry below HKEY_LOCAL_MACHINE (on Linux: corvane/linux/registry.h): a key for each device,
// by its serial number or UUID, and protocol, under the key `registryPath`. With a null or empty
// path nothing is kept.
CORVANE_API Corvane::ICacheProvider* CreateRegCacheProvider(const wchar_t* registryPath);

// The driver data of an open printer (on Linux: corvane/linux/spooler.h), read now. The printer
// stays the caller's and must stay open while the cache lives.
CORVANE_API Corvane::ICacheProvider* CreatePrintDataCacheProvider(HANDLE printer);

}  // extern "C"

namespace Corvane {
using ::CreatePrintDataCacheProvider;
using ::CreateRegCacheProvider;
}  // namespace Corvane

#endif  // CORVANE_CACHE_PROVIDER_H_
