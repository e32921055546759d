// The cache in a printer's driver data.
#ifndef CORVANE_CACHE_PRINT_DATA_CACHE_PROVIDER_H_
#define CORVANE_CACHE_PRINT_DATA_CACHE_PROVIDER_H_

#include <string>

#include "corvane/cache_provider.h"
#include "corvane/data_map_spec.h"
#include "platform/system.h"

namespace Corvane {

// The values lie under the printer data key "UBidiData", so that they travel with the queue: one
// set for a queue, whatever the device or the protocol. They are read once, when the object is
// made; what it writes itself is seen by the next object. Keys and companions are those of the
// registry cache. Failures of the spooler are traced, and are results of 1.
//
// An integer never reaches the printer data: in REG_SZ data of 4 bytes it stands where the data's
// address belongs, and is refused as an address that cannot be read (998). Its companion is not
// written either, so that the next run fetches the value again.
class PrintDataCacheProvider : public IDisposableImpl, public ICacheProvider {
 public:
  // The printer stays the caller's, who closes it after the object has gone.
  explicit PrintDataCacheProvider(HANDLE printer);
  ~PrintDataCacheProvider() override;

  std::uint32_t AddRef() override { return AddRefImpl(); }
  std::uint32_t AddRefConst() override { return AddRefImpl(); }
  std::uint32_t Dispose() override { return DisposeImpl(); }
  std::uint32_t Release() override { return DisposeImpl(); }
  const char* GetTypeName() override;

  // From what was read, companions included.
  std::uint32_t GetDataValue(const wchar_t* name, VARIANT* value) override;
  // 0 whether or not the value could be written; 1 for a null name or a VT_NULL value, and when the
  // system lost the value and its companion together.
  std::uint32_t SetDataValue(const wchar_t* name, const VARIANT* value,
                             std::int64_t timestamp) override;
  // The same for every entry that is still fresh; all of them or none where the system can.
  std::uint32_t SetDataValues(const CachedValueMap* values) override;
  // Adds the fresh values of the map to `out`. 1 when nothing was read, or for a null map.
  std::uint32_t PopulateFromRegistry(DataMapSpec* spec, CachedValueMap* out);

 private:
  void InitializeDictionary();
  std::uint32_t FillDataMapSpec(DataMapSpec* spec, CachedValueMap* out);
  std::uint32_t RegistryWrite(const std::wstring& name, const VARIANT& value,
                              std::int64_t timestamp);

  CachedValueMap m_values;
  HANDLE m_printer;
};

}  // namespace Corvane

#endif  // CORVANE_CACHE_PRINT_DATA_CACHE_PROVIDER_H_
