#include "host/http/network_device.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

#include "base/utf8.h"
#include "host/http/request_url.h"

namespace Corvane::Host {
namespace {

constexpr std::uint32_t kMaxPort = 65535;

NetworkOptions WithoutCredentials(NetworkOptions options) {
  options.userName.clear();
  options.password.clear();
  return options;
}

}  // namespace

std::shared_ptr<NetworkDevice> NetworkDevice::Create(const NetworkOptions& options) {
  std::optional<std::string> urlHost = UrlHost(options.host);
  const bool portsExist =
      std::all_of(options.portMap.begin(), options.portMap.end(),
                  [](const auto& entry) { return entry.second != 0 && entry.second <= kMaxPort; });
  if (!urlHost || !portsExist || options.connectTimeoutMs == 0 || options.totalTimeoutMs == 0) {
    return nullptr;
  }
  // Thread-safe, counted by curl, and for the life of the process: a resolver's thread may outlive
  // every address.
  static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
  if (initialised != CURLE_OK) return nullptr;
  return std::make_shared<NetworkDevice>(options, *std::move(urlHost));
}

NetworkDevice::NetworkDevice(const NetworkOptions& options, std::string urlHost)
    : m_options(WithoutCredentials(options)),
      m_urlHost(std::move(urlHost)),
      m_pool({options.verifyCertificates, options.caFile, options.pinFile, std::nullopt}),
      m_settings{options.connectTimeoutMs, options.totalTimeoutMs,     options.userName,
                 options.password,         options.secretsOverTlsOnly, options.basicInClear} {}

std::uint32_t NetworkDevice::MappedPort(std::uint32_t port) const {
  const auto entry = m_options.portMap.find(port);
  return entry == m_options.portMap.end() ? port : entry->second;
}

std::string NetworkDevice::OriginOf(std::uint32_t port) const {
  return Origin(m_urlHost, MappedPort(port), m_options.tlsPorts.contains(port));
}

std::size_t NetworkDevice::MaxResponseBytes() const {
  // HTTPResponse counts in 32 bits.
  return std::min<std::size_t>(m_options.maxResponseBytes,
                               std::numeric_limits<std::uint32_t>::max());
}

DeviceSettings NetworkDevice::Settings() const {
  const std::lock_guard lock(m_mutex);
  return m_settings;
}

bool NetworkDevice::SetTimeouts(std::uint32_t connectMs, std::uint32_t totalMs) {
  if (connectMs == 0 || totalMs == 0) return false;
  const std::lock_guard lock(m_mutex);
  m_settings.connectTimeoutMs = connectMs;
  m_settings.totalTimeoutMs = totalMs;
  return true;
}

void NetworkDevice::SetUserName(const wchar_t* userName) {
  const std::lock_guard lock(m_mutex);
  m_settings.userName = OrEmpty(userName);
}

void NetworkDevice::SetPassword(const wchar_t* password) {
  const std::lock_guard lock(m_mutex);
  m_settings.password = OrEmpty(password);
}

}  // namespace Corvane::Host
