// A warm value from a data collection, beside what it cannot do without. All are asked by the
// name's text, as a client has it (const wchar_t*), and give a copy of the value.
//
//   BareMapLookup        std::map<std::wstring, std::wstring>::find, and a copy of the text
//   BareMapLookupByView  the same with a transparent comparison, which saves the key's string
//   StoredValue          DataCollection::GetValue of a fetched value that never goes stale
//   StoredValueAged      the same for a value with a lifespan, which takes a look at the clock
//
// Store and maps hold the same 100 names of 16 or 17 characters and values of 12. Tracing is off.
#include <benchmark/benchmark.h>

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "corvane/corvane.h"
#include "host/recorded/recorded_address.h"
#include "tests/support/temp_folder.h"

namespace {

constexpr int kValues = 100;

std::wstring NameOf(int i) { return L"ConsumableLevel" + std::to_wstring(i); }
std::wstring TextOf(int i) { return L"Level is " + std::to_wstring(100 + i); }

// A collection over a recorded device, every value already fetched.
class WarmCollection {
 public:
  explicit WarmCollection(const char* lifespan) {
    std::string page = "<p><ProductSerialNumber>S</ProductSerialNumber>";
    std::string map = "<DataMaps><XMLDataMap Protocol='PLSXML'>";
    for (int i = 0; i < kValues; ++i) {
      const std::string n = std::to_string(i);
      page += "<v" + n + ">Level is " + std::to_string(100 + i) + "</v" + n + ">";
      map += "<DataItem Name='ConsumableLevel" + n + "' LifeSpan='" + lifespan +
             "' URI='/zq/device/product_information.xml' XPath='//v" + n + "'/>";
    }
    map += "</XMLDataMap></DataMaps>";
    m_folder.Write("80/zq/device/product_information.xml", page + "</p>");
    CoInitialize(nullptr);
    m_address = Corvane::Host::CreateRecordedAddress(m_folder.Path());
    CreateDataCollectionFromXML(m_address, std::wstring(map.begin(), map.end()).c_str(),
                                &m_collection, nullptr);
    VARIANT value;
    VariantInit(&value);
    for (int i = 0; i < kValues; ++i) m_collection->GetValue(NameOf(i).c_str(), &value);
    VariantClear(&value);
  }
  ~WarmCollection() {
    m_collection->Dispose();
    m_address->Dispose();
    CoUninitialize();
  }
  Corvane::DataCollection* operator->() const { return m_collection; }

 private:
  Corvane::Test::TempFolder m_folder;
  Corvane::Address* m_address = nullptr;
  Corvane::DataCollection* m_collection = nullptr;
};

std::vector<std::wstring> Names() {
  std::vector<std::wstring> names;
  for (int i = 0; i < kValues; ++i) names.push_back(NameOf(i * 37 % kValues));
  return names;
}

template <typename Less, typename Key>
void Look(benchmark::State& state) {
  std::map<std::wstring, std::wstring, Less> values;
  for (int i = 0; i < kValues; ++i) values[NameOf(i)] = TextOf(i);
  const auto names = Names();
  std::size_t next = 0;
  for (auto _ : state) {
    const wchar_t* const name = names[next++ % names.size()].c_str();
    std::wstring copy = values.find(Key(name))->second;
    benchmark::DoNotOptimize(copy);
  }
}
void BareMapLookup(benchmark::State& state) { Look<std::less<std::wstring>, std::wstring>(state); }
void BareMapLookupByView(benchmark::State& state) { Look<std::less<>, std::wstring_view>(state); }
BENCHMARK(BareMapLookup);
BENCHMARK(BareMapLookupByView);

void Query(benchmark::State& state, const char* lifespan) {
  const WarmCollection collection(lifespan);
  const auto names = Names();
  std::size_t next = 0;
  VARIANT value;
  VariantInit(&value);
  for (auto _ : state) {
    if (collection->GetValue(names[next++ % names.size()].c_str(), &value) != S_OK) {
      state.SkipWithError("a value is missing");
      break;
    }
    VariantClear(&value);
  }
}
void StoredValue(benchmark::State& state) { Query(state, "0"); }
void StoredValueAged(benchmark::State& state) { Query(state, "36000"); }
BENCHMARK(StoredValue);
BENCHMARK(StoredValueAged);

}  // namespace

BENCHMARK_MAIN();
