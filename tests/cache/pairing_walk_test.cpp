// What a cache's store means: to loading, out of the registry or a printer's data, and to the
// review, which must agree about every row.
#include "cache/pairing_walk.h"

#include <sstream>

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

V Ago(std::int64_t ticks) {
  std::uint64_t now = 0;
  EXPECT_EQ(1, GetCurrentFileTime(&now));
  return RegistryKey::Text(std::to_wstring(static_cast<std::int64_t>(now) - ticks));
}

// A text; or "~9", the time of nine seconds ago; "#9", a number; "%", one of two bytes; "?",
// another type; "!text" without a terminator and of odd size.
V ValueOf(const std::wstring& text) {
  const std::wstring rest = text.substr(text.empty() ? 0 : 1);
  switch (text[0]) {
    case L'~':
      return Ago(std::stoll(rest) * kSecond);
    case L'#':
      return RegistryKey::Number(static_cast<DWORD>(std::stoll(rest)));
    case L'%':
      return {REG_DWORD, {1, 2}};
    case L'?':
      return {rest.empty() ? DWORD{REG_BINARY} : DWORD{REG_EXPAND_SZ},
              RegistryKey::Text(L"%x%").data};
    case L'!': {
      V odd = RegistryKey::Text(rest);
      odd.data.resize(odd.data.size() - sizeof(wchar_t) + 1);
      return odd;
    }
    default:
      return RegistryKey::Text(text);
  }
}

// "key=value|key=value"
std::map<std::wstring, std::wstring> Pairs(const std::wstring& text) {
  std::map<std::wstring, std::wstring> pairs;
  std::wistringstream stream(text);
  for (std::wstring pair; std::getline(stream, pair, L'|');) {
    pairs[pair.substr(0, pair.find(L'='))] = pair.substr(pair.find(L'=') + 1);
  }
  return pairs;
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

class PairingWalkTest : public ParsingTest {
 protected:
  static RefPtr<DataMapSpecCollection> Specs(const wchar_t* maps) {
    return RefPtr<DataMapSpecCollection>::Adopt(
        DataMapSpecCollection::CreateDataMapSpecCollection(Element(maps).Get()));
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
  for (const CacheSection& section : told) {
    std::size_t loaded = 0;
    for (const CacheEntry& entry : section.entries) {
      const bool isLoaded = !entry.isPassedOver && (entry.verdict == Verdict::kFresh ||
                                                    entry.verdict == Verdict::kNeverStale);
      EXPECT_EQ(restored.contains(entry.key), isLoaded);
      loaded += isLoaded ? 1 : 0;
    }
    EXPECT_EQ(restored.size(), loaded);
  }
}

TEST_F(PairingWalkTest, RestoresFreshPairs) {
  const auto specs = Specs(
      L"<DataMaps><OIDDataMap><StaticDataItem Name='Static'>s</StaticDataItem>"
      L"<DataItem Name='Size' LifeSpan='600'/><DataItem Name='Pages' Prefix='p' LifeSpan='600'/>"
      L"<DataItem Name='y:z' Prefix='x' LifeSpan='600'/>"
      L"<DataItem Name='z' Prefix='x:y' LifeSpan='10'/><DataItem "
      L"Name='Ever'/></OIDDataMap></DataMaps>");
  static const struct {
    const char* name;
    const wchar_t* stored;
    const wchar_t* restored;
  } kCases[] = {
      {"fresh", L"Size=A4|Size.Expires=~50", L"Size=A4@600"},
      {"stale", L"Size=A4|Size.Expires=~70", L""},
      {"from the future", L"Size=A4|Size.Expires=~-60", L""},
      {"never goes stale, not even without an item", L"Size=A4|Size.Expires=0|x:Y=A5|x:Y.Expires=0",
       L"Size=A4|x:Y=A5"},
      {"an item that never goes stale", L"Ever=A4|Ever.Expires=~1", L"Ever=A4"},
      {"of two items of one key the first counts", L"x:y:z=A4|x:y:z.Expires=~30", L"x:y:z=A4@600"},
      {"no such item", L"Pages=1|Pages.Expires=~1", L""},
      {"item with a prefix", L"p:Pages=#7|p:Pages.Expires=~1", L"p:Pages=i:7@600"},
      {"static item", L"Static=1|Static.Expires=~1", L""},
      {"negative numbers", L"A=#-1|A.Expires=0|B=#-2|B.Expires=0", L"A=|B=i:-2"},
      {"companions are numbers", L"Ever=A4|Ever.Expires=#5|Size=A4|Size.Expires=#0", L"Ever=A4"},
      {"companion is no number", L"Size=A4|Size.Expires=soon", L""},
      {"companion is empty", L"Size=A4|Size.Expires=", L""},
      {"companion with blanks is not \"0\"", L"Size=A4|Size.Expires= 0", L""},
      {"companion beyond 64 bits", L"Size=A4|Size.Expires=99999999999999999999", L""},
      {"negative companion", L"Size=A4|Size.Expires=-1", L""},
      {"no companion", L"Size=A4", L""},
      {"companion alone", L"Size.Expires=0", L""},
      {"an orphan hides its neighbour", L"Size=A4|Size-x=1|Size.Expires=0", L""},
      {"an orphan companion too", L"A.Expires=0|Size=A4|Size.Expires=0", L""},
      {"a number of two bytes, too", L"A=%|Size=A4|Size.Expires=0", L""},
      {"two orphans do not", L"A=0|B=0|Size=%|Size.Expires=0", L"Size=i:513"},
      {"a key that looks like a companion", L"Size.Expires=1|Size.Expires.Expires=0",
       L"Size.Expires=1"},
      {"other types are not there", L"Size=A4|Size-x=?|Size-y=?x|Size.Expires=0", L"Size=A4"},
      {"text without a terminator, of odd size", L"Size=!odd|Size.Expires=0", L"Size=odd"},
      {"the nameless value", L"=1|.Expires=0", L"=1"},
      {"nothing", L"", L""},
  };
  DataMapSpec* const spec = specs->GetDataMapSpec(0);
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    std::map<std::wstring, V> stored;
    for (const auto& [name, text] : Pairs(c.stored)) stored[name] = ValueOf(text);
    const auto expected = Pairs(c.restored);
    const auto load = [&](auto* cache) {
      CachedValueMap out;
      EXPECT_EQ(stored.empty() ? 1u : 0u, cache->PopulateFromRegistry(spec, &out));
      std::map<std::wstring, std::wstring> restored;
      for (const auto& [key, cached] : out) restored[key] = Describe(cached);
      EXPECT_EQ(expected, restored);
    };
    std::uint64_t now = 0;
    const RegistryKey registry;
    for (const auto& [name, value] : stored) {
      ASSERT_EQ(ERROR_SUCCESS, registry.Set(L"SN1\\OID", name, value));
    }
    const auto cache =
        RefPtr<RegCacheProvider>::Share(new RegCacheProvider(registry.Path().c_str()));
    cache->SetDevice(L"SN1", L"OID");
    load(cache.Get());
    Sections told;
    EXPECT_EQ(0u, ReviewRegCache(registry.Path().c_str(), specs.Get(), &told, &now));
    ExpectAgreement(expected, told);

    // A printer's data have no nameless value.
    const TestPrinter printer;  // Wine's keep what is deleted
    if (!printer.Handle() || stored.contains(L"")) continue;
    for (auto [name, value] : stored) {
      ASSERT_EQ(static_cast<DWORD>(ERROR_SUCCESS),
                SetPrinterDataExW(printer.Handle(), kPrintDataCacheKey, name.c_str(), value.type,
                                  value.data.data(), static_cast<DWORD>(value.data.size())));
    }
    load(RefPtr<PrintDataCacheProvider>::Share(new PrintDataCacheProvider(printer.Handle())).Get());
    told.clear();
    EXPECT_EQ(0u, ReviewPrintDataCache(printer.Handle(), specs.Get(), &told, &now));
    ExpectAgreement(expected, told);
  }
}

TEST_F(PairingWalkTest, JudgesAKeyByTheMapsThatCouldBeItsOwn) {
  for (const wchar_t* const below : {L"", L"SN1\\WS", L"SN2\\oid", L"SN1\\Vendor\\Other"}) {
    for (const wchar_t* const key : {L"Both", L"One"}) {
      ASSERT_EQ(ERROR_SUCCESS, m_registry.Set(below, key, RegistryKey::Text(L"v")));
      ASSERT_EQ(ERROR_SUCCESS,
                m_registry.Set(below, std::wstring(key) + L".Expires", Ago(60 * kSecond)));
    }
  }
  const auto specs = Specs(
      L"<DataMaps><OIDDataMap><DataItem Name='Both' LifeSpan='6000'/></OIDDataMap>"
      L"<OIDDataMap><DataItem Name='One' LifeSpan='6000'/></OIDDataMap>"
      L"<XMLDataMap Protocol='ws'><DataItem Name='Both' LifeSpan='10'/></XMLDataMap></DataMaps>");
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
  const Sections sections = Review(specs.Get());
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
  struct : CacheVisitor {
    void Visit(const CacheSection&) override { throw 1; }
  } thrower;
  std::uint64_t now = 0;
  EXPECT_EQ(static_cast<DWORD>(ERROR_OUTOFMEMORY),
            ReviewRegCache(m_registry.Path().c_str(), nullptr, &thrower, &now));
}

}  // namespace
}  // namespace Corvane::Test
