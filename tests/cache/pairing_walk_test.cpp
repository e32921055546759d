// What a cache's store means: to loading, out of the registry or a printer's data, and to the
// review, which must agree about every row.
#include "cache/pairing_walk.h"

#include <set>

#include "cache/print_data_cache_provider.h"
#include "cache/reg_cache_provider.h"
#include "core/file_time.h"
#include "corvane/handles.h"
#include "tests/support/dom.h"
#include "tests/support/registry_key.h"
#include "tests/support/test_printer.h"
#include "tests/support/test_store.h"

namespace Corvane::Test {
namespace {

using V = RegistryKey::Value;
using Verdict = CacheVerdict;

constexpr std::int64_t kSecond = 10'000'000;  // ticks

V Text(const wchar_t* text) { return RegistryKey::Text(text); }
V Ago(std::int64_t ticks) {
  std::uint64_t now = 0;
  EXPECT_EQ(1, GetCurrentFileTime(&now));
  return RegistryKey::Text(std::to_wstring(static_cast<std::int64_t>(now) - ticks));
}

// "text", "i:3" for a number, with "@" and the lifespan when there is one.
std::wstring Describe(const CachedValue& cached) {
  std::wstring text =
      cached.value.vt == VT_I4 ? L"i:" + std::to_wstring(cached.value.lVal) : TextOf(cached.value);
  if (cached.lifespan != 0) text += L"@" + std::to_wstring(cached.lifespan);
  return text;
}

class Sections : public CacheVisitor, public std::vector<CacheSection> {
 public:
  void Visit(const CacheSection& section) override { push_back(section); }
};

struct DisposeCollection {
  void operator()(DataMapSpecCollection* specs) const { specs->Dispose(); }
};
using SpecsPtr = std::unique_ptr<DataMapSpecCollection, DisposeCollection>;

class PairingWalkTest : public ParsingTest {
 protected:
  static SpecsPtr Specs(const std::wstring& maps) {
    const auto root = Element((L"<DataMaps>" + maps + L"</DataMaps>").c_str());
    return SpecsPtr(DataMapSpecCollection::CreateDataMapSpecCollection(root.Get()));
  }
  Sections Review(DataMapSpecCollection* specs) const {
    Sections sections;
    std::uint64_t now = 0;
    EXPECT_EQ(0u, ReviewRegCache(m_registry.Path().c_str(), specs, &sections, &now));
    return sections;
  }

  const TestStore m_store;
  const RegistryKey m_registry;
};

// Keys by a loading of the library, and by the review's word.
void ExpectAgreement(const std::map<std::wstring, std::wstring>& restored, const Sections& told) {
  ASSERT_LE(told.size(), 1u);
  std::set<std::wstring> loaded;
  for (const CacheSection& section : told) {
    for (const CacheEntry& entry : section.entries) {
      if (entry.isPassedOver) continue;
      if (entry.verdict == Verdict::kFresh || entry.verdict == Verdict::kNeverStale) {
        loaded.insert(entry.key);
      }
    }
  }
  std::set<std::wstring> keys;
  for (const auto& [key, value] : restored) keys.insert(key);
  EXPECT_EQ(keys, loaded);
}

TEST_F(PairingWalkTest, RestoresFreshPairs) {
  V oddText = Text(L"odd");
  oddText.data.resize(oddText.data.size() - sizeof(wchar_t) + 1);
  const auto specs = Specs(
      L"<OIDDataMap><StaticDataItem Name='Static'>s</StaticDataItem>"
      L"<DataItem Name='Size' LifeSpan='600'/><DataItem Name='Pages' Prefix='p' LifeSpan='600'/>"
      L"<DataItem Name='y:z' Prefix='x' LifeSpan='600'/>"
      L"<DataItem Name='z' Prefix='x:y' LifeSpan='10'/><DataItem Name='Ever'/></OIDDataMap>");
  const struct {
    const char* name;
    std::map<std::wstring, V> stored;
    std::map<std::wstring, std::wstring> restored;
  } kCases[] = {
      {"fresh",
       {{L"Size", Text(L"A4")}, {L"Size.Expires", Ago(59 * kSecond)}},
       {{L"Size", L"A4@600"}}},
      {"stale", {{L"Size", Text(L"A4")}, {L"Size.Expires", Ago(61 * kSecond)}}, {}},
      {"from the future", {{L"Size", Text(L"A4")}, {L"Size.Expires", Ago(-60 * kSecond)}}, {}},
      {"never goes stale, not even without an item",
       {{L"Size", Text(L"A4")},
        {L"Size.Expires", Text(L"0")},
        {L"x:Y", Text(L"A5")},
        {L"x:Y.Expires", Text(L"0")}},
       {{L"Size", L"A4"}, {L"x:Y", L"A5"}}},
      {"an item that never goes stale",
       {{L"Ever", Text(L"A4")}, {L"Ever.Expires", Ago(1)}},
       {{L"Ever", L"A4"}}},
      {"of two items of one key the first counts",
       {{L"x:y:z", Text(L"A4")}, {L"x:y:z.Expires", Ago(30 * kSecond)}},
       {{L"x:y:z", L"A4@600"}}},
      {"no such item", {{L"Pages", Text(L"1")}, {L"Pages.Expires", Ago(1)}}, {}},
      {"item with a prefix",
       {{L"p:Pages", RegistryKey::Number(7)}, {L"p:Pages.Expires", Ago(1)}},
       {{L"p:Pages", L"i:7@600"}}},
      {"static item", {{L"Static", Text(L"1")}, {L"Static.Expires", Ago(1)}}, {}},
      {"negative numbers",
       {{L"A", RegistryKey::Number(0xFFFFFFFF)},
        {L"A.Expires", Text(L"0")},
        {L"B", RegistryKey::Number(0xFFFFFFFE)},
        {L"B.Expires", Text(L"0")}},
       {{L"A", L""}, {L"B", L"i:-2"}}},
      {"companions are numbers",
       {{L"Ever", Text(L"A4")},
        {L"Ever.Expires", RegistryKey::Number(5)},
        {L"Size", Text(L"A4")},
        {L"Size.Expires", RegistryKey::Number(0)}},
       {{L"Ever", L"A4"}}},
      {"companion is no number", {{L"Size", Text(L"A4")}, {L"Size.Expires", Text(L"soon")}}, {}},
      {"companion is empty", {{L"Size", Text(L"A4")}, {L"Size.Expires", Text(L"")}}, {}},
      {"companion with blanks is not \"0\"",
       {{L"Size", Text(L"A4")}, {L"Size.Expires", Text(L" 0")}},
       {}},
      {"companion beyond 64 bits",
       {{L"Size", Text(L"A4")}, {L"Size.Expires", Text(L"99999999999999999999")}},
       {}},
      {"negative companion", {{L"Size", Text(L"A4")}, {L"Size.Expires", Text(L"-1")}}, {}},
      {"no companion", {{L"Size", Text(L"A4")}}, {}},
      {"companion alone", {{L"Size.Expires", Text(L"0")}}, {}},
      {"an orphan hides its neighbour",
       {{L"Size", Text(L"A4")}, {L"Size-x", Text(L"1")}, {L"Size.Expires", Text(L"0")}},
       {}},
      {"an orphan companion too",
       {{L"A.Expires", Text(L"0")}, {L"Size", Text(L"A4")}, {L"Size.Expires", Text(L"0")}},
       {}},
      {"a number of two bytes is one",
       {{L"A", V{REG_DWORD, {1, 2}}}, {L"Size", Text(L"A4")}, {L"Size.Expires", Text(L"0")}},
       {}},
      {"two orphans do not",
       {{L"A", Text(L"0")},
        {L"B", Text(L"0")},
        {L"Size", V{REG_DWORD, {1, 2}}},
        {L"Size.Expires", Text(L"0")}},
       {{L"Size", L"i:513"}}},
      {"a key that looks like a companion",
       {{L"Size.Expires", Text(L"1")}, {L"Size.Expires.Expires", Text(L"0")}},
       {{L"Size.Expires", L"1"}}},
      {"other types are not there",
       {{L"Size", Text(L"A4")},
        {L"Size-x", V{REG_BINARY, {1, 2}}},
        {L"Size-y", V{REG_EXPAND_SZ, Text(L"%x%").data}},
        {L"Size.Expires", Text(L"0")}},
       {{L"Size", L"A4"}}},
      {"text without a terminator, of odd size",
       {{L"Size", oddText}, {L"Size.Expires", Text(L"0")}},
       {{L"Size", L"odd"}}},
      {"the nameless value", {{L"", Text(L"1")}, {L".Expires", Text(L"0")}}, {{L"", L"1"}}},
      {"nothing", {}, {}},
  };
  DataMapSpec* const spec = specs->GetDataMapSpec(0);
  const TestPrinter printer;
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    const auto load = [&c, spec](auto* cache) {
      CachedValueMap out;
      EXPECT_EQ(c.stored.empty() ? 1u : 0u, cache->PopulateFromRegistry(spec, &out));
      std::map<std::wstring, std::wstring> restored;
      for (const auto& [key, cached] : out) restored[key] = Describe(cached);
      EXPECT_EQ(c.restored, restored);
    };
    std::uint64_t now = 0;
    const RegistryKey registry;
    for (const auto& [name, value] : c.stored) {
      ASSERT_EQ(ERROR_SUCCESS, registry.Set(L"SN1\\OID", name, value));
    }
    const auto cache =
        RefPtr<RegCacheProvider>::Share(new RegCacheProvider(registry.Path().c_str()));
    cache->SetDevice(L"SN1", L"OID");
    load(cache.Get());
    Sections told;
    EXPECT_EQ(0u, ReviewRegCache(registry.Path().c_str(), specs.get(), &told, &now));
    ExpectAgreement(c.restored, told);

    // A printer's data have no nameless value.
    if (!printer.Handle() || c.stored.contains(L"")) continue;
    for (auto [name, value] : c.stored) {
      ASSERT_EQ(static_cast<DWORD>(ERROR_SUCCESS),
                SetPrinterDataExW(printer.Handle(), kPrintDataCacheKey, name.c_str(), value.type,
                                  value.data.data(), static_cast<DWORD>(value.data.size())));
    }
    load(RefPtr<PrintDataCacheProvider>::Share(new PrintDataCacheProvider(printer.Handle())).Get());
    told.clear();
    EXPECT_EQ(0u, ReviewPrintDataCache(printer.Handle(), specs.get(), &told, &now));
    ExpectAgreement(c.restored, told);
    for (const auto& [name, value] : c.stored) {
      DeletePrinterDataExW(printer.Handle(), kPrintDataCacheKey, name.c_str());
    }
  }
}

TEST_F(PairingWalkTest, JudgesAKeyByTheMapsThatCouldBeItsOwn) {
  for (const wchar_t* const below : {L"", L"SN1\\WS", L"SN2\\oid", L"SN1\\Vendor\\Other"}) {
    for (const wchar_t* const key : {L"Both", L"One"}) {
      ASSERT_EQ(ERROR_SUCCESS, m_registry.Set(below, key, Text(L"v")));
      ASSERT_EQ(ERROR_SUCCESS,
                m_registry.Set(below, std::wstring(key) + L".Expires", Ago(60 * kSecond)));
    }
  }
  const auto specs = Specs(
      L"<OIDDataMap><DataItem Name='Both' LifeSpan='6000'/></OIDDataMap>"
      L"<OIDDataMap><DataItem Name='One' LifeSpan='6000'/></OIDDataMap>"
      L"<XMLDataMap Protocol='ws'><DataItem Name='Both' LifeSpan='10'/></XMLDataMap>");
  const struct {
    const wchar_t* device;
    const wchar_t* protocol;
    Verdict both;
    std::optional<std::uint32_t> lifespan;
    Verdict one;
  } kExpected[] = {
      {L"", L"", Verdict::kDependsOnTheMap, {}, Verdict::kFresh},
      {L"SN1", L"WS", Verdict::kStale, 10, Verdict::kNotInSpecification},
      {L"SN1\\Vendor", L"Other", {}, {}, {}},
      {L"SN2", L"oid", Verdict::kFresh, 6000, Verdict::kNotInSpecification},
  };
  const Sections sections = Review(specs.get());
  ASSERT_EQ(std::size(kExpected), sections.size());
  for (std::size_t i = 0; i < sections.size(); ++i) {
    SCOPED_TRACE(i);
    const auto& expected = kExpected[i];
    EXPECT_EQ(expected.device, sections[i].device);
    EXPECT_EQ(expected.protocol, sections[i].protocol);
    EXPECT_EQ(i != 2, sections[i].isOfACache);
    if (!sections[i].isOfACache) continue;
    ASSERT_EQ(2u, sections[i].entries.size());
    EXPECT_EQ(expected.both, sections[i].entries[0].verdict);
    EXPECT_EQ(expected.lifespan, sections[i].entries[0].lifespan);
    EXPECT_EQ(expected.one, sections[i].entries[1].verdict);
  }
  EXPECT_EQ(Verdict::kNotInSpecification, Review(nullptr)[0].entries[0].verdict);
}

}  // namespace
}  // namespace Corvane::Test
