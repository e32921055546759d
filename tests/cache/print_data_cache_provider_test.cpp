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

TEST_F(PrintDataCacheProviderTest, KnowsNothingOfAPrinterWithoutData) {
  EXPECT_EQ(L"<none>", Kept(L"a"));
  const auto none = RefPtr<ICacheProvider>::Adopt(CreatePrintDataCacheProvider(nullptr));
  const _variant_t value(L"x");
  EXPECT_EQ(0u, none->SetDataValue(L"a", &value, 0)) << "attempted";
}

TEST_F(PrintDataCacheProviderTest, WritesWhatTheNextObjectReads) {
  const auto cache = Cache();
  _variant_t null;
  null.vt = VT_NULL;
  const _variant_t text(L"420\u00e4");
  EXPECT_EQ(1u, cache->SetDataValue(L"p:Model", &null, 5));
  EXPECT_EQ(L"<none>", Kept(L"p:Model.Expires"));
  EXPECT_EQ(1u, cache->SetDataValue(nullptr, &text, 5));
  EXPECT_EQ(0u, cache->SetDataValue(L"p:Model", &text, 5));
  _variant_t value;
  EXPECT_EQ(1u, cache->GetDataValue(L"p:Model", &value)) << "by its own object";
  EXPECT_EQ(L"420\u00e4", Kept(L"p:Model"));
  EXPECT_EQ(L"5", Kept(L"p:Model.Expires"));
}

TEST_F(PrintDataCacheProviderTest, NeverWritesAnInteger) {
  const auto cache = Cache();
  for (const long integer : {0L, -1L, 65536L, 0x400000L, 0x7FFE0000L, 0x7FFFFFFFL}) {
    const _variant_t value(integer, VT_I4);
    EXPECT_EQ(0u, cache->SetDataValue(L"A", &value, 0)) << integer;
  }
  CachedValueMap values;
  values[L"A"].value = _variant_t(42L, VT_I4);
  values[L"B"].value = L"text";
  const TraceRecorder recorder(kTraceInfo);
  EXPECT_EQ(0u, cache->SetDataValues(&values));
  const auto lines = recorder.Lines();
  ASSERT_EQ(1u, lines.size());
  EXPECT_EQ(L"Corvane::PrintDataCacheProvider::RegistryWrite", lines[0].function);
  EXPECT_EQ(L"Printer Registry writing failed with the error = 998 ", lines[0].message);
  EXPECT_EQ(L"<none>", Kept(L"A"));
  EXPECT_EQ(L"<none>", Kept(L"A.Expires"));
  EXPECT_EQ(L"text", Kept(L"B"));
  EXPECT_EQ(L"0", Kept(L"B.Expires"));
}

}  // namespace
}  // namespace Corvane::Test
