#include "tools/ipp/probe.h"

#include <cstddef>
#include <future>
#include <optional>
#include <string_view>
#include <utility>

#include "base/utf8.h"
#include "corvane/data_collection.h"
#include "corvane/handles.h"
#include "ipp/wire/values.h"
#include "ipp/wire/writer.h"
#include "tools/ipp/ipp_exchange.h"
#include "tools/ipp/ipp_values.h"
#include "tools/map/answers.h"
#include "tools/map/dom.h"
#include "tools/options/device.h"

namespace Corvane::Tool {
namespace {

constexpr std::uint32_t kUsualTimeoutMs = 3'000;
// Documents of discovery and identity are some kilobytes; five probes hold theirs at once.
constexpr std::size_t kMaxResponseBytes = std::size_t{4} << 20;
// A longer text identifies nothing, and would flood the output.
constexpr std::size_t kMaxIdentityChars = 255;

constexpr char kIppPath[] = "/ipp/print";  // where a driverless printer is

// A protocol of the library is asked as a data map is.
struct Protocol {
  const char* name;
  std::uint32_t port;
  const wchar_t* specification;
};

constexpr Protocol kProtocols[] = {
    {"QUARN", kQuarnPort,
     LR"(<DataMaps><XMLDataMap Protocol="QUARN">
           <DataItem Name="Model" URI="quarn:zqQuarnProductConfigDyn" XPath="//dd:MakeAndModel"/>
           <DataItem Name="Serial" URI="quarn:zqQuarnProductConfigDyn" XPath="//dd:SerialNumber"/>
         </XMLDataMap></DataMaps>)"},
    {"WS", kWsPort,
     LR"(<DataMaps><XMLDataMap Protocol="WS">
           <DataItem Name="Model" URI="urn:zq:imaging:con:service:device:DeviceService"
                     XPath="//dd:MakeAndModel"/>
           <DataItem Name="Serial" URI="urn:zq:imaging:con:service:device:DeviceService"
                     XPath="//dd:SerialNumber"/>
         </XMLDataMap></DataMaps>)"},
    {"PLSXML", kHttpPort,
     LR"(<DataMaps><XMLDataMap Protocol="PLSXML">
           <DataItem Name="Serial" URI="/zq/device/product_information.xml"
                     XPath="//ProductSerialNumber"/>
           <DataItem Name="Model" URI="/zq/device/product_information.xml" XPath="//ProductName"/>
         </XMLDataMap></DataMaps>)"},
    // The standard's serial number, and the one that caches know a device by.
    {"SNMP", kSnmpPort,
     LR"(<DataMaps><OIDDataMap>
           <DataItem Name="Model" GroupID="i" OID="1.3.6.1.2.1.25.3.2.1.3.1"/>
           <DataItem Name="Serial" GroupID="i" OID="1.3.6.1.2.1.43.5.1.1.17.1"/>
           <DataItem Name="VendorSerial" GroupID="i"
                     OID="1.3.6.1.4.1.11.2.3.9.4.2.1.1.3.3.0"/>
           <DataItem Name="Name" GroupID="i" OID="1.3.6.1.2.1.1.5.0"/>
         </OIDDataMap></DataMaps>)"},
};

std::string ProbedIdentity(std::string_view text) {
  constexpr std::string_view kUrn = "urn:uuid:";
  if (text.starts_with(kUrn)) text.remove_prefix(kUrn.size());
  return text.size() <= kMaxIdentityChars ? std::string(text) : std::string();
}

// Nothing when the device does not answer any more.
std::optional<std::string> ReadProbeValue(DataCollection& values, const wchar_t* item) {
  UniqueVariant value;
  const HRESULT result = values.GetValue(item, value.Receive());
  if (FAILED(result)) return std::nullopt;
  return ProbedIdentity(result == S_OK ? ToUtf8(TextOf(value.Get())) : std::string());
}

// Items that the protocol's specification lacks have no value, and cost no exchange.
void ReadIdentity(DataCollection& values, Finding* finding) {
  // Each question may take the time-out of a device that fell silent: the first such ends it.
  auto text = ReadProbeValue(values, L"Model");
  if (!text) return;
  finding->model = *std::move(text);
  text = ReadProbeValue(values, L"Serial");
  if (!text) return;
  finding->serial = *std::move(text);
  if (finding->serial.empty())
    finding->serial = ReadProbeValue(values, L"VendorSerial").value_or("");
  finding->name = ReadProbeValue(values, L"Name").value_or("");
}

Finding ProbeLibrary(const Protocol& protocol, Address& device) {
  Finding finding;
  const ComInitialization com;
  RefPtr<DataCollection> values;
  if (CreateDataCollectionFromXML(&device, protocol.specification, values.Receive(), nullptr) !=
      S_OK) {
    finding.problem = LastFailureOf(device);
    if (finding.problem.empty()) finding.problem = "the device does not speak the protocol";
    return finding;
  }
  finding.answers = true;
  ReadIdentity(*values.Get(), &finding);
  if (finding.model.empty() && finding.serial.empty()) finding.problem = LastFailureOf(device);
  return finding;
}

std::string PrinterUriOf(Address& device) {
  const std::string host = ToUtf8(device.GetAddress());
  const bool isIPv6 = host.find(':') != std::string::npos;
  const std::uint32_t port = device.GetMappedPort(kIppPort);
  return "ipp://" + (isIPv6 ? '[' + host + ']' : host) +
         (port == kIppPort ? "" : ':' + std::to_string(port)) + kIppPath;
}

// By the tool's own exchange: the library's first asks port 631 itself, for as long as the system
// lets it.
Finding ProbeIpp(Address& device) {
  Finding finding;
  constexpr std::string_view kAsked[] = {"printer-make-and-model", "printer-uuid", "printer-name",
                                         "printer-state"};
  std::string request = BeginIPPRequest(IPPOperation::kGetPrinterAttributes, PrinterUriOf(device));
  AppendIPPValues(&request, IPPTag::kKeyword, "requested-attributes", kAsked);
  const auto answer = ExchangeIPP(device, kIppPort, kIppPath, std::move(request), &finding.problem);
  if (!answer) return finding;
  finding.answers = true;
  if (!IsSuccessful(*answer)) finding.problem = StatusText(*answer);
  const auto find = [&answer](const char* name) {
    return answer->Find(IPPTag::kPrinterAttributes, name);
  };
  const auto textOf = [&](const char* name) {
    return ProbedIdentity(TextOf(*answer, find(name)).value_or(""));
  };
  finding.model = textOf("printer-make-and-model");
  finding.uuid = textOf("printer-uuid");
  finding.name = textOf("printer-name");
  const auto state = IPPNumberOf(*answer, find("printer-state"));
  const char* const stateName = state ? PrinterStateName(*state) : nullptr;
  if (stateName) finding.state = stateName;
  return finding;
}

}  // namespace

std::vector<Finding> Probe(const Options& options) {
  Options reached = options;
  reached.network.usualTimeoutMs = kUsualTimeoutMs;
  reached.network.maxResponseBytes = kMaxResponseBytes;

  struct Running {
    const char* protocol;
    std::uint32_t port;
    std::future<Finding> finding;  // waits for its thread when it goes
  };
  std::vector<Running> running;
  // An address of its own for each, since an address tells the failure of any thread.
  const auto start = [&](const char* protocol, std::uint32_t port, auto probe) {
    RefPtr<Address> device = OpenDevice(reached);
    const std::uint32_t mapped = device->GetMappedPort(port);
    auto finding = std::async(std::launch::async, [probe, device = std::move(device)] {
      try {
        return probe(*device.Get());
      } catch (const _com_error&) {  // thrown for an SNMP text that is not valid
        Finding unreadable;
        unreadable.problem = "an answer that cannot be read";
        return unreadable;
      }
    });
    running.push_back({protocol, mapped, std::move(finding)});
  };
  for (const Protocol& protocol : kProtocols) {
    start(protocol.name, protocol.port,
          [&protocol](Address& device) { return ProbeLibrary(protocol, device); });
  }
  start("IPP", kIppPort, [](Address& device) { return ProbeIpp(device); });

  std::vector<Finding> findings;
  for (Running& each : running) {
    Finding& finding = findings.emplace_back(each.finding.get());
    finding.protocol = each.protocol;
    finding.port = each.port;
  }
  return findings;
}

}  // namespace Corvane::Tool
