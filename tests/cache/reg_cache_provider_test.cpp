#include "cache/reg_cache_provider.h"

#include <limits>

#include "core/file_time.h"
#include "core/ref_ptr.h"
#include "tests/support/dom.h"
#include "tests/support/registry_key.h"
#include "tests/support/test_store.h"
#include "tests/support/trace_recorder.h"

namespace Corvane::Test {
namespace {

constexpr wchar_t kKey[] = L"SN1\\OID";

std::uint64_t Now() {
  std::uint64_t now = 0;
  EXPECT_EQ(1, GetCurrentFileTime(&now));
  return now;
}

// "text", "i:3" for a number, with "@" and the lifespan when there is one.
std::wstring Describe(const CachedValue& cached) {
  std::wstring text =
      cached.value.vt == VT_I4 ? L"i:" + std::to_wstring(cached.value.lVal) : TextOf(cached.value);
  if (cached.lifespan != 0) text += L"@" + std::to_wstring(cached.lifespan);
  return text;
}

class RegCacheProviderTest : public ParsingTest {
 protected:
  RegCacheProviderTest() { m_cache->SetDevice(L"SN1", L"OID"); }

  static RefPtr<DataMapSpec> Spec(const wchar_t* xml) {
    return RefPtr<DataMapSpec>::Adopt(DataMapSpec::CreateDataMapSpec(Element(xml).Get()));
  }

  const TestStore m_store;
  const RegistryKey m_registry;
  RefPtr<RegCacheProvider> m_cache =
      RefPtr<RegCacheProvider>::Share(new RegCacheProvider(m_registry.Path().c_str()));
};

TEST_F(RegCacheProviderTest, WritesValuesWithTheirCompanions) {
  const std::uint64_t now = Now();
  const auto nowText = RegistryKey::Text(std::to_wstring(now));
  CachedValueMap values;
  values[L"Model"] = {_variant_t(L"420\u00e4"), now, 600};
  values[L"p:Pages"] = {_variant_t(-7L, VT_I4), 0, 0};
  values[L"Null"].value.vt = VT_BSTR;
  values[L"Flag"] = {_variant_t(true), now, 600};
  values[L"Int"] = {_variant_t(1), now, 600};
  values[L"Int"].value.vt = VT_INT;
  values[L"Cut"].value = _bstr_t(SysAllocStringLen(L"ab\0cd", 5), false);
  values[L"Stale"] = {_variant_t(L"x"), now - 61'000'000, 60};
  values[L""] = {_variant_t(L"nameless"), 0, 0};
  EXPECT_EQ(0u, m_cache->SetDataValues(&values));

  const std::map<std::wstring, RegistryKey::Value> expected = {
      {L"Model", RegistryKey::Text(L"420\u00e4")},
      {L"Model.Expires", nowText},
      {L"p:Pages", RegistryKey::Number(0xFFFFFFF9)},
      {L"p:Pages.Expires", RegistryKey::Text(L"0")},
      {L"Null", RegistryKey::Text(L"")},
      {L"Null.Expires", RegistryKey::Text(L"0")},
      {L"Flag.Expires", nowText},
      {L"Int.Expires", nowText},
      {L"Cut", RegistryKey::Text(L"ab")},
      {L"Cut.Expires", RegistryKey::Text(L"0")}};
  EXPECT_EQ(expected, m_registry.Values(kKey));

  const _variant_t late(L"late");
  EXPECT_EQ(0u, m_cache->SetDataValue(L"Model", &late, -5));
  EXPECT_EQ(RegistryKey::Text(L"late"), m_registry.Values(kKey)[L"Model"]);
  EXPECT_EQ(RegistryKey::Text(L"-5"), m_registry.Values(kKey)[L"Model.Expires"]);
  EXPECT_EQ(1u, m_cache->SetDataValue(nullptr, &late, 0));
  EXPECT_EQ(1u, m_cache->SetDataValue(L"Model", nullptr, 0));
  EXPECT_EQ(1u, m_cache->SetDataValues(nullptr));
}

TEST_F(RegCacheProviderTest, RestoresFreshPairs) {
  using V = RegistryKey::Value;
  const auto text = &RegistryKey::Text;
  const auto ago = [now = Now()](std::int64_t ticks) {
    return RegistryKey::Text(std::to_wstring(static_cast<std::int64_t>(now) - ticks));
  };
  V oddText = text(L"odd");
  oddText.data.resize(oddText.data.size() - sizeof(wchar_t) + 1);
  const auto spec = Spec(
      L"<OIDDataMap><StaticDataItem Name='Static'>s</StaticDataItem>"
      L"<DataItem Name='Size' LifeSpan='600'/><DataItem Name='Pages' Prefix='p' LifeSpan='600'/>"
      L"<DataItem Name='Ever'/></OIDDataMap>");
  static constexpr std::int64_t kSecond = 10'000'000;
  const struct {
    const char* name;
    std::map<std::wstring, V> stored;
    std::map<std::wstring, std::wstring> restored;
  } kCases[] = {
      {"fresh",
       {{L"Size", text(L"A4")}, {L"Size.Expires", ago(59 * kSecond)}},
       {{L"Size", L"A4@600"}}},
      {"stale", {{L"Size", text(L"A4")}, {L"Size.Expires", ago(61 * kSecond)}}, {}},
      {"from the future", {{L"Size", text(L"A4")}, {L"Size.Expires", ago(-60 * kSecond)}}, {}},
      {"never goes stale",
       {{L"Size", text(L"A4")}, {L"Size.Expires", text(L"0")}},
       {{L"Size", L"A4"}}},
      {"not even without an item",
       {{L"x:Y", text(L"A4")}, {L"x:Y.Expires", text(L"0")}},
       {{L"x:Y", L"A4"}}},
      {"an item that never goes stale",
       {{L"Ever", text(L"A4")}, {L"Ever.Expires", ago(1)}},
       {{L"Ever", L"A4"}}},
      {"no such item", {{L"Pages", text(L"1")}, {L"Pages.Expires", ago(1)}}, {}},
      {"item with a prefix",
       {{L"p:Pages", RegistryKey::Number(7)}, {L"p:Pages.Expires", ago(1)}},
       {{L"p:Pages", L"i:7@600"}}},
      {"static item", {{L"Static", text(L"1")}, {L"Static.Expires", ago(1)}}, {}},
      {"-1",
       {{L"Size", RegistryKey::Number(0xFFFFFFFF)}, {L"Size.Expires", text(L"0")}},
       {{L"Size", L""}}},
      {"negative number",
       {{L"Size", RegistryKey::Number(0xFFFFFFFE)}, {L"Size.Expires", text(L"0")}},
       {{L"Size", L"i:-2"}}},
      {"companion is a number",
       {{L"Size", text(L"A4")}, {L"Size.Expires", RegistryKey::Number(0)}},
       {}},
      {"companion is a number, for ever",
       {{L"Ever", text(L"A4")}, {L"Ever.Expires", RegistryKey::Number(5)}},
       {{L"Ever", L"A4"}}},
      {"companion is no number", {{L"Size", text(L"A4")}, {L"Size.Expires", text(L"soon")}}, {}},
      {"companion is empty", {{L"Size", text(L"A4")}, {L"Size.Expires", text(L"")}}, {}},
      {"companion with blanks is not \"0\"",
       {{L"Size", text(L"A4")}, {L"Size.Expires", text(L" 0")}},
       {}},
      {"companion beyond 64 bits",
       {{L"Size", text(L"A4")}, {L"Size.Expires", text(L"99999999999999999999")}},
       {}},
      {"negative companion", {{L"Size", text(L"A4")}, {L"Size.Expires", text(L"-1")}}, {}},
      {"no companion", {{L"Size", text(L"A4")}}, {}},
      {"companion alone", {{L"Size.Expires", text(L"0")}}, {}},
      {"an orphan hides its neighbour",
       {{L"Size", text(L"A4")}, {L"Size-x", text(L"1")}, {L"Size.Expires", text(L"0")}},
       {}},
      {"an orphan companion too",
       {{L"A.Expires", text(L"0")}, {L"Size", text(L"A4")}, {L"Size.Expires", text(L"0")}},
       {}},
      {"two orphans do not",
       {{L"A", text(L"0")},
        {L"B", text(L"0")},
        {L"Size", text(L"A4")},
        {L"Size.Expires", text(L"0")}},
       {{L"Size", L"A4"}}},
      {"a key that looks like a companion",
       {{L"Size.Expires", text(L"1")}, {L"Size.Expires.Expires", text(L"0")}},
       {{L"Size.Expires", L"1"}}},
      {"other types are not there",
       {{L"Size", text(L"A4")},
        {L"Size-x", V{REG_BINARY, {1, 2}}},
        {L"Size-y", V{REG_EXPAND_SZ, text(L"%x%").data}},
        {L"Size.Expires", text(L"0")}},
       {{L"Size", L"A4"}}},
      {"a number of two bytes",
       {{L"Size", V{REG_DWORD, {1, 2}}}, {L"Size.Expires", text(L"0")}},
       {{L"Size", L"i:513"}}},
      {"text without a terminator, of odd size",
       {{L"Size", oddText}, {L"Size.Expires", text(L"0")}},
       {{L"Size", L"odd"}}},
      {"the nameless value", {{L"", text(L"1")}, {L".Expires", text(L"0")}}, {{L"", L"1"}}},
      {"nothing", {}, {}},
  };
  int number = 0;
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    const std::wstring device = L"device" + std::to_wstring(++number);
    for (const auto& [name, value] : c.stored) {
      ASSERT_EQ(ERROR_SUCCESS, m_registry.Set(device + L"\\OID", name, value));
    }
    m_cache->SetDevice(device, L"OID");
    CachedValueMap out;
    EXPECT_EQ(c.stored.empty() ? 1u : 0u, m_cache->PopulateFromRegistry(spec.Get(), &out));
    std::map<std::wstring, std::wstring> restored;
    for (const auto& [key, cached] : out) restored[key] = Describe(cached);
    EXPECT_EQ(c.restored, restored);
  }
}

TEST_F(RegCacheProviderTest, AnswersWhatItHasReadAndNotWhatItWrites) {
  const _variant_t written(L"A4");
  ASSERT_EQ(0u, m_cache->SetDataValue(L"Size", &written, 77));
  _variant_t value(L"untouched");
  EXPECT_EQ(1u, m_cache->GetDataValue(L"Size", &value));
  EXPECT_EQ(1u, m_cache->PopulateFromRegistry(nullptr, nullptr));
  EXPECT_EQ(0u, m_cache->GetDataValue(L"Size.Expires", &value));
  EXPECT_EQ(L"77", TextOf(value));
  EXPECT_EQ(1u, m_cache->GetDataValue(L"size", &value));
  EXPECT_EQ(1u, m_cache->GetDataValue(nullptr, &value));
  EXPECT_EQ(1u, m_cache->GetDataValue(L"Size", nullptr));
  EXPECT_EQ(L"77", TextOf(value)) << "the output of a failure is left alone";

  m_cache->SetDevice(L"SN2", L"OID");
  EXPECT_EQ(1u, m_cache->PopulateFromRegistry(nullptr, nullptr));
  EXPECT_EQ(1u, m_cache->GetDataValue(L"Size", &value)) << "another device's";
  EXPECT_TRUE(m_registry.Values(L"SN2").empty()) << "reading makes no key";
}

TEST_F(RegCacheProviderTest, TellsAPathThatCannotBeWritten) {
  static const struct {
    const char* name;
    const wchar_t* path;
    std::uint32_t many;  // of SetDataValues
    const wchar_t* message;
  } kCases[] = {
      {"null", nullptr, 1, L"RegCreateKeyEx failed with error code =161"},
      {"empty", L"", 1, L"RegCreateKeyEx failed with error code =161"},
      {"absolute", L"\\Software", 1, L"RegCreateKeyEx failed with error code =161"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    const TraceRecorder recorder(kTraceInfo);
    const auto cache = RefPtr<ICacheProvider>::Adopt(CreateRegCacheProvider(c.path));
    const _variant_t value(L"x");
    EXPECT_EQ(1u, cache->SetDataValue(L"K", &value, 0));
    EXPECT_TRUE(recorder.HasMessage(16, L"Corvane::RegCacheProvider::SetDataValue", c.message));
    CachedValueMap values;
    values[L"K"].value = value;
    EXPECT_EQ(c.many, cache->SetDataValues(&values));
  }
}

TEST_F(RegCacheProviderTest, TracesAValueThatIsRefused) {
  // Longer than a name may be, with its companion or without.
  const std::wstring name(16384, L'n');
  const _variant_t value(L"x");
  const TraceRecorder recorder(kTraceInfo);
  EXPECT_EQ(0u, m_cache->SetDataValue(name.c_str(), &value, 0));
  const auto lines = recorder.Lines();
  ASSERT_EQ(1u, lines.size()) << "and the companion is not tried";
  EXPECT_EQ(L"Corvane::RegCacheProvider::RegistryWrite", lines[0].function);
  EXPECT_EQ(0u, lines[0].message.find(L"Registry writing failed with the error = "));
  EXPECT_EQ(L' ', lines[0].message.back());
  EXPECT_TRUE(m_registry.Values(kKey).empty());
}

}  // namespace
}  // namespace Corvane::Test
