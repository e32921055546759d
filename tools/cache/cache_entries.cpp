#include "tools/cache/cache_entries.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <cwchar>
#include <set>
#include <string_view>
#include <utility>

#include "corvane/code_unit_less.h"
#include "corvane/data_item_spec.h"
#include "host/common/text.h"

namespace Corvane::Tool {
namespace {

constexpr std::wstring_view kCompanionSuffix = L".Expires";
constexpr std::size_t kMaxDigits = 20;  // of 64 bits
constexpr std::uint64_t kTicksPerTenth = 1'000'000;

bool IsText(const StoredValue& value) { return value.type == REG_SZ; }

bool IsOfACachesType(const StoredValue& value) { return IsText(value) || NumberOf(value); }

const StoredValue* Find(const std::vector<StoredValue>& values, const std::wstring& name) {
  const auto found = std::lower_bound(
      values.begin(), values.end(), name,
      [](const StoredValue& a, const std::wstring& b) { return CodeUnitLess()(a.name, b); });
  return found != values.end() && found->name == name ? &*found : nullptr;
}

// The values that the library's walk comes upon as the first of a pair.
std::set<const StoredValue*> PairsOfTheLibrary(const std::vector<StoredValue>& values) {
  std::vector<const StoredValue*> readable;
  for (const StoredValue& value : values) {
    if (IsOfACachesType(value)) readable.push_back(&value);
  }
  std::set<const StoredValue*> pairs;
  for (std::size_t i = 0; i + 1 < readable.size(); i += 2) {
    if (readable[i + 1]->name == readable[i]->name + std::wstring(kCompanionSuffix)) {
      pairs.insert(readable[i]);
    }
  }
  return pairs;
}

// As the library reads a companion: a number up to the first character that is none.
std::uint64_t TimestampAsRead(const CacheEntry& pair) {
  return static_cast<std::uint64_t>(std::wcstoll(TextOf(*pair.companion).c_str(), nullptr, 10));
}

bool IsFresh(std::uint64_t timestamp, std::uint32_t lifespan, std::uint64_t now) {
  if (lifespan == 0) return true;
  return timestamp <= now && now - timestamp <= lifespan * kTicksPerTenth;
}

}  // namespace

bool CacheEntry::NeverGoesStale() const { return companion && TextOf(*companion) == L"0"; }

std::optional<std::uint64_t> CacheEntry::Timestamp() const {
  if (!companion || !IsText(*companion)) return std::nullopt;
  const std::wstring text = TextOf(*companion);
  if (text.empty() || text.size() > kMaxDigits ||
      text.find_first_not_of(L"0123456789") != std::wstring::npos) {
    return std::nullopt;
  }
  return std::wcstoull(text.c_str(), nullptr, 10);
}

bool CacheEntry::IsOfACache() const {
  return (kind == EntryKind::kPair || kind == EntryKind::kCompanionAlone) && Timestamp();
}

std::vector<CacheEntry> EntriesOf(const std::vector<StoredValue>& values) {
  const std::set<const StoredValue*> taken = PairsOfTheLibrary(values);
  std::set<const StoredValue*> companions;
  std::vector<CacheEntry> entries;
  for (const StoredValue& value : values) {
    if (companions.contains(&value)) continue;
    CacheEntry entry;
    entry.key = value.name;
    entry.value = &value;
    const StoredValue* const companion = Find(values, value.name + std::wstring(kCompanionSuffix));
    if (!IsOfACachesType(value)) {
      entry.kind = EntryKind::kForeign;
    } else if (companion && IsText(*companion)) {
      entry.kind = EntryKind::kPair;
      entry.companion = companion;
      entry.isPassedOver = !taken.contains(&value);
      companions.insert(companion);
    } else if (!IsText(value) || !value.name.ends_with(kCompanionSuffix)) {
      entry.kind = EntryKind::kValueAlone;
    } else {
      // No value took it: its own is missing, or of a foreign type.
      std::wstring key = value.name.substr(0, value.name.size() - kCompanionSuffix.size());
      if (!Find(values, key)) {
        entry = {EntryKind::kCompanionAlone, std::move(key), nullptr, &value, false};
      }
    }
    entries.push_back(std::move(entry));
  }
  return entries;
}

std::wstring TextOf(const StoredValue& value) {
  std::wstring text(value.data.size() / sizeof(wchar_t), L'\0');
  if (!text.empty()) std::memcpy(text.data(), value.data.data(), text.size() * sizeof(wchar_t));
  return text.substr(0, text.find(L'\0'));
}

std::optional<std::int32_t> NumberOf(const StoredValue& value) {
  std::int32_t number = 0;
  if (value.type != REG_DWORD || value.data.size() != sizeof number) return std::nullopt;
  std::memcpy(&number, value.data.data(), sizeof number);
  return number;
}

std::uint64_t CurrentTicks() {
  using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;
  constexpr std::uint64_t kUnixEpoch = 116'444'736'000'000'000;  // in ticks since 1601
  const auto sinceUnix = std::chrono::system_clock::now().time_since_epoch();
  return kUnixEpoch +
         static_cast<std::uint64_t>(std::chrono::duration_cast<Ticks>(sinceUnix).count());
}

Lifespans::Lifespans(const std::vector<DataMap>& maps) {
  for (const DataMap& map : maps) {
    DataMapSpec& spec = *map.spec.Get();
    Map lifespans{spec.GetProtocolType(), {}};
    spec.Begin();
    while (const NexoDataItem* const each = spec.GetNextDataItemSpec()) {
      const auto* const item = dynamic_cast<const DataItemSpec*>(each);
      if (!item) continue;
      lifespans.lifespans.try_emplace(ItemKey(*item),
                                      static_cast<std::uint32_t>(item->GetLifespan()));
    }
    m_maps.push_back(std::move(lifespans));
  }
}

Judgement Lifespans::Judge(const CacheEntry& pair, const CacheSection& section,
                           std::uint64_t now) const {
  std::set<std::uint32_t> candidates;
  for (const Map& map : m_maps) {
    const bool isPrinter = section.path.empty();
    if (!isPrinter && !Host::EqualsIgnoreCase(map.protocol, section.protocol)) continue;
    const auto item = map.lifespans.find(pair.key);
    if (item != map.lifespans.end()) candidates.insert(item->second);
    if (!isPrinter) break;
  }
  Judgement judgement;
  if (candidates.size() == 1) judgement.lifespan = *candidates.begin();
  std::set<bool> freshness;
  for (const std::uint32_t lifespan : candidates) {
    freshness.insert(IsFresh(TimestampAsRead(pair), lifespan, now));
  }
  if (freshness.size() > 1) {
    judgement.freshness = Freshness::kDependsOnTheMap;
  } else if (!freshness.empty()) {
    judgement.freshness = freshness.contains(true) ? Freshness::kFresh : Freshness::kStale;
  }
  return judgement;
}

}  // namespace Corvane::Tool
