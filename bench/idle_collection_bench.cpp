// What an idle data collection costs, over the recorded example device and its specification.
//
//   MakeCollection   load the specification, probe the device, take the static items; then release
//   it all.
//                    The counter "heap_bytes" is what one collection holds, that has not been asked
//                    for a value yet.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <vector>

#include "corvane/corvane.h"
#include "host/recorded/recorded_address.h"

namespace {

Corvane::DataCollection* Make(Corvane::Address* address) {
  Corvane::DataCollection* collection = nullptr;
  CreateDataCollectionFromFile(address, CORVANE_EXAMPLES L"/office-printer.xml", &collection,
                               nullptr);
  return collection;
}

std::size_t HeapBytes() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

void MakeCollection(benchmark::State& state) {
  constexpr std::size_t kMany = 100;
  CoInitialize(nullptr);
  Corvane::Address* const address =
      Corvane::Host::CreateRecordedAddress(CORVANE_EXAMPLES L"/recorded/office-printer");
  if (Corvane::DataCollection* const warm = Make(address)) {
    warm->Dispose();
  } else {
    state.SkipWithError("no collection");
  }

  std::vector<Corvane::DataCollection*> many(kMany);
  const std::size_t before = HeapBytes();
  for (auto& collection : many) collection = Make(address);
  state.counters["heap_bytes"] = static_cast<double>(HeapBytes() - before) / kMany;
  for (auto* const collection : many) {
    if (collection) collection->Dispose();
  }

  for (auto _ : state) {
    if (Corvane::DataCollection* const collection = Make(address)) collection->Dispose();
  }
  address->Dispose();
  CoUninitialize();
}
BENCHMARK(MakeCollection);

}  // namespace

BENCHMARK_MAIN();
