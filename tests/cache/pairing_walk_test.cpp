// What a cache's store means: to loading, out of the registry or a printer's data, and to the
// review, which must agree about every row.
#include "cache/pairing_walk.h"

#include <sstream>

#include "base/utf8.h"
#include "cache/print_data_cache_provider.h"
#include "cache/reg_cache_provider.h"
#include "core/file_time.h"
#include "tests/support/cases.h"
#include "tests/support/dom.h"
#include "tests/support/registry_key.h"
#include "tests/support/test_printer.h"
#include "tests/support/test_store.h"

namespace Corvane::Test {
namespace {

using V = RegistryKey::Value;

V Ago(std::int64_t seconds) {
  std::uint64_t now = 0;
  EXPECT_EQ(1, GetCurrentFileTime(&now));
  return RegistryKey::Text(std::to_wstring(static_cast<std::int64_t>(now) - seconds * 10'000'000));
}

// As the data file writes it.
V Stored(const std::wstring& text) {
  if (text == L"%") return {REG_DWORD, {1, 2}};
  if (text == L"?") return {REG_BINARY, {1, 2}};
  if (text == L"?x") return {REG_EXPAND_SZ, RegistryKey::Text(L"%x%").data};
  if (text.starts_with(L'~')) return Ago(std::stoll(text.substr(1)));
  if (text.starts_with(L'#'))
    return RegistryKey::Number(static_cast<DWORD>(std::stoll(text.substr(1))));
  V value = RegistryKey::Text(text.substr(text.starts_with(L'!') ? 1 : 0));
  if (text.starts_with(L'!')) value.data.resize(value.data.size() - sizeof(wchar_t) + 1);
  return value;
}

// Of "key=value|key=value".
std::map<std::wstring, V> AllStored(const std::wstring& text) {
  std::map<std::wstring, V> stored;
  std::wistringstream stream(text);
  for (std::wstring pair; std::getline(stream, pair, L'|');) {
    const std::size_t equals = pair.find(L'=');
    stored[pair.substr(0, equals)] = Stored(pair.substr(equals + 1));
  }
  return stored;
}

void Append(std::wstring* text, const std::wstring& key, const std::wstring& value) {
  text->append(text->empty() ? L"" : L"|").append(key).append(L"=").append(value);
}

std::wstring Lifespan(std::uint32_t lifespan) {
  return lifespan == 0 ? L"" : L'@' + std::to_wstring(lifespan);
}

template <typename Cache>
std::wstring Loaded(Cache* cache, DataMapSpec* spec, std::uint32_t expected) {
  CachedValueMap out;
  EXPECT_EQ(expected, cache->PopulateFromRegistry(spec, &out));
  std::wstring text;
  for (const auto& [key, cached] : out) {
    Append(&text, key, TextOf(cached.value) + Lifespan(cached.lifespan));
  }
  return text;
}

// The keys of the sections, with the verdicts on what is in them.
class Sections : public CacheVisitor {
 public:
  std::wstring text;

  void Visit(const CacheSection& section) override {
    static constexpr const wchar_t* kVerdicts[] = {L"ever",    L"fresh", L"stale", L"depends",
                                                   L"unknown", L"alone", L"lost",  L"foreign"};
    std::wstring entries;
    for (const CacheEntry& entry : section.entries) {
      Append(&entries, entry.key,
             kVerdicts[static_cast<int>(entry.verdict)] +
                 std::wstring(entry.isPassedOver ? L"!" : L"") + L'+' +
                 std::to_wstring(entry.ownNames.size()) + Lifespan(entry.lifespan.value_or(0)));
    }
    text += section.device + L'/' + section.protocol +
            (section.isOfACache ? L": " : L" is no cache's") + entries + L'\n';
  }
};

class PairingWalkTest : public ParsingTest {
 protected:
  static RefPtr<DataMapSpecCollection> Specs(const std::wstring& maps) {
    return RefPtr<DataMapSpecCollection>::Adopt(
        DataMapSpecCollection::CreateDataMapSpecCollection(Element(maps).Get()));
  }
  std::wstring Review(const RegistryKey& registry, DataMapSpecCollection* specs) {
    Sections told;
    EXPECT_EQ(0u, ReviewRegCache(registry.Path().c_str(), specs, &told, &m_now));
    return told.text;
  }

  const TestStore m_store;
  std::uint64_t m_now = 0;
};

TEST_F(PairingWalkTest, RestoresFreshPairs) {
  const auto specs = Specs(ToWide(ReadData("cache/items.xml")));
  DataMapSpec* const spec = specs->GetDataMapSpec(0);
  for (const Case& c : ReadCases("cache/pairs.txt")) {
    SCOPED_TRACE(c.Where());
    const auto stored = AllStored(c.Wide("stored"));
    const std::uint32_t result = stored.empty() ? 1 : 0;
    const std::wstring told = stored.empty() ? L"" : L": " + c.Wide("told") + L'\n';
    const RegistryKey registry;
    for (const auto& [name, value] : stored) {
      ASSERT_EQ(ERROR_SUCCESS, registry.Set(L"SN1\\OID", name, value));
    }
    const auto cache =
        RefPtr<RegCacheProvider>::Share(new RegCacheProvider(registry.Path().c_str()));
    cache->SetDevice(L"SN1", L"OID");
    EXPECT_EQ(c.Wide("restored"), Loaded(cache.Get(), spec, result));
    EXPECT_EQ(stored.empty() ? L"" : L"SN1/OID" + told, Review(registry, specs.Get()));

    // A printer's data have no nameless value.
    const TestPrinter printer;  // Wine's keep what is deleted
    if (!printer.Handle() || stored.contains(L"")) continue;
    for (auto [name, value] : stored) {
      ASSERT_EQ(static_cast<DWORD>(ERROR_SUCCESS),
                SetPrinterDataExW(printer.Handle(), kPrintDataCacheKey, name.c_str(), value.type,
                                  value.data.data(), static_cast<DWORD>(value.data.size())));
    }
    const auto data =
        RefPtr<PrintDataCacheProvider>::Share(new PrintDataCacheProvider(printer.Handle()));
    EXPECT_EQ(c.Wide("restored"), Loaded(data.Get(), spec, result));
    Sections sections;
    EXPECT_EQ(0u, ReviewPrintDataCache(printer.Handle(), specs.Get(), &sections, &m_now));
    EXPECT_EQ(stored.empty() ? L"" : L'/' + told, sections.text);
  }
}

TEST_F(PairingWalkTest, JudgesAKeyByTheMapsThatCouldBeItsOwn) {
  const RegistryKey registry;
  for (const wchar_t* const below : {L"", L"SN1\\WS", L"SN2\\oid", L"SN1\\Vendor\\Other"}) {
    for (const auto& [name, value] : AllStored(L"Both=v|Both.Expires=~60|One=v|One.Expires=~60")) {
      ASSERT_EQ(ERROR_SUCCESS, registry.Set(below, name, value));
    }
  }
  const auto specs = Specs(ToWide(ReadData("cache/three_maps.xml")));
  EXPECT_EQ(
      L"/: Both=depends+2|One=fresh+2@6000\n"
      L"SN1/WS: Both=stale+2@10|One=unknown+2\n"
      L"SN1\\Vendor/Other is no cache's\n"
      L"SN2/oid: Both=fresh+2@6000|One=unknown+2\n",
      Review(registry, specs.Get()));
  EXPECT_EQ(0u, Review(registry, nullptr).find(L"/: Both=unknown+2|One=unknown+2\n"));
  struct : CacheVisitor {
    void Visit(const CacheSection&) override { throw 1; }
  } thrower;
  EXPECT_EQ(static_cast<DWORD>(ERROR_OUTOFMEMORY),
            ReviewRegCache(registry.Path().c_str(), nullptr, &thrower, &m_now));
}

}  // namespace
}  // namespace Corvane::Test
