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
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "bench/process_status.h"
#include "corvane/handles.h"
#include "corvane/ipp_provider.h"
#include "host/network_address.h"
#include "tests/support/ipp_bytes.h"
#include "tests/support/peers/private_network.h"
#include "tests/support/process.h"
#include "tests/support/temp_folder.h"

namespace {

using Corvane::RefPtr;
using Corvane::Bench::StatusKilobytes;

constexpr std::uint16_t kPort = 631;
constexpr std::size_t kDocument = std::size_t{100} << 20;
constexpr unsigned kWatchSeconds = 20;

// The sink.

// To the request that begins with `request`: its version and its number come back.
std::string Answer(std::string_view request) {
  using namespace Corvane::Test;
  std::string groups = IppGroup(0x01) + IppValue(0x47, "attributes-charset", "utf-8") +
                       IppValue(0x48, "attributes-natural-language", "en");
  constexpr char kPrintJob = 0x02;
  constexpr char kGetPrinterAttributes = 0x0B;
  if (request[3] == kPrintJob) {
    groups += IppGroup(0x02) + IppNumber(0x21, "job-id", 1) +
              IppValue(0x45, "job-uri", "ipp://127.0.0.1/ipp/print/1") +
              IppNumber(0x23, "job-state", 5) + IppValue(0x44, "job-state-reasons", "none");
  } else if (request[3] == kGetPrinterAttributes) {
    groups += IppGroup(0x04) + IppNumber(0x23, "printer-state", 3) +
              IppValue(0x44, "printer-state-reasons", "none");
  }
  const std::string answer = LibraryAnswer(0, groups);
  return IppResponse(std::string(request.substr(0, 2)) + answer.substr(2, 2) +
                     std::string(request.substr(4, 4)) + answer.substr(8));
}

void Put(int connection, std::string_view text) {
  if (send(connection, text.data(), text.size(), MSG_NOSIGNAL) < 0) std::perror("the sink");
}

// Requests of one connection, one behind the other.
void Serve(int connection) {
  const int on = 1;
  setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
  std::vector<char> block(std::size_t{256} << 10);
  std::string begin;  // the head, and the first bytes of the body
  const auto receive = [&] {
    const ssize_t size = recv(connection, block.data(), block.size(), 0);
    return std::string_view(block.data(), size > 0 ? static_cast<std::size_t>(size) : 0);
  };
  for (;; begin.clear()) {
    std::size_t body = 0;
    bool chunked = false;
    std::string tail;
    std::size_t left = 0;
    const auto take = [&](std::string_view bytes) {
      left -= std::min(left, bytes.size());
      tail.append(bytes.substr(bytes.size() - std::min<std::size_t>(bytes.size(), 7)));
      if (tail.size() > 7) tail.erase(0, tail.size() - 7);
    };
    while (true) {
      const std::string_view bytes = receive();
      if (bytes.empty()) {
        close(connection);
        return;
      }
      if (body == 0) {
        begin.append(bytes);
        if (const std::size_t end = begin.find("\r\n\r\n"); end != begin.npos) {
          body = end + 4;
          const std::string_view head(begin.data(), end);
          chunked = head.find("chunked") != head.npos;
          if (const auto length = head.find("Content-Length: "); length != head.npos) {
            left = static_cast<std::size_t>(std::atoll(head.data() + length + 16));
          }
          if (head.find("100-continue") != head.npos) {
            Put(connection, "HTTP/1.1 100 Continue\r\n\r\n");
          }
          take(std::string_view(begin).substr(body));
        }
      } else {
        if (begin.size() < body + 64) begin.append(bytes.substr(0, 64));
        take(bytes);
      }
      if (body != 0 && (chunked ? tail == "\r\n0\r\n\r\n" : left == 0)) break;
    }
    const std::size_t ipp = chunked ? begin.find("\r\n", body) + 2 : body;
    Put(connection, Answer(std::string_view(begin).substr(ipp)));
  }
}

// A process that ends with this one.
void StartSink() {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(kPort);
  if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 ||
      listen(listener, 16) != 0) {
    std::perror("the sink cannot listen");
    std::exit(1);
  }
  if (fork() == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (int client; (client = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
      std::thread(Serve, client).detach();
    }
    _exit(0);
  }
  close(listener);
}

// The client.

RefPtr<Corvane::IPPProvider> MakeProvider() {
  Corvane::Host::NetworkOptions options;
  options.host = L"127.0.0.1";
  const auto address =
      RefPtr<Corvane::Address>::Adopt(Corvane::Host::CreateNetworkAddress(options));
  return RefPtr<Corvane::IPPProvider>::Adopt(
      CreateIPPPrintProvider(address.Get(), L"ipp://127.0.0.1/ipp/print"));
}

double CpuSeconds() {
  rusage used{};
  getrusage(RUSAGE_SELF, &used);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(used.ru_utime) + seconds(used.ru_stime);
}

// The number that is told to whom started this process; negative for a failure.
double PrintFile(const char* path, std::size_t pieceBytes) {
  const auto provider = MakeProvider();
  const auto request = RefPtr<Corvane::IPPRequestBase>::Adopt(CreateIPPRequest());
  const auto response = RefPtr<Corvane::IPPResponseBase>::Adopt(CreateIPPResponse());
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  if (!provider || file < 0) return -1;
  request->SetRequestingUserName("anna");
  std::vector<char> piece(pieceBytes);
  bool begun = false;
  for (;;) {
    const ssize_t size = read(file, piece.data(), piece.size());
    const auto length = static_cast<std::int32_t>(size);
    const HRESULT result =
        begun ? provider->PrintJobWrite(request.Get(), response.Get(), piece.data(), length)
              : provider->PrintJob(request.Get(), response.Get(), piece.data(), length, true);
    if (size < 0 || result != S_OK) return -1;
    if (size == 0) break;
    begun = true;
  }
  close(file);
  return response->GetJobID() == 1 ? static_cast<double>(StatusKilobytes("VmHWM:")) : -1;
}

double WatchJob() {
  const auto provider = MakeProvider();
  const auto request = RefPtr<Corvane::IPPRequestBase>::Adopt(CreateIPPRequest());
  const auto response = RefPtr<Corvane::IPPResponseBase>::Adopt(CreateIPPResponse());
  request->SetRequestingUserName("anna");
  if (!provider || provider->PrintJob(request.Get(), response.Get(), "half", 4, true) != S_OK) {
    return -1;
  }
  const double before = CpuSeconds();
  sleep(kWatchSeconds);
  return (CpuSeconds() - before) / kWatchSeconds * 100;
}

// The benchmarks.

const std::string& Self() {
  static const std::string path = std::filesystem::read_symlink("/proc/self/exe").string();
  return path;
}

const std::string& Document() {
  static const Corvane::Test::TempFolder folder;
  static const std::string path = [] {
    std::string bytes(kDocument, '\0');
    std::mt19937_64 random(1);
    for (std::size_t i = 0; i < kDocument; i += 8) {
      const std::uint64_t bits = random();
      std::memcpy(bytes.data() + i, &bits, 8);
    }
    return folder.Write("document.bin", bytes).string();
  }();
  return path;
}

double Number(benchmark::State& state, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), Self());
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
  StartSink();
  Document();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
