// What caches hold, judged as loading judges it.
#include <algorithm>
#include <map>
#include <set>
#include <tuple>

#include "base/exception_wall.h"
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

std::vector<CacheEntry> SectionEntries(const Place& place, LifespanTable* lifespans,
                                       std::uint64_t now) {
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

// Reads and judges what `section` holds: ERROR_SUCCESS, also when it is not there, or why it could
// not be read, or not to its end.
template <typename Read>
LSTATUS FillSection(CacheSection* section, Read read, DataMapSpecCollection* specification,
                    std::uint64_t now) {
  Place place;
  LSTATUS error = ERROR_MORE_DATA;
  for (int attempt = 0; attempt < kMaxAttempts && error == ERROR_MORE_DATA; ++attempt) {
    place = {};
    error = static_cast<LSTATUS>(read([&place](const wchar_t* name, const TypedData& data) {
      place.all.insert_or_assign(name, Place::Kind{data.type, data.bytes});
      AddStoredValue(&place.loaded, name, data);
    }));
  }
  LifespanTable lifespans = LifespansFor(*section, specification);
  section->entries = SectionEntries(place, &lifespans, now);
  return error == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : error;
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

LSTATUS ReviewRegistry(const wchar_t* path, DataMapSpecCollection* specification,
                       CacheVisitor* visitor, std::uint64_t now) {
  if (!path || !*path) return ERROR_SUCCESS;
  KeySearch search(path);
  const LSTATUS error = search.Look();
  if (error != ERROR_SUCCESS) return error == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : error;
  if (search.IsTooMuch()) return ERROR_MORE_DATA;
  for (CacheSection& section : search.Take()) {
    const auto read = [&section](const ValueSink& sink) {
      UniqueHkey key;
      const LSTATUS opened =
          RegOpenKeyExW(HKEY_LOCAL_MACHINE, section.path.c_str(), 0, KEY_READ, key.Receive());
      return opened == ERROR_SUCCESS ? ReadKey(key.Get(), sink) : opened;
    };
    if (section.isOfACache) {
      const LSTATUS unread = FillSection(&section, read, specification, now);
      if (unread != ERROR_SUCCESS) section.error = static_cast<std::uint32_t>(unread);
      if (section.protocol.empty() && section.entries.empty() && !section.error) continue;
    }
    visitor->Visit(section);
  }
  return ERROR_SUCCESS;
}

LSTATUS ReviewPrinter(HANDLE printer, DataMapSpecCollection* specification, CacheVisitor* visitor,
                      std::uint64_t now) {
  CacheSection section;
  const auto read = [printer](const ValueSink& sink) { return ReadPrinterData(printer, sink); };
  const LSTATUS error = FillSection(&section, read, specification, now);
  if (error == ERROR_SUCCESS && !section.entries.empty()) visitor->Visit(section);
  return error;
}

template <typename Where>
std::uint32_t Review(LSTATUS (*review)(Where, DataMapSpecCollection*, CacheVisitor*, std::uint64_t),
                     Where where, DataMapSpecCollection* specification, CacheVisitor* visitor,
                     std::uint64_t* now) {
  *now = 0;
  GetCurrentFileTime(now);
  return static_cast<std::uint32_t>(BehindWall<LSTATUS>(
      ERROR_OUTOFMEMORY, [&] { return review(where, specification, visitor, *now); }));
}

}  // namespace
}  // namespace Corvane

std::uint32_t ReviewRegCache(const wchar_t* registryPath,
                             Corvane::DataMapSpecCollection* specification,
                             Corvane::CacheVisitor* visitor, std::uint64_t* now) {
  Corvane::TraceScope trace(L"Corvane::ReviewRegCache");
  return Corvane::Review(Corvane::ReviewRegistry, registryPath, specification, visitor, now);
}

std::uint32_t ReviewPrintDataCache(HANDLE printer, Corvane::DataMapSpecCollection* specification,
                                   Corvane::CacheVisitor* visitor, std::uint64_t* now) {
  Corvane::TraceScope trace(L"Corvane::ReviewPrintDataCache");
  return Corvane::Review(Corvane::ReviewPrinter, printer, specification, visitor, now);
}
