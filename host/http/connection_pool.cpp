#include "host/http/connection_pool.h"

#include <poll.h>

#include <optional>
#include <utility>

#include "base/letter_case.h"
#include "base/utf8.h"
#include "corvane/error_codes.h"
#include "host/http/request_url.h"

namespace Corvane::Host {
namespace {

// Sockets kept open between requests, here and in the device, which has few of them.
constexpr std::size_t kMaxIdle = 8;
// A device that lost its power, or a router that forgot the connection, does not tell.
constexpr std::chrono::seconds kMaxIdleTime{60};
constexpr std::string_view kTlsScheme = "https://";

}  // namespace

Connected ConnectionPool::Open(const std::string& url, const TlsTrust& trust,
                               const ExchangeClock& clock, const std::atomic<bool>& cancelled) {
  Connected made;
  made.connection = std::make_unique<CurlConnection>();
  made.error = made.connection->Open(url, trust, clock.ConnectMs(), cancelled);
  if (made.error == 0) return made;
  made.remark = made.connection->Why();
  made.connection.reset();
  if (made.error != kErrorTimeout) return made;
  if (std::optional<std::wstring> over = clock.Over()) made.remark = *std::move(over);
  return made;
}

PinLookup ConnectionPool::FindPin(const std::string& url, const ExchangeClock& clock,
                                  const std::atomic<bool>& cancelled) const {
  // "printer.test:443": the URLs of this host always have their port.
  const std::string name = LowerAscii(OriginOf(url).substr(kTlsScheme.size()));
  const PinFile file(m_trust.pinFile);
  PinLookup known = file.Find(name, clock.ConnectMs(), cancelled);
  if (known.pin || known.error != 0) return known;
  TlsTrust any = m_trust;
  any.verify = false;
  const Connected shown = Open(url, any, clock, cancelled);
  if (!shown.connection) return {std::nullopt, shown.error, shown.remark};
  const std::string key = shown.connection->ShownKey();
  if (key.empty()) return {std::nullopt, kErrorSecureFailure, L"the device shows no key"};
  return file.Record(name, key, clock.ConnectMs(), cancelled);
}

Connected ConnectionPool::Connect(const std::string& url, Kind kind, const ExchangeClock& clock,
                                  const std::atomic<bool>& cancelled) {
  TlsTrust trust = m_trust;
  if (!trust.pinFile.empty() && url.starts_with(kTlsScheme)) {
    PinLookup lookup = FindPin(url, clock, cancelled);
    if (!lookup.pin) return {nullptr, false, lookup.error, std::move(lookup.remark)};
    trust.pin = std::move(lookup.pin);
  }
  if (kind == Kind::kAny) {
    if (auto idle = TakeIdle(url, trust)) return {std::move(idle), true, 0, {}};
  }
  return Open(url, trust, clock, cancelled);
}

std::unique_ptr<CurlConnection> ConnectionPool::TakeIdle(const std::string& url,
                                                         const TlsTrust& trust) {
  std::vector<std::unique_ptr<CurlConnection>> dropped;  // close their sockets outside the lock
  const std::lock_guard lock(m_mutex);
  const auto oldest = std::chrono::steady_clock::now() - kMaxIdleTime;
  while (!m_idle.empty() && m_idle.front().since < oldest) {
    dropped.push_back(std::move(m_idle.front().connection));
    m_idle.erase(m_idle.begin());
  }
  for (std::size_t i = m_idle.size(); i-- > 0;) {
    if (!m_idle[i].connection->LeadsTo(url, trust)) continue;
    std::unique_ptr<CurlConnection> connection = std::move(m_idle[i].connection);
    m_idle.erase(m_idle.begin() + static_cast<std::ptrdiff_t>(i));
    // The end of the connection, or an answer to no question, as 408: the next request must not
    // take it for its own.
    if (connection->Await(POLLIN, 0) == 0) return connection;
    dropped.push_back(std::move(connection));
  }
  return nullptr;
}

void ConnectionPool::GiveBack(std::unique_ptr<CurlConnection> connection) {
  std::unique_ptr<CurlConnection> surplus;  // closes its socket outside the lock
  const std::lock_guard lock(m_mutex);
  if (m_idle.size() >= kMaxIdle) {
    surplus = std::move(m_idle.front().connection);
    m_idle.erase(m_idle.begin());
  }
  m_idle.push_back({std::move(connection), std::chrono::steady_clock::now()});
}

}  // namespace Corvane::Host
