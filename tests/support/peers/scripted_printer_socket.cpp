// The scripted printer's door for HTTP connections (Linux).
#include <cstdlib>

#include "tests/support/ipp_bytes.h"
#include "tests/support/peers/loopback_server.h"
#include "tests/support/peers/scripted_printer.h"

namespace Corvane::Test {
namespace {

// Hands the body to `take` as it comes, until that wants no more; false when the client is gone.
template <typename Take>
bool ReadBody(LoopbackConnection* connection, const std::string& head, Take take) {
  if (head.find("Expect: 100-continue") != head.npos)
    connection->Send("HTTP/1.1 100 Continue\r\n\r\n");
  const bool isChunked = head.find("Transfer-Encoding: chunked") != head.npos;
  const std::size_t length = head.find("Content-Length: ");
  std::size_t left = length == head.npos ? 0 : std::strtoul(&head[length + 16], nullptr, 10);
  for (bool isOver = false; !isOver;) {
    if (isChunked) {
      const std::string line = connection->ReadThrough("\r\n");
      if (line.empty()) return false;
      left = std::strtoul(line.c_str(), nullptr, 16);
    }
    isOver = !isChunked || left == 0;
    while (left > 0) {
      std::string& buffered = connection->m_buffered;
      if (buffered.empty() && !connection->ReceiveMore()) return false;
      const std::string piece = buffered.substr(0, left);
      buffered.erase(0, piece.size());
      left -= piece.size();
      if (!take(piece)) return true;
    }
    if (isChunked) connection->ReadThrough("\r\n");
  }
  return true;
}

}  // namespace

std::function<void(LoopbackConnection&)> ScriptedPrinter::OnSocket() {
  return [this](LoopbackConnection& connection) {
    for (std::string text; !(text = connection.ReadThrough("\r\n\r\n")).empty();) {
      const Head head{0, L"", text.find("\r\nAuthorization: ") != text.npos};
      const auto exchange = Begin();
      const auto take = [&](std::string_view bytes) { return exchange->Take(head, bytes); };
      if (!ReadBody(&connection, text, take)) return;
      const Answer answer = exchange->Finish(head);
      if (FAILED(answer.result)) return;
      if (!connection.Send(IppResponse(answer.body, static_cast<int>(answer.status)))) return;
    }
  };
}

}  // namespace Corvane::Test
