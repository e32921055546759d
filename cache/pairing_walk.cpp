#include "cache/pairing_walk.h"

#include <cwchar>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "cache/stored_value.h"
#include "core/file_time.h"
#include "corvane/data_item_spec.h"

namespace Corvane {
namespace {

using LifespanByKey = std::unordered_map<std::wstring, std::uint32_t>;

LifespanByKey LifespansOf(DataMapSpec* spec) {
  LifespanByKey lifespans;
  if (!spec) return lifespans;
  lifespans.reserve(static_cast<std::size_t>(spec->SizeOf()));
  spec->Begin();
  for (int left = spec->SizeOf(); left > 0; --left) {
    const auto* const item = dynamic_cast<const DataItemSpec*>(spec->GetNextDataItemSpec());
    if (!item) continue;
    // The first item of a key counts.
    lifespans.try_emplace(ItemKey(*item), static_cast<std::uint32_t>(item->GetLifespan()));
  }
  return lifespans;
}

void Restore(const std::wstring& key, const _variant_t& data, std::uint64_t timestamp,
             std::uint32_t lifespan, CachedValueMap* out) {
  CachedValue& restored = out->try_emplace(out->end(), key)->second;
  if (data.vt == VT_I4 && data.lVal == -1) {
    restored.value = L"";
  } else {
    restored.value = data;
  }
  restored.timestamp = timestamp;
  restored.lifespan = lifespan;
}

bool IsText(const VARIANT& value) { return value.vt == VT_BSTR && value.bstrVal; }

// The companion's text as a number up to the first character that is none; 0 without one.
std::uint64_t TimestampOf(const VARIANT& companion) {
  if (!IsText(companion)) return 0;
  return static_cast<std::uint64_t>(std::wcstoll(companion.bstrVal, nullptr, 10));
}

}  // namespace

std::uint32_t FillFromPairs(const CachedValueMap& stored, DataMapSpec* spec, CachedValueMap* out) {
  if (!out) return 1;
  if (stored.empty()) return spec && spec->SizeOf() > 0 ? 0 : 1;

  std::optional<LifespanByKey> lifespans;
  for (auto entry = stored.begin(); entry != stored.end();) {
    const auto& [key, data] = *entry++;
    if (entry == stored.end()) break;
    const auto& [companionName, companion] = *entry++;
    if (!IsCompanionOf(key, companionName)) continue;

    if (IsText(companion.value) && companion.value.bstrVal == std::wstring_view(L"0")) {
      Restore(key, data.value, 0, 0, out);
      continue;
    }
    if (!lifespans) lifespans = LifespansOf(spec);
    const auto item = lifespans->find(key);
    if (item == lifespans->end()) continue;
    const std::uint64_t timestamp = TimestampOf(companion.value);
    if (IsExpired(timestamp, item->second)) continue;
    Restore(key, data.value, timestamp, item->second, out);
  }
  return 0;
}

}  // namespace Corvane
