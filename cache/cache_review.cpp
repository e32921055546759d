// What caches hold, judged as loading judges it.
#include <algorithm>
#include <map>
#include <set>
#include <tuple>

#include "cache/pairing_walk.h"
#include "cache/store_reading.h"
#include "core/file_time.h"
#include "corvane/handles.h"

namespace Corvane {
namespace {

constexpr DWORD kMaxKeyNameChars = 255;  // the registry's own bound
// A device's identity has at most 255 characters, which make 128 keys with a backslash between.
constexpr int kMaxDepth = 129;
// A reading may be overtaken by writers once and again.
constexpr int kMaxAttempts = 4;

struct Place {
  struct Kind {
    DWORD type;
    DWORD bytes;
  };
  std::map<std::wstring, Kind, CodeUnitLess> all;
  CachedValueMap loaded;  // those that loading takes
};

template <typename Read>
LSTATUS ReadPlace(Read read, Place* place) {
  for (int attempt = 1;; ++attempt) {
    const auto error = read([place](const wchar_t* name, const TypedData& data) {
      place->all.insert_or_assign(name, Place::Kind{data.type, data.bytes});
      AddStoredValue(&place->loaded, name, data);
    });
    if (error != ERROR_MORE_DATA || attempt == kMaxAttempts) return static_cast<LSTATUS>(error);
    *place = {};
  }
}

std::vector<CacheEntry> EntriesOf(const Place& place, LifespanTable* lifespans, std::uint64_t now) {
  std::set<std::wstring> walked;
  WalkPairs(place.loaded,
            [&walked](const std::wstring& key, const auto&...) { walked.insert(key); });
  std::set<std::wstring> told;  // companions, with their values
  std::vector<CacheEntry> entries;
  for (const auto& [name, kind] : place.all) {
    if (told.contains(name)) continue;
    CacheEntry entry;
    entry.key = name;
    entry.type = kind.type;
    entry.bytes = kind.bytes;
    const auto value = place.loaded.find(name);
    const auto companion = place.loaded.find(CompanionName(name));
    const auto key = KeyOfCompanion(name);
    if (value != place.loaded.end()) entry.value = value->second.value;
    if (value == place.loaded.end()) {
      // Of a type that caches do not write.
    } else if (companion != place.loaded.end()) {
      entry.companion = companion->second.value;
      entry.verdict = JudgePair(name, entry.companion, lifespans).verdict;
      entry.isPassedOver = !walked.contains(name);
      entry.ownNames = {name, companion->first};
      told.insert(companion->first);
    } else if (!key) {
      entry.verdict = CacheVerdict::kNoCompanion;
    } else if (!place.all.contains(*key)) {
      entry = CacheEntry();
      entry.key = *key;
      entry.verdict = CacheVerdict::kNoValue;
      entry.companion = value->second.value;
      entry.ownNames = {name};
    }
    entry.fetchTime = FetchTimeOf(entry.companion);
    if (!entry.fetchTime) entry.ownNames.clear();
    if (entry.fetchTime.value_or(0) != 0) {
      entry.age = static_cast<std::int64_t>(now - *entry.fetchTime);
    }
    const auto lifespan = lifespans->Of(entry.key);
    if (lifespan && lifespan->shortest == lifespan->longest) entry.lifespan = lifespan->shortest;
    entries.push_back(std::move(entry));
  }
  return entries;
}

LifespanTable LifespansFor(const CacheSection& section, DataMapSpecCollection* specification) {
  std::vector<DataMapSpec*> maps;
  const DataMapTypeEnum type = DataMapSpec::TypeOfProtocol(section.protocol);
  for (int i = 0; specification && i < specification->GetCount(); ++i) {
    DataMapSpec* const map = specification->GetDataMapSpec(i);
    if (!map || (type != DataMapTypeUnknown && map->GetDataMapType() != type)) continue;
    maps.push_back(map);
    if (type != DataMapTypeUnknown) break;
  }
  return LifespanTable(std::move(maps));
}

// Finds the keys of devices and protocols.
class KeySearch {
 public:
  explicit KeySearch(const wchar_t* root) : m_root(root) {}

  // ERROR_SUCCESS, or why the root cannot be opened.
  LSTATUS Look() { return Look({}, 0); }
  bool IsTooMuch() const { return m_keys > kMaxCacheKeys; }
  // In the order of devices and protocols.
  std::vector<CacheSection> Take() {
    std::sort(m_sections.begin(), m_sections.end(), [](const auto& a, const auto& b) {
      return std::tie(a.device, a.protocol) < std::tie(b.device, b.protocol);
    });
    return std::move(m_sections);
  }

 private:
  LSTATUS Look(const std::wstring& below, int depth) {
    if (++m_keys > kMaxCacheKeys) return ERROR_SUCCESS;
    CacheSection section;
    section.path = depth == 0 ? m_root : m_root + L'\\' + below;
    UniqueHkey key;
    const LSTATUS opened =
        RegOpenKeyExW(HKEY_LOCAL_MACHINE, section.path.c_str(), 0, KEY_READ, key.Receive());
    if (opened == ERROR_FILE_NOT_FOUND) return opened;  // gone meanwhile, or no cache yet
    LSTATUS listed = opened;
    DWORD keys = 0;
    while (listed == ERROR_SUCCESS && !IsTooMuch()) {
      wchar_t name[kMaxKeyNameChars + 1];
      DWORD chars = kMaxKeyNameChars + 1;
      listed = RegEnumKeyExW(key.Get(), keys, name, &chars, nullptr, nullptr, nullptr, nullptr);
      if (listed != ERROR_SUCCESS) break;
      ++keys;
      if (depth < kMaxDepth) Look(depth == 0 ? name : below + L'\\' + name, depth + 1);
    }
    if (listed != ERROR_NO_MORE_ITEMS) section.error = static_cast<std::uint32_t>(listed);
    if (depth > 0) {
      const std::size_t backslash = below.rfind(L'\\');
      section.protocol = below.substr(backslash + 1);  // npos + 1 is 0
      if (backslash != std::wstring::npos) section.device = below.substr(0, backslash);
      section.isOfACache = DataMapSpec::TypeOfProtocol(section.protocol) != DataMapTypeUnknown;
    }
    if (section.isOfACache || keys == 0 || section.error) m_sections.push_back(std::move(section));
    return opened;
  }

  const std::wstring m_root;
  std::size_t m_keys = 0;
  std::vector<CacheSection> m_sections;
};

LSTATUS ReadPlaceOf(const CacheSection& section, Place* place) {
  UniqueHkey key;
  const LSTATUS error =
      RegOpenKeyExW(HKEY_LOCAL_MACHINE, section.path.c_str(), 0, KEY_READ, key.Receive());
  if (error == ERROR_FILE_NOT_FOUND) return ERROR_SUCCESS;
  if (error != ERROR_SUCCESS) return error;
  return ReadPlace([&key](const ValueSink& sink) { return ReadKey(key.Get(), sink); }, place);
}

}  // namespace
}  // namespace Corvane

std::uint32_t ReviewRegCache(const wchar_t* registryPath,
                             Corvane::DataMapSpecCollection* specification,
                             Corvane::CacheVisitor* visitor, std::uint64_t* now) {
  using namespace Corvane;
  TraceScope trace(L"Corvane::ReviewRegCache");
  *now = 0;
  GetCurrentFileTime(now);
  if (!registryPath || !*registryPath) return ERROR_SUCCESS;
  KeySearch search(registryPath);
  const LSTATUS error = search.Look();
  if (error == ERROR_FILE_NOT_FOUND) return ERROR_SUCCESS;
  if (error != ERROR_SUCCESS) return static_cast<std::uint32_t>(error);
  if (search.IsTooMuch()) return ERROR_MORE_DATA;
  for (CacheSection& section : search.Take()) {
    if (section.isOfACache) {
      Place place;
      const LSTATUS read = ReadPlaceOf(section, &place);
      if (read != ERROR_SUCCESS) section.error = static_cast<std::uint32_t>(read);
      LifespanTable lifespans = LifespansFor(section, specification);
      section.entries = EntriesOf(place, &lifespans, *now);
      if (section.protocol.empty() && section.entries.empty() && !section.error) continue;
    }
    visitor->Visit(section);
  }
  return ERROR_SUCCESS;
}

std::uint32_t ReviewPrintDataCache(HANDLE printer, Corvane::DataMapSpecCollection* specification,
                                   Corvane::CacheVisitor* visitor, std::uint64_t* now) {
  using namespace Corvane;
  TraceScope trace(L"Corvane::ReviewPrintDataCache");
  *now = 0;
  GetCurrentFileTime(now);
  Place place;
  const LSTATUS error = ReadPlace(
      [printer](const ValueSink& sink) { return ReadPrinterData(printer, sink); }, &place);
  if (error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND) {
    return static_cast<std::uint32_t>(error);
  }
  CacheSection section;
  LifespanTable lifespans = LifespansFor(section, specification);
  section.entries = EntriesOf(place, &lifespans, *now);
  if (!section.entries.empty()) visitor->Visit(section);
  return ERROR_SUCCESS;
}
