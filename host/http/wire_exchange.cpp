#include "host/http/wire_exchange.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <utility>

#include "corvane/error_codes.h"

namespace Corvane::Host {
namespace {

// The longest wait that looks for nothing but the socket: how late a cancel may be seen.
constexpr int kSliceMs = 50;
// What TLS waits for when the socket is writable and takes nothing is to be read, or comes by
// itself.
constexpr int kStalledMs = 10;
// One TLS record, so that a kept connection has nothing of it buffered.
constexpr std::size_t kBlockBytes = std::size_t{16} << 10;

constexpr std::uint32_t kFirstRedirect = 300;

}  // namespace

WireExchange::WireExchange(std::unique_ptr<CurlConnection> connection, ResponseReader reader,
                           StopSending stop, ExchangeClock* clock,
                           const std::atomic<bool>& cancelled)
    : m_connection(std::move(connection)),
      m_reader(std::move(reader)),
      m_stop(stop),
      m_clock(clock),
      m_cancelled(cancelled) {}

bool WireExchange::Send(std::string_view bytes, std::atomic<std::uint64_t>* sent) {
  m_clock->Sending();
  while (GoesOn()) {
    ReceiveWaiting();
    if (AnswerEndsSending()) ReceiveResponse();
    if (AnswerEndsSending() || m_reader.Failed()) return false;
    if (bytes.empty()) return true;

    std::size_t taken = 0;
    switch (m_connection->Send(bytes, &taken)) {
      case Step::kMoved:
        bytes.remove_prefix(taken);
        if (sent) *sent += taken;
        if (bytes.empty()) return true;
        m_clock->Sending();
        m_writable = false;
        break;
      case Step::kWait:
        if (IsOver()) return false;
        Pause(m_reader.Done() ? POLLOUT : m_writable ? POLLIN : POLLIN | POLLOUT);
        break;
      default:
        ConnectionLost();
        return false;
    }
  }
  return false;
}

WireResult WireExchange::Receive() {
  ReceiveResponse();
  return m_reader.TakeResult();
}

bool WireExchange::AnswerEndsSending() const {
  return m_reader.HasHead() &&
         (m_stop == StopSending::kAtAnyAnswer || m_reader.Result().status >= kFirstRedirect);
}

// The answer that a device gave before it broke the connection is still to be had.
void WireExchange::ConnectionLost() {
  const std::wstring why = m_connection->Why();
  ReceiveWaiting();
  if (m_reader.HasHead()) {
    ReceiveResponse();
  } else if (!m_reader.Failed()) {
    m_reader.Fail(kErrorConnection, why);
  }
}

void WireExchange::ReceiveWaiting() {
  while (!m_reader.Done() && ReceiveBlock() == Step::kMoved) {
  }
}

WireExchange::Step WireExchange::ReceiveBlock() {
  std::array<char, kBlockBytes> block;
  std::size_t received = 0;
  const Step step = m_connection->Receive(block.data(), block.size(), &received);
  if (step == Step::kMoved) {
    m_heard = true;
    m_clock->Received();
    return m_reader.Feed({block.data(), received}) ? step : Step::kFailed;
  }
  if (step == Step::kEnded) m_reader.End();
  if (step == Step::kFailed) m_reader.Fail(kErrorConnection, m_connection->Why());
  return step;
}

void WireExchange::ReceiveResponse() {
  m_clock->Awaiting();
  while (!m_reader.Done() && GoesOn()) {
    const Step step = ReceiveBlock();
    if (!m_reader.Done() && !IsOver() && step == Step::kWait) Pause(POLLIN);
  }
}

// False: the exchange has failed.
bool WireExchange::GoesOn() {
  if (m_reader.Failed()) return false;
  return !m_cancelled.load() || m_reader.Fail(kErrorCancelled, L"cancelled");
}

bool WireExchange::IsOver() {
  std::optional<std::wstring> why = m_clock->Over();
  return why && !m_reader.Fail(kErrorTimeout, *std::move(why));
}

void WireExchange::Pause(short events) {
  const bool stalled = events == POLLIN && m_writable;
  const auto longest = std::min<std::int64_t>(m_clock->LeftMs(), stalled ? kStalledMs : kSliceMs);
  m_writable = (m_connection->Await(events, static_cast<int>(longest)) & POLLOUT) != 0;
}

}  // namespace Corvane::Host
