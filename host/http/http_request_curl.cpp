#include "host/http/http_request_curl.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "base/letter_case.h"
#include "base/utf8.h"
#include "corvane/error_codes.h"
#include "host/http/challenge.h"
#include "host/http/request_head.h"
#include "host/http/request_url.h"
#include "host/http/wire_exchange.h"

namespace Corvane::Host {
namespace {

// A device that redirects in a circle.
constexpr int kMaxRedirects = 5;
// The first answers the challenge, the second a nonce that went stale while a long body was on its
// way. A device that challenges for ever would have a document sent for ever.
constexpr int kMaxAnswers = 2;
// What goes out with the head at once: some devices read a small message in one piece only.
constexpr std::size_t kJoinedBytes = std::size_t{64} << 10;

WireResult FailWith(std::uint32_t error, std::wstring remark) {
  WireResult result;
  result.error = error;
  result.remark = std::move(remark);
  return result;
}

bool IsRedirect(std::uint32_t status) {
  return (status >= 301 && status <= 303) || status == 307 || status == 308;
}

}  // namespace

CurlRequest::CurlRequest(std::shared_ptr<NetworkDevice> device,
                         std::shared_ptr<LastFailure> lastFailure, std::uint32_t port, bool forIPP)
    : RequestBase(std::move(lastFailure)),
      m_device(std::move(device)),
      m_port(port),
      m_forIPP(forIPP) {}

std::string CurlRequest::Url(const RequestSettings& settings) const {
  return m_device->OriginOf(m_port) + EncodeTarget(ToUtf8(settings.uri));
}

std::wstring CurlRequest::Describe(const RequestSettings& settings) const {
  return WideFromLatin1(Url(settings));
}

Outcome CurlRequest::OutcomeOf(WireResult result, std::wstring remark) {
  if (result.error != 0) return {nullptr, result.error, std::move(result.remark)};
  Outcome outcome;
  outcome.response = std::make_unique<BufferedResponse>(result.status, std::move(result.headers),
                                                        std::move(result.body));
  outcome.remark = std::move(remark);
  return outcome;
}

ExchangeLimits CurlRequest::Limits(const RequestSettings& settings,
                                   const DeviceSettings& device) const {
  ExchangeLimits limits;
  limits.connectMs = device.connectTimeoutMs;
  limits.totalMs = settings.timeoutMs != 0 ? settings.timeoutMs : device.totalTimeoutMs;
  return limits;
}

Outcome CurlRequest::Perform(const RequestSettings& settings) {
  const DeviceSettings device = m_device->Settings();
  WireRequest request;
  request.url = Url(settings);
  if (const wchar_t* const fault = BuildWireRequest(settings, device, m_forIPP, &request)) {
    return {nullptr, kErrorInvalidParameter, fault};
  }

  ExchangeClock clock(Limits(settings, device));
  for (int redirects = 0; redirects <= kMaxRedirects; ++redirects) {
    WireResult result = Exchange(request, &clock);
    const std::string location = result.BytesOf(L"location");
    if (result.error != 0 || !IsRedirect(result.status) || location.empty()) {
      return OutcomeOf(std::move(result), {});
    }
    if (request.verb != "GET") {
      return OutcomeOf(std::move(result), L"a redirect, which is followed for GET only");
    }
    std::optional<std::string> target = RedirectWithinOrigin(request.url, location);
    if (!target) return OutcomeOf(std::move(result), L"a redirect that leaves the device");
    request.url = *std::move(target);
  }
  return {nullptr, kErrorRedirectFailed,
          L"more than " + std::to_wstring(kMaxRedirects) + L" redirects"};
}

WireResult CurlRequest::Exchange(const WireRequest& request, ExchangeClock* clock) {
  std::string authorization;
  for (int answers = 0;; ++answers) {
    WireResult result = ExchangeOnce(request, authorization, clock);
    if (result.error != 0 || result.status != kHttpUnauthorized) return result;
    const bool again = !authorization.empty();
    authorization = AnswerChallenge(result.BytesOf(L"www-authenticate"), request, again);
    if (authorization.empty()) return result;
    if (answers == kMaxAnswers) {
      m_sentBytes.store(0);  // the device has acted on none of them
      return FailWith(kErrorInvalidResponse, L"the device asks for credentials again and again");
    }
  }
}

WireResult CurlRequest::ExchangeOnce(const WireRequest& request, const std::string& authorization,
                                     ExchangeClock* clock) {
  const std::string_view joined = request.body.substr(0, kJoinedBytes);
  const std::string first = BuildHead(request, authorization).append(joined);
  const ResponseReader reader(m_device->MaxResponseBytes(),
                              request.verb == "HEAD" ? ResponseReader::Answers::kHead
                                                     : ResponseReader::Answers::kAnyRequest);
  // A GET is repeated when a kept connection turns out to be closed. What has no body and is not
  // safe to repeat does not go over one.
  const bool isGet = request.verb == "GET" && request.body.empty();
  auto kind =
      isGet || !request.body.empty() ? ConnectionPool::Kind::kAny : ConnectionPool::Kind::kNew;
  for (;; kind = ConnectionPool::Kind::kNew) {
    m_sentBytes.store(0);  // what an earlier attempt has sent says nothing of this one
    Connected connected = m_device->Pool().Connect(request.url, kind, *clock, Cancelled());
    if (!connected.connection) return FailWith(connected.error, std::move(connected.remark));
    WireExchange exchange(std::move(connected.connection), reader, StopSending::kAtRefusal, clock,
                          Cancelled());
    bool sent = exchange.Send(first, nullptr);
    if (sent) m_sentBytes.store(joined.size());
    if (sent && joined.size() < request.body.size()) {
      sent = exchange.Send(request.body.substr(joined.size()), &m_sentBytes);
    }
    WireResult result = exchange.Receive();
    if (result.error == kErrorConnection && connected.kept && isGet && !exchange.Heard()) continue;
    if (sent && result.reusable) m_device->Pool().GiveBack(exchange.TakeConnection());
    return result;
  }
}

}  // namespace Corvane::Host
