// Values that outlive the run, beside what a program would do with SQLite itself: the same 2,000
// rows (1,000 values of 24 characters, 1,000 companions), the same journal and synchronisation, an
// open database, prepared statements, one transaction.
//
//   BareSqlite         2,000 rows read and replaced in one transaction; BareSqliteWrite replaces,
//                      BareSqliteRead reads
//   CacheRun           a run of a client: the registry cache made, loaded and written back;
//                      CacheRunUnchanged writes what is there
//   CacheWrite         ICacheProvider::SetDataValues alone: key opened and closed, too
//   CacheLoad          PopulateFromRegistry alone: key opened, values paired, checked and converted
//   Printer...         the same of the printer-data cache
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <stdlib.h>

#include <cctype>
#include <string>
#include <utility>
#include <vector>

#include "cache/print_data_cache_provider.h"
#include "cache/reg_cache_provider.h"
#include "corvane/handles.h"
#include "corvane/oid_data_item_spec.h"
#include "tests/support/temp_folder.h"

namespace {

using Corvane::CachedValueMap;
using Corvane::RefPtr;

constexpr int kValues = 1000;

std::wstring NameOf(int i) { return L"consumable:Level" + std::to_wstring(1000 + i); }
// Of even and odd runs.
std::wstring TextOf(int i, int run) {
  return L"Level of supply is " + std::to_wstring(10000 + 2000 * (run % 2) + i);
}

CachedValueMap Values(int run) {
  CachedValueMap values;
  for (int i = 0; i < kValues; ++i) values[NameOf(i)] = {_variant_t(TextOf(i, run).c_str()), 1, 0};
  return values;
}

// A folder with a store and a bare database of its own.
class Databases {
 public:
  Databases() {
    setenv("CORVANE_STORE", (m_folder.Path() / "store.db").c_str(), 1);
    sqlite3_open((m_folder.Path() / "bare.db").c_str(), &m_bare);
    Run("PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL; PRAGMA wal_autocheckpoint=256; "
        "CREATE TABLE v(node INTEGER NOT NULL, folded TEXT NOT NULL, name TEXT NOT NULL, "
        "type INTEGER NOT NULL, data BLOB NOT NULL, PRIMARY KEY(node, folded)) "
        "STRICT, WITHOUT ROWID");
    sqlite3_prepare_v2(m_bare, "INSERT OR REPLACE INTO v VALUES(1,?,?,1,?)", -1, &m_insert,
                       nullptr);
    sqlite3_prepare_v2(m_bare, "SELECT name, type, data FROM v WHERE node = 1 ORDER BY folded", -1,
                       &m_select, nullptr);
    for (int i = 0; i < kValues; ++i) {
      const std::wstring wide = NameOf(i);
      const std::string name(wide.begin(), wide.end());
      m_rows.push_back({name, Folded(name), {TextOf(i, 0), TextOf(i, 1)}});
      m_rows.push_back({name + ".Expires", Folded(name + ".Expires"), {L"1", L"1"}});
    }
  }
  ~Databases() {
    sqlite3_finalize(m_insert);
    sqlite3_finalize(m_select);
    sqlite3_close(m_bare);
  }

  void Run(const char* sql) const { sqlite3_exec(m_bare, sql, nullptr, nullptr, nullptr); }
  void Write(int run) const {
    for (const Row& row : m_rows) {
      const std::wstring& text = row.texts[run % 2];
      Bind(1, row.folded.data(), row.folded.size(), &sqlite3_bind_text);
      Bind(2, row.name.data(), row.name.size(), &sqlite3_bind_text);
      Bind(3, text.c_str(), (text.size() + 1) * sizeof(wchar_t), &sqlite3_bind_blob);
      sqlite3_step(m_insert);
      sqlite3_reset(m_insert);
    }
  }
  std::size_t Read() const {
    std::size_t bytes = 0;
    while (sqlite3_step(m_select) == SQLITE_ROW) {
      benchmark::DoNotOptimize(sqlite3_column_text(m_select, 0));
      benchmark::DoNotOptimize(sqlite3_column_blob(m_select, 2));
      bytes += static_cast<std::size_t>(sqlite3_column_bytes(m_select, 2));
    }
    sqlite3_reset(m_select);
    return bytes;
  }

 private:
  struct Row {
    std::string name;
    std::string folded;
    std::wstring texts[2];  // of even and odd runs
  };

  static std::string Folded(std::string name) {
    for (char& c : name) c = static_cast<char>(std::toupper(c));
    return name;
  }
  template <typename Data, typename Binding>
  void Bind(int parameter, const Data* data, std::size_t bytes, Binding bind) const {
    bind(m_insert, parameter, data, static_cast<int>(bytes), SQLITE_STATIC);
  }

  Corvane::Test::TempFolder m_folder;
  sqlite3* m_bare = nullptr;
  sqlite3_stmt* m_insert = nullptr;
  sqlite3_stmt* m_select = nullptr;
  std::vector<Row> m_rows;
};

// What the two caches are made from.
struct InRegistry {
  RefPtr<Corvane::RegCacheProvider> Make() const {
    auto cache = RefPtr<Corvane::RegCacheProvider>::Share(
        new Corvane::RegCacheProvider(L"Software\\Corvane bench"));
    cache->SetDevice(L"SN1", L"OID");
    return cache;
  }
};
struct InPrinter {
  InPrinter() {
    std::wstring name = L"bench";
    PRINTER_DEFAULTSW defaults = {nullptr, nullptr, PRINTER_ALL_ACCESS};
    OpenPrinterW(name.data(), printer.Receive(), &defaults);
  }
  RefPtr<Corvane::PrintDataCacheProvider> Make() const {
    return RefPtr<Corvane::PrintDataCacheProvider>::Share(
        new Corvane::PrintDataCacheProvider(printer.Get()));
  }
  Corvane::UniquePrinter printer;
};

// A data map of the values' items, fresh for ever.
RefPtr<Corvane::DataMapSpec> Spec() {
  auto spec = RefPtr<Corvane::DataMapSpec>::Adopt(
      Corvane::DataMapSpec::CreateDataMapSpec(Corvane::DataMapTypeOID));
  for (int i = 0; i < kValues; ++i) {
    const std::wstring name = NameOf(i).substr(std::wstring(L"consumable:").size());
    spec->AddDataItemSpec(name.c_str(),
                          Corvane::OIDDataItemSpec::CreateOIDDataItemSpec(
                              name.c_str(), L"1.3", nullptr, false, L"consumable", 0, nullptr));
  }
  return spec;
}

void BareSqlite(benchmark::State& state, bool reads, bool writes) {
  const Databases databases;
  databases.Write(1);
  int run = 0;
  for (auto _ : state) {
    if (writes) databases.Run("BEGIN IMMEDIATE");
    if (reads) benchmark::DoNotOptimize(databases.Read());
    if (!writes) continue;
    databases.Write(run++);
    databases.Run("COMMIT");
  }
}

// A cache is made for each load. `step` 0 writes what is there.
template <typename Where>
void Cached(benchmark::State& state, bool loads, bool writes, int step) {
  const Databases databases;
  const Where where;
  const CachedValueMap values[] = {Values(0), Values(1)};
  const auto spec = Spec();
  auto cache = where.Make();
  cache->SetDataValues(&values[0]);
  int run = 0;
  for (auto _ : state) {
    CachedValueMap loaded;
    if (loads) {
      cache = where.Make();
      cache->PopulateFromRegistry(spec.Get(), &loaded);
      if (loaded.size() != kValues) state.SkipWithError("values are missing");
    }
    if (!writes) continue;
    run += step;
    if (cache->SetDataValues(&values[run % 2]) != 0) state.SkipWithError("values are not taken");
  }
}

template <typename... Arguments>
void Register(const char* name, Arguments... arguments) {
  benchmark::RegisterBenchmark(name, arguments...)->Unit(benchmark::kMicrosecond);
}

}  // namespace

int main(int argc, char** argv) {
  Register("BareSqlite", BareSqlite, true, true);
  Register("CacheRun", Cached<InRegistry>, true, true, 1);
  Register("PrinterRun", Cached<InPrinter>, true, true, 1);
  Register("CacheRunUnchanged", Cached<InRegistry>, true, true, 0);
  Register("BareSqliteWrite", BareSqlite, false, true);
  Register("CacheWrite", Cached<InRegistry>, false, true, 1);
  Register("PrinterWrite", Cached<InPrinter>, false, true, 1);
  Register("BareSqliteRead", BareSqlite, true, false);
  Register("CacheLoad", Cached<InRegistry>, true, false, 0);
  Register("PrinterLoad", Cached<InPrinter>, true, false, 0);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
