// A request to a device on the network, performed by libcurl.
#ifndef CORVANE_HOST_HTTP_REQUEST_CURL_H_
#define CORVANE_HOST_HTTP_REQUEST_CURL_H_

#include <cstdint>
#include <memory>
#include <string>

#include "host/curl_exchange.h"
#include "host/network_device.h"
#include "host/request_base.h"

namespace Corvane::Host {

class CurlRequest final : public RequestBase {
 public:
  CurlRequest(std::shared_ptr<NetworkDevice> device, std::shared_ptr<LastFailure> lastFailure,
              std::uint32_t port);
  const char* GetTypeName() override { return "Corvane::Host::CurlRequest"; }

 protected:
  std::wstring Describe(const RequestSettings& settings) const override;
  Outcome Perform(const RequestSettings& settings) override;

 private:
  std::string Url(const RequestSettings& settings) const;
  WireResult Exchange(const WireRequest& request, const ExchangeLimits& limits);

  const std::shared_ptr<NetworkDevice> m_device;
  const std::uint32_t m_port;  // as asked for
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_REQUEST_CURL_H_
