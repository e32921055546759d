// What an address on the network and its requests share.
#ifndef CORVANE_HOST_HTTP_NETWORK_DEVICE_H_
#define CORVANE_HOST_HTTP_NETWORK_DEVICE_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "host/common/network_options.h"
#include "host/http/connection_pool.h"

namespace Corvane::Host {

// What a request takes when its exchange begins. All but the last may change while the address
// lives.
struct DeviceSettings {
  std::uint32_t connectTimeoutMs = 0;
  std::uint32_t totalTimeoutMs = 0;
  std::wstring userName;
  std::wstring password;
  std::optional<bool> secretsOverTlsOnly;
  bool basicInClear = false;
};

// Any thread.
class NetworkDevice {
 public:
  // Null for options that no device can have.
  static std::shared_ptr<NetworkDevice> Create(const NetworkOptions& options);
  NetworkDevice(const NetworkOptions& options, std::string urlHost);

  const std::wstring& Host() const { return m_options.host; }
  const std::wstring& AddressText() const {
    return m_options.addressText.empty() ? m_options.host : m_options.addressText;
  }
  std::uint32_t MappedPort(std::uint32_t port) const;
  // "http://127.0.0.1:8080", of a port as asked for.
  std::string OriginOf(std::uint32_t port) const;
  std::size_t MaxResponseBytes() const;
  const SnmpOptions& Snmp() const { return m_options.snmp; }
  ConnectionPool& Pool() { return m_pool; }

  DeviceSettings Settings() const;
  // False for a limit of 0, which changes nothing.
  bool SetTimeouts(std::uint32_t connectMs, std::uint32_t totalMs);
  void SetUserName(const wchar_t* userName);
  void SetPassword(const wchar_t* password);

 private:
  const NetworkOptions m_options;  // without the credentials that m_settings has
  const std::string m_urlHost;
  ConnectionPool m_pool;

  mutable std::mutex m_mutex;
  DeviceSettings m_settings;  // guarded by m_mutex
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_NETWORK_DEVICE_H_
