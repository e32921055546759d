// The cache in the registry.
#ifndef CORVANE_CACHE_REG_CACHE_PROVIDER_H_
#define CORVANE_CACHE_REG_CACHE_PROVIDER_H_

#include <string>

#include "core/trace.h"
#include "corvane/cache_provider.h"
#include "corvane/data_map_spec.h"
#include "corvane/handles.h"

namespace Corvane {

// The values of one device and one protocol lie in one key,
// HKEY_LOCAL_MACHINE\<registry path>\<device id>\<protocol>: under each item key K a value, REG_SZ
// or REG_DWORD, and a companion K.Expires, REG_SZ, with the time of its fetch. Other types of
// variant have a companion alone. Failures of the registry are traced, and are results of 1.
//
// What SetDataValue and SetDataValues write is not seen by GetDataValue of the same object.
class RegCacheProvider : public IDisposableImpl, public ICacheProvider {
 public:
  // A null path is an empty one: nothing can be written or read under it.
  explicit RegCacheProvider(const wchar_t* registryPath);
  ~RegCacheProvider() override;

  std::uint32_t AddRef() override { return AddRefImpl(); }
  std::uint32_t AddRefConst() override { return AddRefImpl(); }
  std::uint32_t Dispose() override { return DisposeImpl(); }
  std::uint32_t Release() override { return DisposeImpl(); }
  const char* GetTypeName() override;

  const std::wstring& RegistryPath() const { return m_registryPath; }
  // Whose values are kept, before the first of them is read or written. Both parts become keys as
  // they are.
  void SetDevice(std::wstring deviceId, std::wstring protocol);

  // From what PopulateFromRegistry has read, companions included.
  std::uint32_t GetDataValue(const wchar_t* name, VARIANT* value) override;
  // Makes the key when it is missing. 0 once the key is open, whether or not the value could be
  // written; 1 as well when the system lost the value and its companion together.
  std::uint32_t SetDataValue(const wchar_t* name, const VARIANT* value,
                             std::int64_t timestamp) override;
  // The same for every entry that is still fresh; all of them or none where the system can.
  std::uint32_t SetDataValues(const CachedValueMap* values) override;
  // Reads the key and adds its fresh values of the map to `out`. 1 when there is no such key.
  std::uint32_t PopulateFromRegistry(DataMapSpec* spec, CachedValueMap* out);

 private:
  std::wstring KeyPath() const;
  bool CreateKey(UniqueHkey* key, const TraceScope& trace) const;
  static std::uint32_t RegistryWrite(HKEY key, const std::wstring& name, const VARIANT& value,
                                     std::int64_t timestamp);
  std::uint32_t FillDataMapSpec(DataMapSpec* spec, CachedValueMap* out);

  CachedValueMap m_values;  // as read last
  std::wstring m_registryPath;
  std::wstring m_protocol;
  std::wstring m_deviceId;
};

}  // namespace Corvane

#endif  // CORVANE_CACHE_REG_CACHE_PROVIDER_H_
