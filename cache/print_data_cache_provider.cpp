#include "cache/print_data_cache_provider.h"

#include <new>

#include "cache/pairing_walk.h"
#include "cache/store_reading.h"
#include "core/trace.h"
#include "corvane/handles.h"

namespace Corvane {
namespace {

constexpr wchar_t kWriteFailed[] = L"Printer Registry writing failed with the error = %d ";

}  // namespace

PrintDataCacheProvider::PrintDataCacheProvider(HANDLE printer) : m_printer(printer) {
  TraceScope trace(L"Corvane::PrintDataCacheProvider::PrintDataCacheProvider");
  InitializeDictionary();
}

PrintDataCacheProvider::~PrintDataCacheProvider() {
  TraceScope trace(L"Corvane::PrintDataCacheProvider::~PrintDataCacheProvider");
}

const char* PrintDataCacheProvider::GetTypeName() { return kClassIdentification; }

void PrintDataCacheProvider::InitializeDictionary() {
  TraceScope trace(L"Corvane::PrintDataCacheProvider::InitializeDictionary");
  m_values.clear();
  ReadPrinterData(m_printer, [this](const wchar_t* name, const TypedData& data) {
    AddStoredValue(&m_values, name, data);
  });
}

std::uint32_t PrintDataCacheProvider::GetDataValue(const wchar_t* name, VARIANT* value) {
  TraceScope trace(L"Corvane::PrintDataCacheProvider::GetDataValue");
  return FindStoredValue(m_values, name, value);
}

std::uint32_t PrintDataCacheProvider::SetDataValue(const wchar_t* name, const VARIANT* value,
                                                   std::int64_t timestamp) {
  TraceScope trace(L"Corvane::PrintDataCacheProvider::SetDataValue");
  if (!name || !value || value->vt == VT_NULL) return 1;
  WriteGroup group(m_printer);
  RegistryWrite(name, *value, timestamp);
  return CommitWrites(&group, trace, kWriteFailed);
}

std::uint32_t PrintDataCacheProvider::SetDataValues(const CachedValueMap* values) {
  TraceScope trace(L"Corvane::PrintDataCacheProvider::SetDataValues");
  if (!values) return 1;
  WriteGroup group(m_printer);
  WriteFresh(*values, [this](const std::wstring& name, const VARIANT& value,
                             std::int64_t timestamp) { RegistryWrite(name, value, timestamp); });
  return CommitWrites(&group, trace, kWriteFailed);
}

std::uint32_t PrintDataCacheProvider::PopulateFromRegistry(DataMapSpec* spec, CachedValueMap* out) {
  TraceScope trace(L"Corvane::PrintDataCacheProvider::PopulateFromRegistry");
  return spec && !m_values.empty() ? FillDataMapSpec(spec, out) : 1;
}

std::uint32_t PrintDataCacheProvider::FillDataMapSpec(DataMapSpec* spec, CachedValueMap* out) {
  TraceScope trace(L"Corvane::PrintDataCacheProvider::FillDataMapSpec");
  return FillFromPairs(m_values, spec, out);
}

std::uint32_t PrintDataCacheProvider::RegistryWrite(const std::wstring& name, const VARIANT& value,
                                                    std::int64_t timestamp) {
  TraceScope trace(L"Corvane::PrintDataCacheProvider::RegistryWrite");
  const auto write = [this](const std::wstring& under, const TypedData& data) -> DWORD {
    // An integer is not left to the spooler: it would store whatever lies at an address that
    // happens to exist, and Wine's would fault on others.
    if (data.type != REG_SZ) return ERROR_NOACCESS;
    return SetPrinterDataExW(m_printer, kPrintDataCacheKey, under.c_str(), data.type,
                             const_cast<BYTE*>(data.data), data.bytes);
  };
  return WriteWithCompanion(name, value, timestamp, write, trace, kWriteFailed);
}

}  // namespace Corvane

Corvane::ICacheProvider* CreatePrintDataCacheProvider(HANDLE printer) {
  Corvane::TraceScope trace(L"Corvane::CreatePrintDataCacheProvider");
  return Corvane::RefPtr<Corvane::ICacheProvider>::Share(
             new (std::nothrow) Corvane::PrintDataCacheProvider(printer))
      .Release();
}
