#include "tools/options/device.h"

#include <algorithm>
#include <string_view>

#include "base/utf8.h"
#include "base/utf8_path.h"
#include "host/recorded/recorded_address.h"
#include "tools/output/failure.h"
#include "tools/output/text.h"

#if CORVANE_HOST_NETWORK
#include <netdb.h>

#include <chrono>
#include <vector>

#include "host/common/name_lookup.h"
#include "host/network_address.h"
#endif

namespace Corvane::Tool {
namespace {

constexpr std::string_view kRecordedPrefix = "recorded:";

[[noreturn]] void RefuseDevice(std::string_view device, const std::string& text) {
  throw Failure(kBadUsage, "device " + EscapeText(device) + ": " + text);
}

RefPtr<Address> OpenRecorded(const Options& options) {
  if (options.network.AnyGiven()) {
    RefuseDevice(options.device,
                 "--port, --tls, --cacert, --timeout and SNMP's are for devices on the network");
  }
  const std::string folder = options.device.substr(kRecordedPrefix.size());
  RefPtr<Address> address(Host::CreateRecordedAddress(PathFromUtf8(folder)));
  if (!address) RefuseDevice(options.device, "no such folder");
  return address;
}

#if CORVANE_HOST_NETWORK

// The host text without the brackets of an IPv6 literal.
std::string DeviceHostOf(const std::string& device) {
  if (device.empty() || device.find_first_of("/@?# \t\r\n") != std::string::npos) {
    RefuseDevice(device, "expected an IP address, a host name or recorded:FOLDER");
  }
  if (device.front() == '[' && device.back() == ']') return device.substr(1, device.size() - 2);
  if (std::count(device.begin(), device.end(), ':') == 1) {
    RefuseDevice(device, "an address has no port; say --port FROM=TO");
  }
  return device;
}

std::wstring AddressLiteralOf(const std::string& device, const std::string& host,
                              std::uint32_t timeoutMs) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  const std::vector<Host::SocketAddress> found = Host::LookUp(host, 0, deadline);
  char text[NI_MAXHOST];
  if (found.empty() || getnameinfo(&found.front().any, sizeof(found.front()), text, sizeof(text),
                                   nullptr, 0, NI_NUMERICHOST) != 0) {
    RefuseDevice(device, "no such host is known");
  }
  return ToWide(text);
}

RefPtr<Address> OpenOnNetwork(const Options& options) {
  Host::NetworkOptions network;
  network.host = ToWide(DeviceHostOf(options.device));
  const NetworkArguments& given = options.network;
  network.portMap = given.portMap;
  network.tlsPorts.insert(given.tlsPorts.begin(), given.tlsPorts.end());
  network.caFile = given.caFile;
  network.pinFile = given.trustFile;
  network.userName = ToWide(given.account);
  network.password = ToWide(given.password);
  const auto timeoutMs = given.timeoutMs ? given.timeoutMs : given.usualTimeoutMs;
  if (timeoutMs) {
    network.totalTimeoutMs = *timeoutMs;
    network.connectTimeoutMs = std::min(network.connectTimeoutMs, *timeoutMs);
  }
  if (given.maxResponseBytes) network.maxResponseBytes = *given.maxResponseBytes;
  network.snmp = SnmpOptionsOf(given.snmp, timeoutMs);
  // The library looks up no names; where it wants an IP literal, as of a printer, it has one.
  network.addressText =
      AddressLiteralOf(options.device, ToUtf8(network.host), network.connectTimeoutMs);
  RefPtr<Address> address(Host::CreateNetworkAddress(network));
  if (!address) RefuseDevice(options.device, "no such address");
  return address;
}

#else

RefPtr<Address> OpenOnNetwork(const Options& options) {
  RefuseDevice(options.device, "this build reads recorded devices only; expected recorded:FOLDER");
}

#endif

}  // namespace

bool IsRecorded(const Options& options) { return options.device.starts_with(kRecordedPrefix); }

std::string LastFailureOf(Address& device) {
  const wchar_t* const failure = device.GetLastFailure();
  return EscapeText(std::wstring_view(failure ? failure : L""));
}

RefPtr<Address> OpenDevice(const Options& options) {
  return IsRecorded(options) ? OpenRecorded(options) : OpenOnNetwork(options);
}

}  // namespace Corvane::Tool
