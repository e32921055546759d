// A request to a device on the network, over connections of libcurl.
#ifndef CORVANE_HOST_HTTP_HTTP_REQUEST_CURL_H_
#define CORVANE_HOST_HTTP_HTTP_REQUEST_CURL_H_

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "host/common/request_base.h"
#include "host/http/exchange_clock.h"
#include "host/http/network_device.h"
#include "host/http/response_reader.h"
#include "host/http/wire_request.h"

namespace Corvane::Host {

// Credentials go out only as the answer to a challenge of the device, to the URL's own host and
// port. A body is sent again only when the device refused it with 401, never because a connection
// broke: the device may have acted on it.
class CurlRequest : public RequestBase {
 public:
  CurlRequest(std::shared_ptr<NetworkDevice> device, std::shared_ptr<LastFailure> lastFailure,
              std::uint32_t port, bool forIPP = false);
  const char* GetTypeName() override { return "Corvane::Host::CurlRequest"; }

 protected:
  std::wstring Describe(const RequestSettings& settings) const override;
  Outcome Perform(const RequestSettings& settings) override;
  virtual ExchangeLimits Limits(const RequestSettings& settings,
                                const DeviceSettings& device) const;

  NetworkDevice& Device() const { return *m_device; }
  std::string Url(const RequestSettings& settings) const;
  // The response that `result` is, or its error.
  static Outcome OutcomeOf(WireResult result, std::wstring remark);
  // Bytes of the body that the connection has taken.
  std::atomic<std::uint64_t>& SentBytes() { return m_sentBytes; }

 private:
  WireResult Exchange(const WireRequest& request, ExchangeClock* clock);
  WireResult ExchangeOnce(const WireRequest& request, const std::string& authorization,
                          ExchangeClock* clock);

  const std::shared_ptr<NetworkDevice> m_device;
  const std::uint32_t m_port;  // as asked for
  const bool m_forIPP;
  std::atomic<std::uint64_t> m_sentBytes{0};
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_HTTP_REQUEST_CURL_H_
