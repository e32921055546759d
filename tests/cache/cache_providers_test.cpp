// What the caches write, and what they read of it.
#include "cache/print_data_cache_provider.h"
#include "cache/reg_cache_provider.h"
#include "core/file_time.h"
#include "tests/support/dom.h"
#include "tests/support/registry_key.h"
#include "tests/support/test_printer.h"
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
  for (const wchar_t* const path :
       std::initializer_list<const wchar_t*>{nullptr, L"", L"\\Software"}) {
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
  const std::wstring told =
      L"16 Corvane::RegCacheProvider::RegistryWrite: Registry writing failed with the error = ";
  EXPECT_TRUE(recorder.Text().starts_with(told));
  EXPECT_TRUE(recorder.Text().ends_with(L" \n"));
  EXPECT_EQ(1u, recorder.Lines().size()) << "and the companion is not tried";
  EXPECT_TRUE(m_registry.Values(kKey).empty());
}

class PrintDataCacheProviderTest : public ParsingTest {
 protected:
  void SetUp() override {
    if (!m_printer.Handle()) GTEST_SKIP() << m_printer.Problem();
  }
  RefPtr<PrintDataCacheProvider> Cache() {
    return RefPtr<PrintDataCacheProvider>::Share(new PrintDataCacheProvider(m_printer.Handle()));
  }
  // What the next object reads under `name`; "<none>" when there is nothing.
  std::wstring Kept(const wchar_t* name) {
    _variant_t value;
    return Cache()->GetDataValue(name, &value) == 0 ? TextOf(value) : L"<none>";
  }

  const TestStore m_store;
  const TestPrinter m_printer;
};

TEST_F(PrintDataCacheProviderTest, WritesWhatTheNextObjectReads) {
  const auto cache = Cache();
  EXPECT_EQ(L"<none>", Kept(L"p:Model"));
  const _variant_t null = ValueOf(L"<vt 1>");
  const _variant_t text(L"420\u00e4");
  EXPECT_EQ(1u, cache->SetDataValue(L"p:Model", &null, 5));
  EXPECT_EQ(L"<none>", Kept(L"p:Model.Expires"));
  EXPECT_EQ(1u, cache->SetDataValue(nullptr, &text, 5));
  EXPECT_EQ(0u, cache->SetDataValue(L"p:Model", &text, 5));
  _variant_t value;
  EXPECT_EQ(1u, cache->GetDataValue(L"p:Model", &value)) << "by its own object";
  EXPECT_EQ(L"420\u00e4", Kept(L"p:Model"));
  EXPECT_EQ(L"5", Kept(L"p:Model.Expires"));
  const auto none = RefPtr<ICacheProvider>::Adopt(CreatePrintDataCacheProvider(nullptr));
  EXPECT_EQ(0u, none->SetDataValue(L"a", &text, 0)) << "attempted";
}

TEST_F(PrintDataCacheProviderTest, NeverWritesAnInteger) {
  const auto cache = Cache();
  for (const wchar_t* const integer : {L"i:0", L"i:-1", L"i:65536", L"i:2147483647"}) {
    const _variant_t value = ValueOf(integer);
    EXPECT_EQ(0u, cache->SetDataValue(L"A", &value, 0)) << integer;
  }
  CachedValueMap values;
  values[L"A"].value = ValueOf(L"i:42");
  values[L"B"].value = L"text";
  const TraceRecorder recorder(kTraceInfo);
  EXPECT_EQ(0u, cache->SetDataValues(&values));
  EXPECT_EQ(
      L"16 Corvane::PrintDataCacheProvider::RegistryWrite: Printer Registry writing failed with "
      L"the "
      L"error = 998 \n",
      recorder.Text());
  EXPECT_EQ(L"<none>", Kept(L"A"));
  EXPECT_EQ(L"<none>", Kept(L"A.Expires"));
  EXPECT_EQ(L"text", Kept(L"B"));
  EXPECT_EQ(L"0", Kept(L"B.Expires"));
}

}  // namespace
}  // namespace Corvane::Test
