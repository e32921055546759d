#include "cache/reg_cache_provider.h"

#include "core/file_time.h"
#include "corvane/handles.h"
#include "tests/support/dom.h"
#include "tests/support/registry_key.h"
#include "tests/support/test_store.h"
#include "tests/support/trace_recorder.h"

namespace Corvane::Test {
namespace {

constexpr wchar_t kKey[] = L"SN1\\OID";

class RegCacheProviderTest : public ParsingTest {
 protected:
  RegCacheProviderTest() { m_cache->SetDevice(L"SN1", L"OID"); }

  std::wstring Read(const wchar_t* name) {
    _variant_t value(L"untouched");
    const std::uint32_t result = m_cache->GetDataValue(name, &value);
    return (result == 0 ? L"" : L"1 ") + TextOf(value);
  }

  const TestStore m_store;
  const RegistryKey m_registry;
  RefPtr<RegCacheProvider> m_cache =
      RefPtr<RegCacheProvider>::Share(new RegCacheProvider(m_registry.Path().c_str()));
};

TEST_F(RegCacheProviderTest, WritesValuesWithTheirCompanions) {
  std::uint64_t now = 0;
  EXPECT_EQ(1, GetCurrentFileTime(&now));
  CachedValueMap values;
  values[L"Model"] = {_variant_t(L"420\u00e4"), now, 600};
  values[L"p:Pages"] = {ValueOf(L"i:-7"), 0, 0};
  values[L"Null"].value = ValueOf(L"<vt 8>");
  values[L"Flag"] = {ValueOf(L"<vt 11>"), now, 600};
  values[L"Int"] = {ValueOf(L"<vt 22>"), now, 600};
  values[L"Cut"].value = _bstr_t(SysAllocStringLen(L"ab\0cd", 5), false);
  values[L"Stale"] = {_variant_t(L"x"), now - 61'000'000, 60};
  values[L""] = {_variant_t(L"nameless"), 0, 0};
  EXPECT_EQ(0u, m_cache->SetDataValues(&values));

  const auto text = [](const std::wstring& value) { return RegistryKey::Text(value); };
  const auto nowText = text(std::to_wstring(now));
  const std::map<std::wstring, RegistryKey::Value> expected = {
      {L"Model", text(L"420\u00e4")},
      {L"Model.Expires", nowText},
      {L"p:Pages", RegistryKey::Number(0xFFFFFFF9)},
      {L"p:Pages.Expires", text(L"0")},
      {L"Null", text(L"")},
      {L"Null.Expires", text(L"0")},
      {L"Flag.Expires", nowText},
      {L"Int.Expires", nowText},
      {L"Cut", text(L"ab")},
      {L"Cut.Expires", text(L"0")}};
  EXPECT_EQ(expected, m_registry.Values(kKey));

  const _variant_t late(L"late");
  EXPECT_EQ(0u, m_cache->SetDataValue(L"Model", &late, -5));
  EXPECT_EQ(text(L"late"), m_registry.Values(kKey)[L"Model"]);
  EXPECT_EQ(text(L"-5"), m_registry.Values(kKey)[L"Model.Expires"]);
  EXPECT_EQ(1u, m_cache->SetDataValue(nullptr, &late, 0));
  EXPECT_EQ(1u, m_cache->SetDataValue(L"Model", nullptr, 0));
  EXPECT_EQ(1u, m_cache->SetDataValues(nullptr));
}

TEST_F(RegCacheProviderTest, AnswersWhatItHasReadAndNotWhatItWrites) {
  const _variant_t written(L"A4");
  ASSERT_EQ(0u, m_cache->SetDataValue(L"Size", &written, 77));
  EXPECT_EQ(L"1 untouched", Read(L"Size"));
  EXPECT_EQ(1u, m_cache->PopulateFromRegistry(nullptr, nullptr));
  EXPECT_EQ(L"A4", Read(L"Size"));
  EXPECT_EQ(L"77", Read(L"Size.Expires"));
  EXPECT_EQ(L"1 untouched", Read(L"size"));
  EXPECT_EQ(L"1 untouched", Read(nullptr));
  EXPECT_EQ(1u, m_cache->GetDataValue(L"Size", nullptr));

  m_cache->SetDevice(L"SN2", L"OID");
  EXPECT_EQ(1u, m_cache->PopulateFromRegistry(nullptr, nullptr));
  EXPECT_EQ(L"1 untouched", Read(L"Size")) << "another device's";
  EXPECT_TRUE(m_registry.Values(L"SN2").empty()) << "reading makes no key";
}

TEST_F(RegCacheProviderTest, TellsAPathThatCannotBeWritten) {
  const std::initializer_list<const wchar_t*> kPaths = {nullptr, L"", L"\\Software"};
  for (const wchar_t* const path : kPaths) {
    const TraceRecorder recorder(kTraceInfo);
    const auto cache = RefPtr<ICacheProvider>::Adopt(CreateRegCacheProvider(path));
    CachedValueMap values;
    values[L"K"].value = L"x";
    EXPECT_EQ(1u, cache->SetDataValue(L"K", &values[L"K"].value, 0));
    EXPECT_TRUE(recorder.HasMessage(16, L"Corvane::RegCacheProvider::SetDataValue",
                                    L"RegCreateKeyEx failed with error code =161"));
    EXPECT_EQ(1u, cache->SetDataValues(&values));
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
