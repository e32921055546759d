#include "host/http/streamed_exchange.h"

#include <poll.h>

#include <algorithm>
#include <array>

#include "corvane/error_codes.h"
#include "host/http/time_remarks.h"

namespace Corvane::Host {
namespace {

// The longest wait that looks for nothing but the socket: how late a cancel may be seen.
constexpr int kSliceMs = 50;
// What TLS waits for when the socket is writable and takes nothing is to be read, or comes by
// itself.
constexpr int kStalledMs = 10;
constexpr std::size_t kBlockBytes = std::size_t{16} << 10;

constexpr short kRead = POLLIN;
constexpr short kReadWrite = POLLIN | POLLOUT;

}  // namespace

StreamedExchange::StreamedExchange(const StreamLimits& limits, const std::atomic<bool>& cancelled)
    : m_limits(limits), m_cancelled(cancelled), m_reader(limits.maxBodyBytes) {}

bool StreamedExchange::Open(const std::string& url, const TlsTrust& trust, std::string_view head) {
  const std::uint32_t error = m_connection.Open(url, trust, m_limits.connectMs, m_cancelled);
  return error == 0 ? Send(head, nullptr) : m_reader.Fail(error, m_connection.Why());
}

bool StreamedExchange::Send(std::string_view bytes, std::atomic<std::uint64_t>* sent) {
  const auto silence = std::chrono::milliseconds(m_limits.silenceMs);
  Clock::time_point end = Clock::now() + silence;
  while (CheckCancelled()) {
    ReceiveWaiting();
    if (m_reader.HasHead()) ReceiveResponse();
    if (m_reader.Done()) break;
    if (bytes.empty()) return true;

    std::size_t taken = 0;
    switch (m_connection.Send(bytes, &taken)) {
      case Step::kMoved:
        bytes.remove_prefix(taken);
        if (sent) *sent += taken;
        if (bytes.empty()) return true;
        end = Clock::now() + silence;
        m_writable = false;
        break;
      case Step::kWait:
        if (Clock::now() >= end) {
          return m_reader.Fail(kErrorTimeout, NothingTaken(m_limits.silenceMs));
        }
        Pause(m_writable ? kRead : kReadWrite, end);
        break;
      default:
        ConnectionLost();
        break;
    }
  }
  return false;
}

WireResult StreamedExchange::Receive() {
  ReceiveResponse();
  return m_reader.TakeResult();
}

// The answer that a device gave before it broke the connection is still to be had.
void StreamedExchange::ConnectionLost() {
  const std::wstring why = m_connection.Why();
  ReceiveWaiting();
  if (m_reader.HasHead()) {
    ReceiveResponse();
  } else if (!m_reader.Done()) {
    m_reader.Fail(kErrorConnection, why);
  }
}

void StreamedExchange::ReceiveWaiting() {
  while (!m_reader.HasHead() && ReceiveBlock() == Step::kMoved) {
  }
}

StreamedExchange::Step StreamedExchange::ReceiveBlock() {
  std::array<char, kBlockBytes> block;
  std::size_t received = 0;
  const Step step = m_connection.Receive(block.data(), block.size(), &received);
  if (step == Step::kMoved) {
    return m_reader.Feed({block.data(), received}) ? step : Step::kFailed;
  }
  if (step == Step::kEnded) m_reader.End();
  if (step == Step::kFailed) m_reader.Fail(kErrorConnection, m_connection.Why());
  return step;
}

void StreamedExchange::ReceiveResponse() {
  const auto silence = std::chrono::milliseconds(m_limits.silenceMs);
  const Clock::time_point begin = Clock::now();
  const Clock::time_point end = begin + std::chrono::milliseconds(m_limits.responseMs);
  Clock::time_point silent = begin + silence;
  while (!m_reader.Done() && CheckCancelled()) {
    const Step step = ReceiveBlock();
    const Clock::time_point now = Clock::now();
    if (step == Step::kMoved) silent = now + silence;
    if (m_reader.Done()) return;
    if (now >= end) {
      m_reader.Fail(kErrorTimeout, NoWholeResponse(m_limits.responseMs));
    } else if (now >= silent) {
      m_reader.Fail(kErrorTimeout, Silent(m_limits.silenceMs));
    } else if (step == Step::kWait) {
      Pause(kRead, std::min(silent, end));
    }
  }
}

// False: the exchange has ended.
bool StreamedExchange::CheckCancelled() {
  if (m_reader.Done()) return false;
  return !m_cancelled.load() || m_reader.Fail(kErrorCancelled, L"cancelled");
}

void StreamedExchange::Pause(short events, Clock::time_point until) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()).count();
  const bool stalled = events == kRead && m_writable;
  const auto longest = std::min<std::int64_t>(left, stalled ? kStalledMs : kSliceMs);
  m_writable = (m_connection.Await(events, static_cast<int>(std::max<std::int64_t>(longest, 0))) &
                POLLOUT) != 0;
}

}  // namespace Corvane::Host
