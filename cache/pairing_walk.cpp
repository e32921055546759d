#include "cache/pairing_walk.h"

#include <algorithm>
#include <string_view>

#include "core/file_time.h"
#include "corvane/data_item_spec.h"

namespace Corvane {
namespace {

std::unordered_map<std::wstring, std::uint32_t> LifespansOf(DataMapSpec* spec) {
  std::unordered_map<std::wstring, std::uint32_t> lifespans;
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

bool IsShorter(std::uint32_t a, std::uint32_t b) { return a != 0 && (b == 0 || a < b); }

void RestoreValue(const std::wstring& key, const _variant_t& data, const Judgement& judgement,
                  CachedValueMap* out) {
  CachedValue& restored = out->try_emplace(out->end(), key)->second;
  if (data.vt == VT_I4 && data.lVal == -1) {
    restored.value = L"";
  } else {
    restored.value = data;
  }
  restored.timestamp = judgement.timestamp;
  restored.lifespan = judgement.lifespan;
}

}  // namespace

std::optional<LifespanTable::Range> LifespanTable::Of(const std::wstring& key) {
  while (m_byKey.size() < m_maps.size()) m_byKey.push_back(LifespansOf(m_maps[m_byKey.size()]));
  std::optional<Range> range;
  for (const auto& map : m_byKey) {
    const auto item = map.find(key);
    if (item == map.end()) continue;
    const std::uint32_t lifespan = item->second;
    range = range ? Range{std::min(range->shortest, lifespan, IsShorter),
                          std::max(range->longest, lifespan, IsShorter)}
                  : Range{lifespan, lifespan};
  }
  return range;
}

Judgement JudgePair(const std::wstring& key, const VARIANT& companion, LifespanTable* lifespans) {
  if (IsNeverStale(companion)) return {CacheVerdict::kNeverStale};
  const auto lifespan = lifespans->Of(key);
  if (!lifespan) return {CacheVerdict::kNotInSpecification};
  const auto timestamp = static_cast<std::uint64_t>(TimestampOf(companion));
  if (IsExpired(timestamp, lifespan->longest)) return {CacheVerdict::kStale};
  if (lifespan->shortest != lifespan->longest && IsExpired(timestamp, lifespan->shortest)) {
    return {CacheVerdict::kDependsOnTheMap};
  }
  return {CacheVerdict::kFresh, timestamp, lifespan->longest};
}

std::uint32_t FillFromPairs(const CachedValueMap& stored, DataMapSpec* spec, CachedValueMap* out) {
  if (!out) return 1;
  if (stored.empty()) return spec && spec->SizeOf() > 0 ? 0 : 1;
  LifespanTable lifespans({spec});
  WalkPairs(stored, [&](const std::wstring& key, const _variant_t& data, const VARIANT& companion) {
    const Judgement judgement = JudgePair(key, companion, &lifespans);
    if (judgement.verdict == CacheVerdict::kNeverStale ||
        judgement.verdict == CacheVerdict::kFresh) {
      RestoreValue(key, data, judgement, out);
    }
  });
  return 0;
}

}  // namespace Corvane
