// The IPP codec beside libcups: a Get-Printer-Attributes request of ten attributes, and the answer
// of a printer (tests/data/ipp/printer_attributes.ipp). Both sides make the same bytes of the
// request.
//
//   Encode/corvane        FormIPPRequestBasedOnOperation, settings made before
//   EncodeAnew/corvane    the same with the object and its settings
//   Encode/libcups        ippNewRequest, ippAddString(s), ippWriteIO to memory, ippDelete
//   Decode/...            ParseIPPContent with a new object; ippNew, ippReadIO, ippDelete
//   DecodeAndRead/...     the same and 20 values by name, as VARIANTs and as std::strings: texts of
//                         this decoder are made when somebody asks for them
//   GetValue/corvane      those 20 by IPPProvider::GetValue, of a printer that has told them
//   GetValue/libcups      ippFindAttribute and a std::string of each, of a decoded answer
#include <benchmark/benchmark.h>
#include <cups/ipp.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>

#include "ipp/ipp_operations.h"
#include "ipp/provider/ipp_provider_impl.h"
#include "ipp/wire/codes.h"

namespace {

using Corvane::IPPOperations;

constexpr char kUri[] = "ipp://printer.example.com:631/ipp/print";
// The encoder puts "printer-name" before what is asked for.
constexpr char kAsked[] =
    "printer-info,printer-make-and-model,printer-state,printer-state-reasons,"
    "printer-is-accepting-jobs,media-ready,media-supported,document-format-supported,"
    "sides-supported";
constexpr const char* kRequested[] = {
    "printer-name",   "printer-info",          "printer-make-and-model",
    "printer-state",  "printer-state-reasons", "printer-is-accepting-jobs",
    "media-ready",    "media-supported",       "document-format-supported",
    "sides-supported"};
constexpr const char* kRead[] = {
    "printer-name",         "printer-info",     "printer-location",
    "printer-more-info",    "printer-uuid",     "printer-make-and-model",
    "printer-device-id",    "printer-state",    "printer-state-reasons",
    "printer-up-time",      "queued-job-count", "printer-is-accepting-jobs",
    "color-supported",      "copies-default",   "media-default",
    "media-ready",          "media-supported",  "print-quality-default",
    "operations-supported", "sides-supported"};

struct Body {
  char bytes[Corvane::kIPPRequestSize];
  int length = 0;
  std::string_view View() const { return {bytes, static_cast<std::size_t>(length)}; }
};

// This library.

void SetUp(IPPOperations* operations) {
  operations->SetResourceURI(kUri);
  operations->SetAttributeName(kAsked);
}

bool Encode(IPPOperations* operations, Body* body) {
  constexpr int kOperation = Corvane::IPPOperation::kGetPrinterAttributes;
  return operations->FormIPPRequestBasedOnOperation(body->bytes, kOperation, &body->length,
                                                    nullptr) == S_OK;
}

bool Decode(const std::string& answer, IPPOperations* operations) {
  return operations->ParseIPPContent(reinterpret_cast<const unsigned char*>(answer.data()),
                                     static_cast<int>(answer.size()), nullptr) == S_OK;
}

// libcups.

using UniqueIpp = std::unique_ptr<ipp_t, decltype(&ippDelete)>;

void CupsEncode(Body* body) {
  const UniqueIpp request(ippNewRequest(IPP_OP_GET_PRINTER_ATTRIBUTES), &ippDelete);
  ippSetRequestId(request.get(), 100);
  ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr, kUri);
  ippAddStrings(request.get(), IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "requested-attributes",
                static_cast<int>(std::size(kRequested)), nullptr, kRequested);
  const ipp_iocb_t append = [](void* to, ipp_uchar_t* bytes, std::size_t count) {
    auto* const written = static_cast<Body*>(to);
    std::memcpy(written->bytes + written->length, bytes, count);
    written->length += static_cast<int>(count);
    return static_cast<ssize_t>(count);
  };
  body->length = 0;
  ippWriteIO(body, append, 1, nullptr, request.get());
}

UniqueIpp CupsDecode(std::string_view answer) {
  UniqueIpp ipp(ippNew(), &ippDelete);
  const ipp_iocb_t take = [](void* from, ipp_uchar_t* bytes, std::size_t count) {
    auto* const rest = static_cast<std::string_view*>(from);
    count = rest->copy(reinterpret_cast<char*>(bytes), count);
    rest->remove_prefix(count);
    return static_cast<ssize_t>(count);
  };
  if (ippReadIO(&answer, take, 1, nullptr, ipp.get()) != IPP_STATE_DATA) ipp.reset();
  return ipp;
}

bool CupsRead(ipp_t* ipp) {
  for (const char* name : kRead) {
    ipp_attribute_t* const attribute = ippFindAttribute(ipp, name, IPP_TAG_ZERO);
    if (!attribute) return false;
    for (int i = 0; i < ippGetCount(attribute); ++i) {
      const char* const text = ippGetString(attribute, i, nullptr);
      const bool isBoolean = ippGetValueTag(attribute) == IPP_TAG_BOOLEAN;
      std::string copy = text ? std::string(text)
                              : std::to_string(isBoolean ? ippGetBoolean(attribute, i)
                                                         : ippGetInteger(attribute, i));
      benchmark::DoNotOptimize(copy.data());
    }
  }
  return true;
}

// The benchmarks.

void Expect(benchmark::State& state, bool holds) {
  if (!holds) state.SkipWithError("the bodies differ, or there is no answer, or no value");
}

void CorvaneEncode(benchmark::State& state) {
  IPPOperations operations(nullptr);
  SetUp(&operations);
  Body body;
  Body wanted;
  CupsEncode(&wanted);
  Expect(state, Encode(&operations, &body) && body.View() == wanted.View());
  for (auto _ : state) {
    Encode(&operations, &body);
    benchmark::DoNotOptimize(body);
  }
}
void CorvaneEncodeAnew(benchmark::State& state) {
  Body body;
  for (auto _ : state) {
    IPPOperations operations(nullptr);
    SetUp(&operations);
    Encode(&operations, &body);
    benchmark::DoNotOptimize(body);
  }
}
void CupsEncodes(benchmark::State& state) {
  Body body;
  for (auto _ : state) {
    CupsEncode(&body);
    benchmark::DoNotOptimize(body);
  }
}
BENCHMARK(CorvaneEncode)->Name("Encode/corvane");
BENCHMARK(CorvaneEncodeAnew)->Name("EncodeAnew/corvane");
BENCHMARK(CupsEncodes)->Name("Encode/libcups");

std::string Answer() {
  std::ifstream file(CORVANE_BENCH_DATA "/printer_attributes.ipp", std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

template <typename Get>
bool CorvaneRead(Get get) {
  bool succeeded = true;
  for (const char* name : kRead) {
    _variant_t value;
    succeeded = get(name, &value) && succeeded;
    benchmark::DoNotOptimize(value);
  }
  return succeeded;
}

void CorvaneDecode(benchmark::State& state, bool reads) {
  const std::string answer = Answer();
  for (auto _ : state) {
    IPPOperations operations(nullptr);
    const auto get = [&](const char* name, VARIANT* value) {
      return operations.GetValueFromIPPMap(name, value);
    };
    Expect(state, Decode(answer, &operations) && (!reads || CorvaneRead(get)));
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(answer.size()));
}
void CupsDecodes(benchmark::State& state, bool reads) {
  const std::string answer = Answer();
  for (auto _ : state) {
    const UniqueIpp ipp = CupsDecode(answer);
    Expect(state, ipp && (!reads || CupsRead(ipp.get())));
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(answer.size()));
}
BENCHMARK_CAPTURE(CorvaneDecode, corvane, false)->Name("Decode/corvane");
BENCHMARK_CAPTURE(CupsDecodes, libcups, false)->Name("Decode/libcups");
BENCHMARK_CAPTURE(CorvaneDecode, corvane, true)->Name("DecodeAndRead/corvane");
BENCHMARK_CAPTURE(CupsDecodes, libcups, true)->Name("DecodeAndRead/libcups");

void CorvaneGetValue(benchmark::State& state) {
  auto operations = std::make_unique<IPPOperations>(nullptr);
  Expect(state, Decode(Answer(), operations.get()));
  const auto provider = Corvane::RefPtr<Corvane::IPPProviderImpl>::Share(
      new Corvane::IPPProviderImpl(nullptr, std::move(operations)));
  const auto get = [&](const char* name, VARIANT* value) {
    return provider->GetValue(name, value) == S_OK;
  };
  for (auto _ : state) Expect(state, CorvaneRead(get));
}
void CupsGetValue(benchmark::State& state) {
  const std::string answer = Answer();
  const UniqueIpp ipp = CupsDecode(answer);
  for (auto _ : state) Expect(state, CupsRead(ipp.get()));
}
BENCHMARK(CorvaneGetValue)->Name("GetValue/corvane");
BENCHMARK(CupsGetValue)->Name("GetValue/libcups");

}  // namespace

BENCHMARK_MAIN();
