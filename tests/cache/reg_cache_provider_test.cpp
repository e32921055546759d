#include "cache/reg_cache_provider.h"

#include <limits>

#include "core/file_time.h"
#include "corvane/handles.h"
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

class RegCacheProviderTest : public ParsingTest {
 protected:
  RegCacheProviderTest() { m_cache->SetDevice(L"SN1", L"OID"); }

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
  static constexpr const wchar_t* kPaths[] = {nullptr, L"", L"\\Software"};
  for (const wchar_t* const path : kPaths) {
    SCOPED_TRACE(path ? path : L"null");
    const TraceRecorder recorder(kTraceInfo);
    const auto cache = RefPtr<ICacheProvider>::Adopt(CreateRegCacheProvider(path));
    const _variant_t value(L"x");
    EXPECT_EQ(1u, cache->SetDataValue(L"K", &value, 0));
    EXPECT_TRUE(recorder.HasMessage(16, L"Corvane::RegCacheProvider::SetDataValue",
                                    L"RegCreateKeyEx failed with error code =161"));
    CachedValueMap values;
    values[L"K"].value = value;
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
