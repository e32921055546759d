#include "tools/map/session.h"

#include <algorithm>
#include <utility>

#include "corvane/data_map_spec_collection.h"
#include "corvane/ipp_data_item_spec.h"
#include "corvane/ipp_provider.h"
#include "corvane/mib_connection.h"
#include "corvane/next_oid_data_item_spec.h"
#include "corvane/static_data_item_spec.h"
#include "corvane/xml_data_item_spec.h"
#include "tools/map/dom.h"
#include "tools/options/device.h"
#include "tools/output/failure.h"
#include "tools/output/text.h"

namespace Corvane::Tool {
namespace {

std::wstring TextOrEmpty(const wchar_t* text) { return text ? text : L""; }

// The protocol, or the element when it names none.
std::string DataMapLabel(const DataMap& map) {
  const std::wstring protocol = map.spec->GetProtocolType();
  return EscapeText(protocol.empty() ? map.element : protocol);
}

}  // namespace

Session::Session(Address& address, std::vector<DataMap> maps, ICacheProvider* cache)
    : m_address(address), m_cache(cache) {
  std::string problems = maps.empty() ? ": the specification holds no data map" : "";
  for (const DataMap& map : maps) {
    // Before the collection takes the static items out of the map.
    m_items = ItemsOf(*map.spec.Get());
    m_type = map.spec->GetDataMapType();
    if (TryDataMap(*map.spec.Get())) return;
    problems += "\ndata map " + std::to_string(map.number) + " (" + DataMapLabel(map) + "): ";
    problems += WhyNotUsed(map);
  }
  throw Failure(kNoAnswer, "no data map fits the device " +
                               EscapeText(TextOrEmpty(address.GetDisplayName())) + problems);
}

bool Session::TryDataMap(DataMapSpec& map) {
  RefPtr<DataMapSpecCollection> specs(DataMapSpecCollection::CreateDataMapSpecCollection());
  if (!specs) throw std::bad_alloc();
  map.AddRef();  // the collection takes it over
  SetLastError(0);
  specs->AddDataMapSpec(&map);
  return CreateDataCollectionFromDataMapSpecsCollection(&m_address, specs.Get(),
                                                        m_collection.Receive(), m_cache) == S_OK;
}

std::string Session::WhyNotUsed(const DataMap& map) const {
  switch (map.spec->GetDataMapType()) {
    case DataMapTypeUnknown:
      return map.spec->GetProtocolType().empty() ? "no protocol"
                                                 : "this build has no protocol of that name";
    case DataMapTypeIPP:
      return WhyNoIpp();
    case DataMapTypeOID:
      return WhyNoSnmp();
    default:
      break;
  }
  const std::string failure = LastFailureOf(m_address);
  return failure.empty() ? "the device answers, but does not speak the protocol" : failure;
}

std::string Session::WhyNoSnmp() const {
  const std::string failure = LastFailureOf(m_address);
  RefPtr<MIBConnection> session;
  if (m_address.GetMIBConnection(session.Receive()) == E_NOTIMPL) return "the device has no SNMP";
  return failure.empty() ? "the device's SNMP agent describes no printer" : failure;
}

// The library asks port 631 first by a connection of its own, of which the address knows nothing.
std::string Session::WhyNoIpp() const {
  const DWORD error = GetLastError();
  if (error == kIPPNotOnDevice) return "the device does not answer on port 631";
  if (error == kIPPDeviceSilent)
    return "the device is no IP address, or neither its port 631 nor 80 answers";
  if (error == kIPPVersion1) return VersionText("1.x");
  const std::string failure = LastFailureOf(m_address);
  return failure.empty() ? "the device has no printer at the map's ResourceURI" : failure;
}

NamedValue Session::Query(const std::wstring& name) {
  NamedValue answer;
  answer.name = name;
  answer.result = m_collection->GetValue(name.c_str(), answer.value.Receive());
  if (answer.result != S_OK) answer.problem = WhyNoValue(name, answer.result);
  return answer;
}

const Session::Item* Session::FindItem(std::wstring_view name) const {
  const auto item = std::find_if(m_items.begin(), m_items.end(),
                                 [name](const Item& each) { return each.name == name; });
  return item == m_items.end() ? nullptr : &*item;
}

std::string Session::WhyNoValue(std::wstring_view name, HRESULT result) const {
  const std::size_t colon = name.find(L':');
  const std::wstring_view itemName =
      colon == std::wstring_view::npos ? name : name.substr(colon + 1);
  const Item* item = FindItem(itemName);
  // Of a walk, and of an attribute with several values, a name may have a number behind a dot.
  const bool hasNumbers = m_type == DataMapTypeOID || m_type == DataMapTypeIPP;
  if (!item && hasNumbers) item = FindItem(itemName.substr(0, itemName.rfind(L'.')));
  if (!item) return "the data map has no such item";
  if (item->isStatic) return "a static item; its name is " + EscapeText(item->key);
  if (m_type == DataMapTypeOID) return WhyNoOidValue(*item, result);
  return m_type == DataMapTypeIPP ? WhyNoIppValue() : WhyNoXmlValue(*item, result);
}

std::string Session::WhyNoXmlValue(const Item& item, HRESULT result) const {
  if (item.uri.empty()) return "its item has no URI";
  if (item.xpath.empty()) return "its item has no XPath";
  if (result == S_FALSE) {
    return "the device's " + EscapeText(item.uri) + " has no " + EscapeText(item.xpath);
  }
  if (!IsPattern(item.xpath)) return "its XPath does not parse: " + EscapeText(item.xpath);
  return LastFailureOf(m_address);
}

std::string Session::WhyNoOidValue(const Item& item, HRESULT result) const {
  if (item.oid.empty()) return "its item has no OID";
  if (result == S_FALSE && item.isWalk) return "its walk has no such step";
  if (result == S_FALSE) return "the device has no value at " + EscapeText(item.oid);
  std::string failure = LastFailureOf(m_address);
  if (!failure.empty() || !item.isWalk) return failure;
  return "a step of a walk is 001 to 999, and its OID " + EscapeText(item.oid) +
         " numbers between dots";
}

std::string Session::WhyNoIppValue() const {
  const std::string failure = LastFailureOf(m_address);
  return failure.empty() ? "the printer has no such value" : failure;
}

std::vector<Session::Key> Session::Keys() const {
  std::vector<Key> keys;
  for (const Item& item : m_items) keys.push_back({item.key, item.isWalk});
  return keys;
}

std::wstring Session::StepKey(const std::wstring& walk, int step) {
  const std::wstring digits = std::to_wstring(1000 + step).substr(1);
  return walk + L'.' + digits;
}

std::vector<Session::Item> Session::ItemsOf(DataMapSpec& map) {
  std::vector<Item> items;
  // The parameters of an IPP map lie among its items, under this name.
  const auto* const parameters =
      dynamic_cast<const IPPDataItemSpec*>(map.GetDataItemSpec(L"IPPParams"));
  map.Begin();
  while (const NexoDataItem* const spec = map.GetNextDataItemSpec()) {
    if (spec == parameters) continue;
    Item item;
    item.name = TextOrEmpty(spec->GetName());
    item.key = ItemKey(*spec);
    item.isStatic = dynamic_cast<const StaticDataItemSpec*>(spec) != nullptr;
    if (const auto* const xml = dynamic_cast<const XMLDataItemSpec*>(spec)) {
      item.uri = TextOrEmpty(xml->GetUri());
      item.xpath = TextOrEmpty(xml->GetXPath());
    } else if (const auto* const oid = dynamic_cast<const OIDDataItemSpec*>(spec)) {
      item.oid = TextOrEmpty(oid->GetOid());
      item.isWalk = dynamic_cast<const NextOIDDataItemSpec*>(spec) != nullptr;
    }
    items.push_back(std::move(item));
  }
  return items;
}

}  // namespace Corvane::Tool
