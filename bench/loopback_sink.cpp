#include "bench/loopback_sink.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/support/ipp_bytes.h"

namespace Corvane::Bench {
namespace {

// To the request that begins with `request`: its version and its number come back.
std::string AnswerTo(std::string_view request) {
  using namespace Corvane::Test;
  constexpr char kPrintJob = 0x02, kGetPrinterAttributes = 0x0B;
  std::string groups = IppGroup(0x01) + IppValue(0x47, "attributes-charset", "utf-8") +
                       IppValue(0x48, "attributes-natural-language", "en");
  if (request[3] == kPrintJob) {
    groups += IppGroup(0x02) + IppNumber(0x21, "job-id", 1) +
              IppValue(0x45, "job-uri", "ipp://127.0.0.1/ipp/print/1") +
              IppNumber(0x23, "job-state", 5) + IppValue(0x44, "job-state-reasons", "none");
  } else if (request[3] == kGetPrinterAttributes) {
    groups += IppGroup(0x04) + IppNumber(0x23, "printer-state", 3) +
              IppValue(0x44, "printer-state-reasons", "none");
  }
  std::string answer = LibraryAnswer(0, groups);
  answer.replace(0, 2, request, 0, 2).replace(4, 4, request, 4, 4);
  return IppResponse(answer);
}

void Put(int connection, std::string_view text) {
  if (send(connection, text.data(), text.size(), MSG_NOSIGNAL) < 0) std::perror("the sink");
}

// The head of the next request and the first bytes of its body, once all of it has come; empty when
// the client is gone.
std::string ReadRequest(int connection, std::vector<char>* block) {
  constexpr std::string_view kLastChunk = "\r\n0\r\n\r\n";
  constexpr std::size_t kKept = 4096;
  std::string begin, tail;
  std::size_t whole = 0;  // where the request ends by its Content-Length, once its head is there
  bool isChunked = false;
  for (std::size_t size = 0; whole == 0 || (isChunked ? tail != kLastChunk : size < whole);) {
    const ssize_t received = recv(connection, block->data(), block->size(), 0);
    if (received <= 0) return {};
    const std::string_view bytes(block->data(), static_cast<std::size_t>(received));
    size += bytes.size();
    tail += bytes.substr(bytes.size() - std::min(bytes.size(), kLastChunk.size()));
    tail.erase(0, tail.size() - std::min(tail.size(), kLastChunk.size()));
    if (begin.size() < kKept) begin += bytes.substr(0, kKept);
    const std::size_t end = begin.find("\r\n\r\n");
    if (whole > 0 || end == begin.npos) continue;
    const std::string_view head = std::string_view(begin).substr(0, end);
    isChunked = head.find("chunked") != head.npos;
    const std::size_t length = head.find("Content-Length: ");
    whole = end + 4;
    if (length != head.npos) whole += std::strtoul(begin.c_str() + length + 16, nullptr, 10);
    if (head.find("100-continue") != head.npos) Put(connection, "HTTP/1.1 100 Continue\r\n\r\n");
  }
  // The IPP message begins behind the head, or behind the line of the first chunk.
  const std::size_t body = begin.find("\r\n\r\n") + 4;
  return begin.substr(isChunked ? begin.find("\r\n", body) + 2 : body);
}

void Serve(int connection) {
  const int on = 1;
  setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
  std::vector<char> block(std::size_t{256} << 10);
  for (std::string request; !(request = ReadRequest(connection, &block)).empty();) {
    Put(connection, AnswerTo(request));
  }
  close(connection);
}

}  // namespace

std::uint16_t StartSink(std::uint16_t port) {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  auto* const any = reinterpret_cast<sockaddr*>(&address);
  socklen_t size = sizeof(address);
  if (bind(listener, any, size) != 0 || listen(listener, 16) != 0 ||
      getsockname(listener, any, &size) != 0) {
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
  return ntohs(address.sin_port);
}

long StatusKilobytes(const char* field) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(field)) return std::atol(line.c_str() + std::string_view(field).size());
  }
  return -1;
}

}  // namespace Corvane::Bench
