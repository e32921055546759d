// Printing 100 MB of a file in chunks, as a command does, to a sink on port 631 of a loopback of
// this program's own (Linux). Each run is a process of its own, from its start to its end.
//
//   Print/N   CreateIPPPrintProvider, PrintJob, PrintJobWrite over the reference host, in pieces of
//             N bytes; the counter "peak_KB" is the process's VmHWM, all it ever held
//   Ipptool   ipptool -f FILE ipp://127.0.0.1/ipp/print print-job.test
//   Watch     what a job costs that is half sent and then rests for 20 seconds: the counter
//             "cpu_percent" is the processor time of the process meanwhile, of one core
//
// The sink is another process. It reads a document to its end, keeps nothing of it, and answers
// with a job; it is idle, and has no jobs to list.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "bench/loopback_sink.h"
#include "corvane/handles.h"
#include "corvane/ipp_provider.h"
#include "host/network_address.h"
#include "tests/support/peers/private_network.h"
#include "tests/support/process.h"
#include "tests/support/temp_folder.h"

namespace {

using Corvane::RefPtr;

constexpr std::size_t kDocument = std::size_t{100} << 20;
constexpr unsigned kWatchSeconds = 20;

// A job at the sink, in pieces.
class Job {
 public:
  Job() {
    Corvane::Host::NetworkOptions options;
    options.host = L"127.0.0.1";
    const RefPtr<Corvane::Address> address(Corvane::Host::CreateNetworkAddress(options));
    m_provider = RefPtr<Corvane::IPPProvider>(
        CreateIPPPrintProvider(address.Get(), L"ipp://127.0.0.1/ipp/print"));
    m_request->SetRequestingUserName("anna");
  }
  // The last one is empty.
  bool Send(const char* piece, std::size_t bytes) {
    if (!m_provider) return false;
    const auto length = static_cast<std::int32_t>(bytes);
    const HRESULT result =
        m_hasBegun ? m_provider->PrintJobWrite(m_request.Get(), m_response.Get(), piece, length)
                   : m_provider->PrintJob(m_request.Get(), m_response.Get(), piece, length, true);
    m_hasBegun = true;
    return result == S_OK;
  }
  std::int32_t Id() const { return m_response->GetJobID(); }

 private:
  RefPtr<Corvane::IPPProvider> m_provider;
  const RefPtr<Corvane::IPPRequestBase> m_request{CreateIPPRequest()};
  const RefPtr<Corvane::IPPResponseBase> m_response{CreateIPPResponse()};
  bool m_hasBegun = false;
};

// The number that is told to whom started this process; negative for a failure.
double PrintFile(const char* path, std::size_t pieceBytes) {
  Job job;
  std::filebuf file;
  file.pubsetbuf(nullptr, 0);
  if (!file.open(path, std::ios::in | std::ios::binary)) return -1;
  std::vector<char> piece(pieceBytes);
  for (std::size_t size = 1; size > 0;) {
    size = static_cast<std::size_t>(
        file.sgetn(piece.data(), static_cast<std::streamsize>(piece.size())));
    if (!job.Send(piece.data(), size)) return -1;
  }
  return job.Id() == 1 ? static_cast<double>(Corvane::Bench::StatusKilobytes("VmHWM:")) : -1;
}

double WatchJob() {
  Job job;
  if (!job.Send("half", 4)) return -1;
  const std::clock_t before = std::clock();  // processor time
  sleep(kWatchSeconds);
  return static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC / kWatchSeconds * 100;
}

const std::string& Document() {
  static const Corvane::Test::TempFolder folder;
  static const std::string path = [] {
    std::string bytes(kDocument, '\0');
    std::mt19937_64 random(1);
    for (char& byte : bytes) byte = static_cast<char>(random());
    return folder.Write("document.bin", bytes).string();
  }();
  return path;
}

double Number(benchmark::State& state, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), std::filesystem::read_symlink("/proc/self/exe").string());
  const std::string told = Corvane::Test::RunProcess(arguments).output;
  const double number = told.empty() ? -1 : std::atof(told.c_str());
  if (number < 0) state.SkipWithError("the run failed");
  return number;
}

void Print(benchmark::State& state) {
  double peak = 0;
  for (auto _ : state) {
    peak = std::max(peak, Number(state, {"--print", Document(), std::to_string(state.range(0))}));
  }
  state.counters["peak_KB"] = peak;
}

void Ipptool(benchmark::State& state) {
  for (auto _ : state) {
    const auto result = Corvane::Test::RunProcess(
        {"ipptool", "-t", "-f", Document(), "ipp://127.0.0.1:631/ipp/print", "print-job.test"});
    if (result.output.find("[PASS]") == std::string::npos) state.SkipWithError("ipptool failed");
  }
}

void Watch(benchmark::State& state) {
  for (auto _ : state) state.counters["cpu_percent"] = Number(state, {"--watch"});
}

BENCHMARK(Print)->Arg(4096)->Arg(64 << 10)->Arg(256 << 10)->Arg(1 << 20)->UseRealTime()->Unit(
    benchmark::kMillisecond);
BENCHMARK(Ipptool)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Watch)->Iterations(1)->Repetitions(1)->UseRealTime()->Unit(benchmark::kSecond);

}  // namespace

int main(int argc, char** argv) {
  const std::string_view mode = argc > 1 ? argv[1] : "";
  if (mode == "--watch" || (mode == "--print" && argc == 4)) {
    const double number = mode == "--watch"
                              ? WatchJob()
                              : PrintFile(argv[2], static_cast<std::size_t>(std::atoll(argv[3])));
    std::printf("%g\n", number);
    return number < 0;
  }
  Corvane::Test::EnterPrivateNetwork(argv);
  if (const std::string failure = Corvane::Test::PrivateNetworkFailure(); !failure.empty()) {
    std::fprintf(stderr, "%s\n", failure.c_str());
    return 1;
  }
  Corvane::Bench::StartSink(631);
  Document();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
