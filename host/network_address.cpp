#include <utility>

#include "host/common/address_base.h"
#include "host/http/http_request_curl.h"
#include "host/http/ipp_request_curl.h"
#include "host/http/network_device.h"
#include "host/network_address.h"
#include "host/snmp/mib_connection_netsnmp.h"

#include "base/exception_wall.h"

namespace Corvane::Host {
namespace {

class NetworkAddress final : public AddressBase {
 public:
  explicit NetworkAddress(std::shared_ptr<NetworkDevice> device) : m_device(std::move(device)) {}
  const char* GetTypeName() override { return "Corvane::Host::NetworkAddress"; }

  const wchar_t* GetDisplayName() override { return m_device->Host().c_str(); }
  const wchar_t* GetAddress() override { return m_device->AddressText().c_str(); }
  std::uint32_t GetMappedPort(std::uint32_t port) override { return m_device->MappedPort(port); }
  void SetUserName(const wchar_t* userName) override { m_device->SetUserName(userName); }
  void SetPassword(const wchar_t* password) override { m_device->SetPassword(password); }
  HRESULT SetTimeouts(std::uint32_t connectMs, std::uint32_t totalMs) override {
    return m_device->SetTimeouts(connectMs, totalMs) ? S_OK : E_INVALIDARG;
  }

 protected:
  HTTPRequest* MakeRequest(std::uint32_t port) override {
    return new CurlRequest(m_device, Failure(), port);
  }
  HTTPRequest* MakeIPPRequest(std::uint32_t port) override {
    return new CurlIPPRequest(m_device, Failure(), port);
  }
  HRESULT MakeConnection(MIBConnection** connection) override {
    *connection = MakeNetSnmpConnection(*m_device, Failure());
    return *connection ? S_OK : E_INVALIDARG;
  }

 private:
  const std::shared_ptr<NetworkDevice> m_device;
};

}  // namespace

Address* CreateNetworkAddress(const NetworkOptions& options) {
  return BehindWall<Address*>(nullptr, [&]() -> Address* {
    std::shared_ptr<NetworkDevice> device = NetworkDevice::Create(options);
    if (!device) return nullptr;
    auto* const address = new NetworkAddress(std::move(device));
    address->AddRef();
    return address;
  });
}

}  // namespace Corvane::Host
