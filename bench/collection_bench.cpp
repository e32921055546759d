// A warm value from a data collection, beside what it cannot do without. All are asked by the
// name's text, as a client has it (const wchar_t*), and give a copy of the value.
//
//   BareMapLookup        std::map<std::wstring, std::wstring>::find, and a copy of the text
//   BareMapLookupByView  the same with a transparent comparison, which saves the key's string
//   StoredValue          DataCollection::GetValue of a fetched value that never goes stale
//   StoredValueAged      the same for a value with a lifespan, which takes a look at the clock
//
// What an idle collection costs, over the recorded example device and its specification:
//
//   MakeCollection       load the specification, probe the device, take the static items; then
//                        release it all. The counter "heap_bytes" is what one collection holds,
//                        that has not been asked for a value yet.
//
// Store and maps hold the same 100 names of 16 or 17 characters and values of 12. Tracing is off.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "corvane/corvane.h"
#include "corvane/handles.h"
#include "host/recorded/recorded_address.h"
#include "tests/support/temp_folder.h"

namespace {

using Corvane::RefPtr;

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
    m_address = RefPtr<Corvane::Address>(Corvane::Host::CreateRecordedAddress(m_folder.Path()));
    CreateDataCollectionFromXML(m_address.Get(), std::wstring(map.begin(), map.end()).c_str(),
                                m_collection.Receive(), nullptr);
    for (int i = 0; i < kValues; ++i) Has(NameOf(i));
  }
  bool Has(const std::wstring& name) const {
    Corvane::UniqueVariant value;
    return m_collection->GetValue(name.c_str(), value.Receive()) == S_OK;
  }

 private:
  Corvane::Test::TempFolder m_folder;
  RefPtr<Corvane::Address> m_address;
  RefPtr<Corvane::DataCollection> m_collection;
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
  for (auto _ : state) {
    if (!collection.Has(names[next++ % names.size()])) {
      state.SkipWithError("a value is missing");
      break;
    }
  }
}
void StoredValue(benchmark::State& state) { Query(state, "0"); }
void StoredValueAged(benchmark::State& state) { Query(state, "36000"); }
BENCHMARK(StoredValue);
BENCHMARK(StoredValueAged);

using Collection = RefPtr<Corvane::DataCollection>;

Collection Make(Corvane::Address* address) {
  Collection collection;
  CreateDataCollectionFromFile(address, CORVANE_EXAMPLES L"/office-printer.xml",
                               collection.Receive(), nullptr);
  return collection;
}

std::size_t HeapBytes() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

void MakeCollection(benchmark::State& state) {
  constexpr std::size_t kMany = 100;
  CoInitialize(nullptr);
  const RefPtr<Corvane::Address> address(
      Corvane::Host::CreateRecordedAddress(CORVANE_EXAMPLES L"/recorded/office-printer"));
  if (!Make(address.Get())) state.SkipWithError("no collection");
  {
    std::vector<Collection> many(kMany);
    const std::size_t before = HeapBytes();
    for (Collection& collection : many) collection = Make(address.Get());
    state.counters["heap_bytes"] = static_cast<double>(HeapBytes() - before) / kMany;
  }
  for (auto _ : state) Make(address.Get());
}
BENCHMARK(MakeCollection);

}  // namespace

BENCHMARK_MAIN();
