#include "tools/device.h"

#include <algorithm>
#include <string_view>

#include "host/recorded_address.h"
#include "tools/failure.h"
#include "tools/text_escape.h"
#include "tools/utf8.h"

#if CORVANE_HOST_NETWORK
#include "host/network_address.h"
#endif

namespace Corvane::Tool {
namespace {

constexpr std::string_view kRecordedPrefix = "recorded:";

[[noreturn]] void RefuseDevice(std::string_view device, const std::string& text) {
  throw Failure(kBadUsage, "device " + EscapeText(device) + ": " + text);
}

Ref<Address> OpenRecorded(const Options& options) {
  if (options.network.AnyGiven()) {
    RefuseDevice(options.device,
                 "--port, --tls, --cacert, --timeout and SNMP's are for devices on the network");
  }
  const std::string folder = options.device.substr(kRecordedPrefix.size());
  Ref<Address> address(Host::CreateRecordedAddress(PathFromUtf8(folder)));
  if (!address) RefuseDevice(options.device, "no such folder");
  return address;
}

#if CORVANE_HOST_NETWORK

// The host text without the brackets of an IPv6 literal.
std::string HostOf(const std::string& device) {
  if (device.empty() || device.find_first_of("/@?# \t\r\n") != std::string::npos) {
    RefuseDevice(device, "expected an IP address, a host name or recorded:FOLDER");
  }
  if (device.front() == '[' && device.back() == ']') return device.substr(1, device.size() - 2);
  if (std::count(device.begin(), device.end(), ':') == 1) {
    RefuseDevice(device, "an address has no port; say --port FROM=TO");
  }
  return device;
}

Ref<Address> OpenOnNetwork(const Options& options) {
  Host::NetworkOptions network;
  network.host = WideFromUtf8(HostOf(options.device));
  const NetworkArguments& given = options.network;
  network.portMap = given.portMap;
  network.tlsPorts.insert(given.tlsPorts.begin(), given.tlsPorts.end());
  network.caFile = given.caFile;
  const auto timeoutMs = given.timeoutMs ? given.timeoutMs : given.usualTimeoutMs;
  if (timeoutMs) {
    network.totalTimeoutMs = *timeoutMs;
    network.connectTimeoutMs = std::min(network.connectTimeoutMs, *timeoutMs);
  }
  if (given.maxResponseBytes) network.maxResponseBytes = *given.maxResponseBytes;
  network.snmp = SnmpOptionsOf(given.snmp, timeoutMs);
  Ref<Address> address(Host::CreateNetworkAddress(network));
  if (!address) RefuseDevice(options.device, "no such address");
  return address;
}

#else

Ref<Address> OpenOnNetwork(const Options& options) {
  RefuseDevice(options.device, "this build reads recorded devices only; expected recorded:FOLDER");
}

#endif

}  // namespace

bool IsRecorded(const Options& options) { return options.device.starts_with(kRecordedPrefix); }

Ref<Address> OpenDevice(const Options& options) {
  return IsRecorded(options) ? OpenRecorded(options) : OpenOnNetwork(options);
}

}  // namespace Corvane::Tool
