// The IPP codec beside libcups: a Get-Printer-Attributes request of ten attributes, and the answer
// of a printer (data/printer_attributes.ipp). Both sides make the same bytes of the request.
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

// --- This library.

void SetUp(IPPOperations* operations) {
  // The encoder puts "printer-name" before what is asked for.
  static const std::string names = [] {
    std::string list;
    for (const char* name : kRequested) list.append(list.empty() ? "" : ",").append(name);
    return list.substr(list.find(',') + 1);
  }();
  operations->SetResourceURI(kUri);
  operations->SetAttributeName(names.c_str());
}

bool Encode(IPPOperations* operations, char* body, int* length) {
  return operations->FormIPPRequestBasedOnOperation(
             body, Corvane::IPPOperation::kGetPrinterAttributes, length, nullptr) == S_OK;
}

bool Decode(const std::string& answer, IPPOperations* operations) {
  return operations->ParseIPPContent(reinterpret_cast<const unsigned char*>(answer.data()),
                                     static_cast<int>(answer.size()), nullptr) == S_OK;
}

// --- libcups.

struct IppDelete {
  void operator()(ipp_t* ipp) const { ippDelete(ipp); }
};
using UniqueIpp = std::unique_ptr<ipp_t, IppDelete>;

struct Body {
  char bytes[Corvane::kIPPRequestSize];
  std::size_t length = 0;
};

ssize_t Append(void* context, ipp_uchar_t* bytes, std::size_t count) {
  auto* const body = static_cast<Body*>(context);
  if (count > sizeof(body->bytes) - body->length) return -1;
  std::memcpy(body->bytes + body->length, bytes, count);
  body->length += count;
  return static_cast<ssize_t>(count);
}

bool CupsEncode(Body* body) {
  const UniqueIpp request(ippNewRequest(IPP_OP_GET_PRINTER_ATTRIBUTES));
  ippSetRequestId(request.get(), 100);
  ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr, kUri);
  ippAddStrings(request.get(), IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "requested-attributes",
                static_cast<int>(std::size(kRequested)), nullptr, kRequested);
  body->length = 0;
  return ippWriteIO(body, Append, 1, nullptr, request.get()) == IPP_STATE_DATA;
}

ssize_t Take(void* context, ipp_uchar_t* bytes, std::size_t count) {
  auto* const rest = static_cast<std::string_view*>(context);
  count = rest->copy(reinterpret_cast<char*>(bytes), count);
  rest->remove_prefix(count);
  return static_cast<ssize_t>(count);
}

UniqueIpp CupsDecode(std::string_view answer) {
  UniqueIpp ipp(ippNew());
  if (ippReadIO(&answer, Take, 1, nullptr, ipp.get()) != IPP_STATE_DATA) ipp.reset();
  return ipp;
}

bool CupsRead(ipp_t* ipp, const char* name) {
  ipp_attribute_t* const attribute = ippFindAttribute(ipp, name, IPP_TAG_ZERO);
  for (int i = 0; i < ippGetCount(attribute); ++i) {
    const char* const text = ippGetString(attribute, i, nullptr);
    const bool isBoolean = ippGetValueTag(attribute) == IPP_TAG_BOOLEAN;
    std::string copy = text ? std::string(text)
                            : std::to_string(isBoolean ? ippGetBoolean(attribute, i)
                                                       : ippGetInteger(attribute, i));
    benchmark::DoNotOptimize(copy.data());
  }
  return attribute != nullptr;
}

// --- The benchmarks.

void CorvaneEncode(benchmark::State& state) {
  IPPOperations operations(nullptr);
  SetUp(&operations);
  char body[Corvane::kIPPRequestSize];
  int length = 0;
  Body wanted;
  if (!CupsEncode(&wanted) || !Encode(&operations, body, &length) ||
      std::string_view(body, static_cast<std::size_t>(length)) !=
          std::string_view(wanted.bytes, wanted.length)) {
    state.SkipWithError("the bodies differ");
  }
  for (auto _ : state) {
    Encode(&operations, body, &length);
    benchmark::DoNotOptimize(body);
  }
}
void CorvaneEncodeAnew(benchmark::State& state) {
  char body[Corvane::kIPPRequestSize];
  int length = 0;
  for (auto _ : state) {
    IPPOperations operations(nullptr);
    SetUp(&operations);
    Encode(&operations, body, &length);
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

void CorvaneDecode(benchmark::State& state, bool reads) {
  const std::string answer = Answer();
  for (auto _ : state) {
    IPPOperations operations(nullptr);
    bool succeeded = Decode(answer, &operations);
    for (const char* name : kRead) {
      if (!reads) break;
      _variant_t value;
      succeeded = operations.GetValueFromIPPMap(name, &value) && succeeded;
      benchmark::DoNotOptimize(value);
    }
    if (!succeeded) state.SkipWithError("no answer, or a value is missing");
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(answer.size()));
}
void CupsDecodes(benchmark::State& state, bool reads) {
  const std::string answer = Answer();
  for (auto _ : state) {
    const UniqueIpp ipp = CupsDecode(answer);
    bool succeeded = ipp != nullptr;
    for (const char* name : kRead) {
      if (!reads) break;
      succeeded = CupsRead(ipp.get(), name) && succeeded;
    }
    if (!succeeded) state.SkipWithError("no answer, or a value is missing");
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(answer.size()));
}
BENCHMARK_CAPTURE(CorvaneDecode, corvane, false)->Name("Decode/corvane");
BENCHMARK_CAPTURE(CupsDecodes, libcups, false)->Name("Decode/libcups");
BENCHMARK_CAPTURE(CorvaneDecode, corvane, true)->Name("DecodeAndRead/corvane");
BENCHMARK_CAPTURE(CupsDecodes, libcups, true)->Name("DecodeAndRead/libcups");

void CorvaneGetValue(benchmark::State& state) {
  auto operations = std::make_unique<IPPOperations>(nullptr);
  if (!Decode(Answer(), operations.get())) state.SkipWithError("no answer");
  const auto provider = Corvane::RefPtr<Corvane::IPPProviderImpl>::Share(
      new Corvane::IPPProviderImpl(nullptr, std::move(operations)));
  for (auto _ : state) {
    for (const char* name : kRead) {
      _variant_t value;
      if (provider->GetValue(name, &value) != S_OK) state.SkipWithError("a value is missing");
      benchmark::DoNotOptimize(value);
    }
  }
}
void CupsGetValue(benchmark::State& state) {
  const std::string answer = Answer();
  const UniqueIpp ipp = CupsDecode(answer);
  for (auto _ : state) {
    for (const char* name : kRead) {
      if (!CupsRead(ipp.get(), name)) state.SkipWithError("a value is missing");
    }
  }
}
BENCHMARK(CorvaneGetValue)->Name("GetValue/corvane");
BENCHMARK(CupsGetValue)->Name("GetValue/libcups");

}  // namespace

BENCHMARK_MAIN();
