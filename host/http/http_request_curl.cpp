#include "host/http/http_request_curl.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "base/utf8.h"
#include "corvane/error_codes.h"
#include "host/http/request_url.h"
#include "host/http/wire_request.h"
#include "host/trust/pinned_trust.h"

namespace Corvane::Host {
namespace {

using Clock = std::chrono::steady_clock;

// A device that redirects in a circle.
constexpr int kMaxRedirects = 5;

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
  limits.maxBodyBytes = m_device->MaxResponseBytes();
  return limits;
}

Outcome CurlRequest::Perform(const RequestSettings& settings) {
  const DeviceSettings device = m_device->Settings();
  WireRequest request;
  request.url = Url(settings);
  if (const wchar_t* const fault = BuildWireRequest(settings, device, m_forIPP, &request)) {
    return {nullptr, kErrorInvalidParameter, fault};
  }

  ExchangeLimits limits = Limits(settings, device);
  const std::int64_t totalMs = limits.totalMs;
  const Clock::time_point start = Clock::now();
  const std::int64_t connectMs =
      totalMs == 0 ? limits.connectMs : std::min(limits.connectMs, totalMs);
  SettledTrust settled = SettleTrust(m_device->Trust(), request.url, connectMs, Cancelled());
  if (settled.error != 0) return {nullptr, settled.error, std::move(settled.remark)};
  for (int redirects = 0; redirects <= kMaxRedirects; ++redirects) {
    const auto elapsed =
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
    const std::wstring timedOut = L"timed out after " + std::to_wstring(totalMs) + L" ms";
    if (totalMs != 0) {
      limits.totalMs = totalMs - elapsed;
      if (limits.totalMs <= 0) return {nullptr, kErrorTimeout, timedOut};
    }

    WireResult result = Exchange(request, limits, settled.trust);
    // What is left of the limit after a redirect is no limit that anyone knows.
    if (result.error == kErrorTimeout && redirects > 0 && totalMs != 0) {
      return {nullptr, kErrorTimeout, timedOut};
    }
    if (result.error != 0 || !IsRedirect(result.status) || result.location.empty())
      return OutcomeOf(std::move(result), {});
    if (request.verb != "GET") {
      return OutcomeOf(std::move(result), L"a redirect, which is followed for GET only");
    }
    std::optional<std::string> target = RedirectWithinOrigin(request.url, result.location);
    if (!target) return OutcomeOf(std::move(result), L"a redirect that leaves the device");
    request.url = *std::move(target);
  }
  return {nullptr, kErrorRedirectFailed,
          L"more than " + std::to_wstring(kMaxRedirects) + L" redirects"};
}

WireResult CurlRequest::Exchange(const WireRequest& request, const ExchangeLimits& limits,
                                 const TlsTrust& trust) {
  CurlEasy handle = m_device->Pool().Take(m_port);
  CurlExchange exchange(request, limits, trust, Cancelled());
  WireResult result = exchange.Run(handle.get());
  m_sentBytes.store(exchange.BodySent());
  if (result.error == 0 && result.reusable) m_device->Pool().GiveBack(m_port, std::move(handle));
  return result;
}

}  // namespace Corvane::Host
