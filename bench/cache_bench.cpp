// Values that outlive the run, beside what a program would do with SQLite itself: the same 2,000
// rows (1,000 values of 24 characters, 1,000 companions), the same journal and synchronisation, an
// open database, prepared statements, one transaction.
//
//   BareSqliteWrite   2,000 rows replaced in one transaction
//   CacheWrite        ICacheProvider::SetDataValues of the registry cache: key opened and closed
//   too PrinterWrite      the same of the printer-data cache BareSqliteRead    2,000 rows read
//   CacheLoad         PopulateFromRegistry: key opened, values paired, checked and converted
//   PrinterLoad       the printer-data cache made, and the same
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

// Of an even run and an odd one.
struct BothRuns {
  CachedValueMap even = Values(0);
  CachedValueMap odd = Values(1);
  const CachedValueMap* operator[](int run) const { return run % 2 == 0 ? &even : &odd; }
};

// A folder with a store and a bare database of its own.
// A folder with a store and a bare database of its own.
class Databases {
 public:
  Databases() {
    setenv("CORVANE_STORE", (m_folder.Path() / "store.db").c_str(), 1);
    sqlite3_open((m_folder.Path() / "bare.db").c_str(), &m_bare);
    Run("PRAGMA journal_mode=WAL");
    Run("PRAGMA synchronous=NORMAL");
    Run("PRAGMA wal_autocheckpoint=256");
    Run("CREATE TABLE v(node INTEGER NOT NULL, folded TEXT NOT NULL, name TEXT NOT NULL, "
        "type INTEGER NOT NULL, data BLOB NOT NULL, PRIMARY KEY(node, folded)) "
        "STRICT, WITHOUT ROWID");
    sqlite3_prepare_v2(m_bare, "INSERT OR REPLACE INTO v VALUES(1,?,?,?,?)", -1, &m_insert,
                       nullptr);
    sqlite3_prepare_v2(m_bare, "SELECT name, type, data FROM v WHERE node = 1 ORDER BY folded", -1,
                       &m_select, nullptr);
    for (int i = 0; i < kValues; ++i) {
      const std::wstring wide = NameOf(i);
      for (const char* const ending : {"", ".Expires"}) {
        Row row{std::string(wide.begin(), wide.end()) + ending, {}, TextOf(i, 0), TextOf(i, 1)};
        if (*ending) row.even = row.odd = L"1";
        row.folded = row.name;
        for (char& c : row.folded) c = static_cast<char>(std::toupper(c));
        m_rows.push_back(std::move(row));
      }
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
      const std::wstring& text = run % 2 == 0 ? row.even : row.odd;
      Bind(1, row.folded);
      Bind(2, row.name);
      sqlite3_bind_int(m_insert, 3, 1);
      sqlite3_bind_blob(m_insert, 4, text.c_str(),
                        static_cast<int>((text.size() + 1) * sizeof(wchar_t)), SQLITE_STATIC);
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
    std::wstring even;
    std::wstring odd;
  };

  void Bind(int parameter, const std::string& text) const {
    sqlite3_bind_text(m_insert, parameter, text.data(), static_cast<int>(text.size()),
                      SQLITE_STATIC);
  }

  Corvane::Test::TempFolder m_folder;
  sqlite3* m_bare = nullptr;
  sqlite3_stmt* m_insert = nullptr;
  sqlite3_stmt* m_select = nullptr;
  std::vector<Row> m_rows;
};

RefPtr<Corvane::RegCacheProvider> Registry() {
  auto cache = RefPtr<Corvane::RegCacheProvider>::Share(
      new Corvane::RegCacheProvider(L"Software\\Corvane bench"));
  cache->SetDevice(L"SN1", L"OID");
  return cache;
}

class Printer {
 public:
  Printer() {
    std::wstring name = L"bench";
    PRINTER_DEFAULTSW defaults = {nullptr, nullptr, PRINTER_ALL_ACCESS};
    OpenPrinterW(name.data(), &m_printer, &defaults);
  }
  ~Printer() { ClosePrinter(m_printer); }
  RefPtr<Corvane::PrintDataCacheProvider> Cache() const {
    return RefPtr<Corvane::PrintDataCacheProvider>::Share(
        new Corvane::PrintDataCacheProvider(m_printer));
  }

 private:
  HANDLE m_printer = nullptr;
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

void BareSqlite(benchmark::State& state) {
  const Databases databases;
  databases.Write(1);
  int run = 0;
  for (auto _ : state) {
    databases.Run("BEGIN IMMEDIATE");
    benchmark::DoNotOptimize(databases.Read());
    databases.Write(run++);
    databases.Run("COMMIT");
  }
}

void BareSqliteWrite(benchmark::State& state) {
  const Databases databases;
  int run = 0;
  for (auto _ : state) {
    databases.Run("BEGIN IMMEDIATE");
    databases.Write(run++);
    databases.Run("COMMIT");
  }
}

void BareSqliteRead(benchmark::State& state) {
  const Databases databases;
  databases.Write(0);
  for (auto _ : state) benchmark::DoNotOptimize(databases.Read());
}

// What the two caches are made from.
struct InRegistry {
  auto Make() const { return Registry(); }
};
struct InPrinter {
  auto Make() const { return printer.Cache(); }
  Printer printer;
};

template <typename Cache>
void Load(benchmark::State& state, const Cache& cache, Corvane::DataMapSpec* spec) {
  CachedValueMap loaded;
  cache->PopulateFromRegistry(spec, &loaded);
  if (loaded.size() != kValues) state.SkipWithError("values are missing");
}

template <typename Cache>
void Write(benchmark::State& state, const Cache& cache, const CachedValueMap* values) {
  if (cache->SetDataValues(values) != 0) state.SkipWithError("values are not taken");
}

// A run of a client: load, write back. `step` 0 writes what is there.
template <typename Where, int step>
void Run(benchmark::State& state) {
  const Databases databases;
  const Where where;
  const BothRuns values;
  const auto spec = Spec();
  Write(state, where.Make(), values[0]);
  int run = 0;
  for (auto _ : state) {
    const auto cache = where.Make();
    Load(state, cache, spec.Get());
    Write(state, cache, values[run += step]);
  }
}

template <typename Where>
void WriteAlone(benchmark::State& state) {
  const Databases databases;
  const Where where;
  const BothRuns values;
  const auto cache = where.Make();
  int run = 0;
  for (auto _ : state) Write(state, cache, values[run++]);
}

template <typename Where>
void LoadAlone(benchmark::State& state) {
  const Databases databases;
  const Where where;
  const BothRuns values;
  const auto spec = Spec();
  Write(state, where.Make(), values[0]);
  for (auto _ : state) Load(state, where.Make(), spec.Get());
}

#define MEASURE(function, name) BENCHMARK(function)->Name(name)->Unit(benchmark::kMicrosecond)
MEASURE(BareSqlite, "BareSqlite");
MEASURE((Run<InRegistry, 1>), "CacheRun");
MEASURE((Run<InPrinter, 1>), "PrinterRun");
MEASURE((Run<InRegistry, 0>), "CacheRunUnchanged");
MEASURE(BareSqliteWrite, "BareSqliteWrite");
MEASURE(WriteAlone<InRegistry>, "CacheWrite");
MEASURE(WriteAlone<InPrinter>, "PrinterWrite");
MEASURE(BareSqliteRead, "BareSqliteRead");
MEASURE(LoadAlone<InRegistry>, "CacheLoad");
MEASURE(LoadAlone<InPrinter>, "PrinterLoad");

}  // namespace

BENCHMARK_MAIN();
