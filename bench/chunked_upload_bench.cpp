// A document of 100 MB sent in chunks to a sink on loopback, which reads it and answers.
//
//   PrintJob/N       IPPOperations over the reference host, in pieces of N bytes
//   Curl/N           a POST of libcurl's own with "Transfer-Encoding: chunked", read by N bytes
//
// The counter "peak_KB" is how much the process's resident memory rose above where it was when the
// upload began; PrintJobOf10MB has it for a tenth of the document.
#include <benchmark/benchmark.h>
#include <curl/curl.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <string>

#include "bench/loopback_sink.h"
#include "corvane/handles.h"
#include "host/network_address.h"
#include "ipp/ipp_operations.h"

namespace {

using Corvane::RefPtr;
using Corvane::Bench::StatusKilobytes;

constexpr std::size_t kDocument = std::size_t{100} << 20;

std::uint16_t g_port = 0;  // the sink's

// From here on the peak counts anew.
long ForgetPeak() {
  std::ofstream("/proc/self/clear_refs") << "5";
  return StatusKilobytes("VmHWM:");
}

void SendDocument(benchmark::State& state, std::size_t document) {
  Corvane::Host::NetworkOptions options;
  options.host = L"127.0.0.1";
  options.portMap = {{631, g_port}};
  const auto address = RefPtr<Corvane::Address>(Corvane::Host::CreateNetworkAddress(options));
  const auto request = RefPtr<Corvane::IPPRequestBase>::Adopt(CreateIPPRequest());
  const std::string piece(static_cast<std::size_t>(state.range(0)), 'x');
  const int size = static_cast<int>(piece.size());
  const long before = ForgetPeak();
  for (auto _ : state) {
    Corvane::IPPOperations operations(address.Get());
    operations.SetResourceURI("/ipp/print");
    Corvane::HTTPResponse* response = nullptr;
    HRESULT result = S_OK;
    for (std::size_t sent = 0; sent < document && result == S_OK; sent += piece.size()) {
      operations.SetPrinterFileBufferContent(piece.data(), size);
      result = operations.SendPrintJobRequest(&response, request.Get(), true, size, nullptr, false);
    }
    if (result == S_OK) {
      result = operations.SendPrintJobRequest(&response, request.Get(), true, 0, nullptr, false);
    }
    if (result != S_OK || !response) state.SkipWithError("the document was not sent");
  }
  state.counters["peak_KB"] = static_cast<double>(StatusKilobytes("VmHWM:") - before);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(document));
}

void PrintJob(benchmark::State& state) { SendDocument(state, kDocument); }
void PrintJobOf10MB(benchmark::State& state) { SendDocument(state, kDocument / 10); }

std::size_t ReadUpload(char* out, std::size_t size, std::size_t count, void* left) {
  const std::size_t bytes = std::min(size * count, *static_cast<std::size_t*>(left));
  std::memset(out, 'x', bytes);
  *static_cast<std::size_t*>(left) -= bytes;
  return bytes;
}

std::size_t Ignore(char*, std::size_t size, std::size_t count, void*) { return size * count; }

void Curl(benchmark::State& state) {
  const std::string url = "http://127.0.0.1:" + std::to_string(g_port) + "/ipp/print";
  curl_slist* headers = curl_slist_append(nullptr, "Transfer-Encoding: chunked");
  headers = curl_slist_append(headers, "Content-Type: application/ipp");
  headers = curl_slist_append(headers, "Expect:");
  const long before = ForgetPeak();
  for (auto _ : state) {
    std::size_t left = kDocument;
    CURL* const handle = curl_easy_init();
    curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle, CURLOPT_POST, 1L);
    curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(handle, CURLOPT_READFUNCTION, &ReadUpload);
    curl_easy_setopt(handle, CURLOPT_READDATA, &left);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &Ignore);
    // Curl takes at most 2 MB at once; 64 KB is what it does unasked.
    curl_easy_setopt(handle, CURLOPT_UPLOAD_BUFFERSIZE, static_cast<long>(state.range(0)));
    if (curl_easy_perform(handle) != CURLE_OK) state.SkipWithError("the document was not sent");
    curl_easy_cleanup(handle);
  }
  curl_slist_free_all(headers);
  state.counters["peak_KB"] = static_cast<double>(StatusKilobytes("VmHWM:") - before);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kDocument));
}

BENCHMARK(PrintJob)->Arg(64 << 10)->Arg(1 << 20)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Curl)->Arg(64 << 10)->Arg(1 << 20)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(PrintJobOf10MB)->Arg(1 << 20)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  g_port = Corvane::Bench::StartSink(0);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
