// A document of 100 MB sent in chunks to a sink on loopback, which reads it and answers.
//
//   PrintJob/N       IPPOperations over the reference host, in pieces of N bytes
//   Curl/N           a POST of libcurl's own with "Transfer-Encoding: chunked", read by N bytes
//
// The counter "peak_KB" is how much the process's resident memory rose above where it was when the
// upload began, the sink's included; PrintJobOf10MB has it for a tenth of the document.
#include <benchmark/benchmark.h>
#include <curl/curl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "bench/process_status.h"
#include "corvane/handles.h"
#include "host/network_address.h"
#include "ipp/ipp_operations.h"

namespace {

using Corvane::RefPtr;
using Corvane::Bench::StatusKilobytes;

constexpr std::size_t kDocument = std::size_t{100} << 20;

// Reads to the last chunk, answers, and waits for the next connection; ends with the process.
class Sink {
 public:
  Sink() : m_listener(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    if (bind(m_listener, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        listen(m_listener, 4) != 0 ||
        getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
      std::perror("the sink cannot listen");
      std::exit(1);
    }
    port = ntohs(address.sin_port);
    std::thread([this] { Serve(); }).detach();
  }

  std::uint32_t port = 0;

 private:
  void Serve() const {
    std::vector<char> block(std::size_t{256} << 10);
    for (;;) {
      const int connection = accept(m_listener, nullptr, nullptr);
      if (connection < 0) return;
      std::string tail;
      for (ssize_t size = 1; size > 0 && !tail.ends_with("\r\n0\r\n\r\n");) {
        size = read(connection, block.data(), block.size());
        if (size <= 0) break;
        const std::size_t kept = std::min<std::size_t>(static_cast<std::size_t>(size), 16);
        tail.append(block.data() + size - kept, kept);
        if (tail.size() > 16) tail.erase(0, tail.size() - 16);
      }
      static constexpr char kAnswer[] =
          "HTTP/1.1 200 OK\r\nContent-Type: application/ipp\r\nContent-Length: 9\r\n\r\n"
          "\2\0\0\0\0\0\0\x64\3";
      if (write(connection, kAnswer, sizeof(kAnswer) - 1) < 0) std::perror("the sink's answer");
      close(connection);
    }
  }

  const int m_listener;
};

Sink& TheSink() {
  static Sink* const sink = new Sink;
  return *sink;
}

// From here on the peak counts anew.
long ForgetPeak() {
  std::ofstream("/proc/self/clear_refs") << "5";
  return StatusKilobytes("VmHWM:");
}

void SendDocument(benchmark::State& state, std::size_t document) {
  Corvane::Host::NetworkOptions options;
  options.host = L"127.0.0.1";
  options.portMap = {{631, TheSink().port}};
  const auto address =
      RefPtr<Corvane::Address>::Adopt(Corvane::Host::CreateNetworkAddress(options));
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

struct Upload {
  const std::string& piece;
  std::size_t left;
};

std::size_t ReadUpload(char* out, std::size_t size, std::size_t count, void* data) {
  auto* const upload = static_cast<Upload*>(data);
  const std::size_t bytes = std::min({size * count, upload->piece.size(), upload->left});
  std::memcpy(out, upload->piece.data(), bytes);
  upload->left -= bytes;
  return bytes;
}

std::size_t Ignore(char*, std::size_t size, std::size_t count, void*) { return size * count; }

void Curl(benchmark::State& state) {
  const std::string url = "http://127.0.0.1:" + std::to_string(TheSink().port) + "/ipp/print";
  const std::string piece(static_cast<std::size_t>(state.range(0)), 'x');
  curl_slist* headers = curl_slist_append(nullptr, "Transfer-Encoding: chunked");
  headers = curl_slist_append(headers, "Content-Type: application/ipp");
  headers = curl_slist_append(headers, "Expect:");
  const long before = ForgetPeak();
  for (auto _ : state) {
    Upload upload{piece, kDocument};
    CURL* const handle = curl_easy_init();
    curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle, CURLOPT_POST, 1L);
    curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(handle, CURLOPT_READFUNCTION, &ReadUpload);
    curl_easy_setopt(handle, CURLOPT_READDATA, &upload);
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
  TheSink();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
