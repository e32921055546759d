#include "collection/data_collection_impl.h"

#include "base/exception_wall.h"
#include "cache/print_data_cache_provider.h"
#include "cache/reg_cache_provider.h"
#include "core/com.h"
#include "core/file_time.h"
#include "corvane/static_data_item_spec.h"

namespace Corvane {

DataCollectionImpl::DataCollectionImpl() {
  TraceScope trace(L"Corvane::DataCollectionImpl::DataCollectionImpl");
  m_com.Begin(trace);
}

DataCollectionImpl::~DataCollectionImpl() {
  TraceScope trace(L"Corvane::DataCollectionImpl::~DataCollectionImpl");
  if (m_cache) {
    // When memory runs out, a destructor cannot say so: the cache keeps its old values.
    BehindWall<std::uint32_t>(1, [this] { return m_cache->SetDataValues(&m_values); });
  }
  m_cache.Reset();
  m_values.clear();
  m_com.End();
}

HRESULT DataCollectionImpl::GetValue(const wchar_t* name, VARIANT* value) {
  TraceScope trace(L"Corvane::DataCollectionImpl::GetValue");
  if (!name || !value) return E_FAIL;
  const auto entry = m_values.find(std::wstring_view(name));
  if (entry == m_values.end()) return E_FAIL;
  // Not const: some system headers take the source of a copy so.
  CachedValue& stored = entry->second;
  if (IsExpired(stored.timestamp, stored.lifespan)) return E_FAIL;
  if (FAILED(VariantCopy(value, &stored.value))) MoveTo(_variant_t(stored.value), value);
  return S_OK;
}

HRESULT DataCollectionImpl::ClearValues(const wchar_t* prefix) {
  TraceScope trace(L"Corvane::DataCollectionImpl::ClearValues");
  if (!prefix || !*prefix) return E_FAIL;
  const std::wstring_view wanted = prefix;
  const std::size_t erased = std::erase_if(m_values, [wanted](const auto& entry) {
    const std::wstring_view key = entry.first;
    const std::size_t colon = key.find(L':');
    return colon != std::wstring_view::npos && key.substr(0, colon) == wanted;
  });
  return erased > 0 ? S_OK : E_FAIL;
}

HRESULT DataCollectionImpl::LoadStaticItems(DataMapSpec* spec) {
  TraceScope trace(L"Corvane::DataCollectionImpl::LoadStaticItems");
  if (!spec || spec->SizeOf() == 0) return E_FAIL;
  const int count = spec->SizeOf();
  spec->Begin();
  for (int i = 0; i < count; ++i) {
    const auto* const item = dynamic_cast<StaticDataItemSpec*>(spec->GetNextDataItemSpec());
    if (!item || !item->GetStaticDataItemValue()) continue;
    const std::wstring key = ItemKey(*item);
    if (key.empty()) continue;
    _variant_t value(item->GetStaticDataItemValue());
    if (StoreValue(key.c_str(), &value, 0) == S_OK) spec->RemoveFromMap();
  }
  return S_OK;
}

HRESULT DataCollectionImpl::StoreValue(const wchar_t* key, VARIANT* value, unsigned int lifespan) {
  TraceScope trace(L"Corvane::DataCollectionImpl::StoreValue");
  if (!key || !value) return E_FAIL;
  std::uint64_t timestamp = 0;
  if (lifespan != 0 && !GetCurrentFileTime(&timestamp)) return E_FAIL;
  m_values.insert_or_assign(key, CachedValue{_variant_t(*value), timestamp, lifespan});
  return S_OK;
}

HRESULT DataCollectionImpl::PopulateValueFromCache(ICacheProvider* cache, DataMapSpec* spec) {
  TraceScope trace(L"Corvane::DataCollectionImpl::PopulateValueFromCache");
  if (auto* const printer = dynamic_cast<PrintDataCacheProvider*>(cache)) {
    printer->PopulateFromRegistry(spec, &m_values);
    return S_OK;
  }
  if (auto* const registry = dynamic_cast<RegCacheProvider*>(cache)) {
    registry->PopulateFromRegistry(spec, &m_values);
    return S_OK;
  }
  return S_FALSE;
}

}  // namespace Corvane
