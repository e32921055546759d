#include "cache/print_data_cache_provider.h"

#include "corvane/handles.h"
#include "tests/support/dom.h"
#include "tests/support/test_printer.h"
#include "tests/support/test_store.h"
#include "tests/support/trace_recorder.h"

namespace Corvane::Test {
namespace {

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
