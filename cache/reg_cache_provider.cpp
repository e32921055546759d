#include "cache/reg_cache_provider.h"

#include <new>
#include <utility>

#include "cache/pairing_walk.h"
#include "cache/store_reading.h"
#include "core/trace.h"
#include "corvane/handles.h"

namespace Corvane {
namespace {

constexpr wchar_t kWriteFailed[] = L"Registry writing failed with the error = %d ";

}  // namespace

RegCacheProvider::RegCacheProvider(const wchar_t* registryPath)
    : m_registryPath(registryPath ? registryPath : L"") {
  TraceScope trace(L"Corvane::RegCacheProvider::RegCacheProvider");
}

RegCacheProvider::~RegCacheProvider() {
  TraceScope trace(L"Corvane::RegCacheProvider::~RegCacheProvider");
}

const char* RegCacheProvider::GetTypeName() { return kClassIdentification; }

void RegCacheProvider::SetDevice(std::wstring deviceId, std::wstring protocol) {
  m_deviceId = std::move(deviceId);
  m_protocol = std::move(protocol);
}

std::uint32_t RegCacheProvider::GetDataValue(const wchar_t* name, VARIANT* value) {
  TraceScope trace(L"Corvane::RegCacheProvider::GetDataValue");
  return FindStoredValue(m_values, name, value);
}

std::uint32_t RegCacheProvider::SetDataValue(const wchar_t* name, const VARIANT* value,
                                             std::int64_t timestamp) {
  TraceScope trace(L"Corvane::RegCacheProvider::SetDataValue");
  if (!name || !value) return 1;
  UniqueHkey key;
  if (!CreateKey(&key, trace)) return 1;
  WriteGroup group(key.Get());
  RegistryWrite(key.Get(), name, *value, timestamp);
  return CommitWrites(&group, trace, kWriteFailed);
}

std::uint32_t RegCacheProvider::SetDataValues(const CachedValueMap* values) {
  TraceScope trace(L"Corvane::RegCacheProvider::SetDataValues");
  if (!values || m_registryPath.empty()) return 1;
  UniqueHkey key;
  if (!CreateKey(&key, trace)) return 1;
  WriteGroup group(key.Get());
  WriteFresh(*values,
             [&key](const std::wstring& name, const VARIANT& value, std::int64_t timestamp) {
               RegistryWrite(key.Get(), name, value, timestamp);
             });
  return CommitWrites(&group, trace, kWriteFailed);
}

std::uint32_t RegCacheProvider::PopulateFromRegistry(DataMapSpec* spec, CachedValueMap* out) {
  TraceScope trace(L"Corvane::RegCacheProvider::PopulateFromRegistry");
  m_values.clear();
  UniqueHkey key;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, KeyPath().c_str(), 0, KEY_READ, key.Receive()) !=
      ERROR_SUCCESS) {
    return 1;
  }
  const LSTATUS error = ReadKey(key.Get(), [this](const wchar_t* name, const TypedData& data) {
    AddStoredValue(&m_values, name, data);
  });
  if (error == ERROR_OUTOFMEMORY) return 1;
  return FillDataMapSpec(spec, out);
}

std::wstring RegCacheProvider::KeyPath() const {
  return m_registryPath + L'\\' + m_deviceId + L'\\' + m_protocol;
}

bool RegCacheProvider::CreateKey(UniqueHkey* key, const TraceScope& trace) const {
  const LSTATUS error = RegCreateKeyExW(HKEY_LOCAL_MACHINE, KeyPath().c_str(), 0, nullptr, 0,
                                        KEY_ALL_ACCESS, nullptr, key->Receive(), nullptr);
  if (error == ERROR_SUCCESS) return true;
  trace.Message(kTraceInfo, L"RegCreateKeyEx failed with error code =%ld",
                static_cast<long>(error));
  return false;
}

std::uint32_t RegCacheProvider::RegistryWrite(HKEY key, const std::wstring& name,
                                              const VARIANT& value, std::int64_t timestamp) {
  TraceScope trace(L"Corvane::RegCacheProvider::RegistryWrite");
  const auto write = [key](const std::wstring& under, const TypedData& data) {
    return RegSetValueExW(key, under.c_str(), 0, data.type, data.data, data.bytes);
  };
  return WriteWithCompanion(name, value, timestamp, write, trace, kWriteFailed);
}

std::uint32_t RegCacheProvider::FillDataMapSpec(DataMapSpec* spec, CachedValueMap* out) {
  TraceScope trace(L"Corvane::RegCacheProvider::FillDataMapSpec");
  return FillFromPairs(m_values, spec, out);
}

}  // namespace Corvane

Corvane::ICacheProvider* CreateRegCacheProvider(const wchar_t* registryPath) {
  Corvane::TraceScope trace(L"Corvane::CreateRegCacheProvider");
  using Corvane::ICacheProvider;
  return Corvane::RefPtr<ICacheProvider>::Share(new (std::nothrow)
                                                    Corvane::RegCacheProvider(registryPath))
      .Release();
}
