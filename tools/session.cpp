#include "tools/session.h"

#include <algorithm>
#include <utility>

#include "corvane/data_map_spec_collection.h"
#include "corvane/static_data_item_spec.h"
#include "corvane/xml_data_item_spec.h"
#include "tools/dom.h"
#include "tools/failure.h"
#include "tools/text_escape.h"

namespace Corvane::Tool {
namespace {

std::wstring TextOrEmpty(const wchar_t* text) { return text ? text : L""; }

std::string LastFailureOf(Address& address) {
  return EscapeText(TextOrEmpty(address.GetLastFailure()));
}

// The protocol, or the element when it names none.
std::string LabelOf(const DataMap& map) {
  const std::wstring protocol = map.spec->GetProtocolType();
  return EscapeText(protocol.empty() ? map.element : protocol);
}

}  // namespace

Session::Session(Address& address, std::vector<DataMap> maps) : m_address(address) {
  std::string problems = maps.empty() ? ": the specification holds no data map" : "";
  for (const DataMap& map : maps) {
    // Before the collection takes the static items out of the map.
    m_items = ItemsOf(*map.spec.Get());
    if (TryDataMap(*map.spec.Get())) return;
    problems += "\ndata map " + std::to_string(map.number) + " (" + LabelOf(map) + "): ";
    problems += WhyNotUsed(map);
  }
  throw Failure(kNoDataMapFits, "no data map fits the device " +
                                    EscapeText(TextOrEmpty(address.GetDisplayName())) + problems);
}

bool Session::TryDataMap(DataMapSpec& map) {
  Ref<DataMapSpecCollection> specs(DataMapSpecCollection::CreateDataMapSpecCollection());
  if (!specs) throw std::bad_alloc();
  map.AddRef();  // the collection takes it over
  specs->AddDataMapSpec(&map);
  return CreateDataCollectionFromDataMapSpecsCollection(&m_address, specs.Get(),
                                                        m_collection.Receive(), nullptr) == S_OK;
}

std::string Session::WhyNotUsed(const DataMap& map) const {
  switch (map.spec->GetDataMapType()) {
    case DataMapTypeUnknown:
      return map.spec->GetProtocolType().empty() ? "no protocol"
                                                 : "this build has no protocol of that name";
    case DataMapTypeIPP:
    case DataMapTypeOID:
      return "this build has no provider for the protocol";
    default:
      break;
  }
  const std::string failure = LastFailureOf(m_address);
  return failure.empty() ? "the device answers, but does not speak the protocol" : failure;
}

NamedValue Session::Query(const std::wstring& name) {
  NamedValue answer;
  answer.name = name;
  answer.result = m_collection->GetValue(name.c_str(), answer.value.Receive());
  if (answer.result != S_OK) answer.problem = WhyNoValue(name, answer.result);
  return answer;
}

std::string Session::WhyNoValue(std::wstring_view name, HRESULT result) const {
  const std::size_t colon = name.find(L':');
  const std::wstring_view itemName =
      colon == std::wstring_view::npos ? name : name.substr(colon + 1);
  const auto item = std::find_if(m_items.begin(), m_items.end(),
                                 [itemName](const Item& each) { return each.name == itemName; });
  if (item == m_items.end()) return "the data map has no such item";
  if (item->isStatic) return "a static item; its name is " + EscapeText(item->key);
  if (item->uri.empty()) return "its item has no URI";
  if (item->xpath.empty()) return "its item has no XPath";
  if (result == S_FALSE) {
    return "the device's " + EscapeText(item->uri) + " has no " + EscapeText(item->xpath);
  }
  if (!IsPattern(item->xpath)) return "its XPath does not parse: " + EscapeText(item->xpath);
  return LastFailureOf(m_address);
}

std::vector<std::wstring> Session::Keys() const {
  std::vector<std::wstring> keys;
  for (const Item& item : m_items) keys.push_back(item.key);
  return keys;
}

std::vector<Session::Item> Session::ItemsOf(DataMapSpec& map) {
  std::vector<Item> items;
  map.Begin();
  while (const NexoDataItem* const spec = map.GetNextDataItemSpec()) {
    Item item;
    item.name = TextOrEmpty(spec->GetName());
    // A prefix counts even when it is empty: the item is then ":NAME".
    if (spec->GetPrefix()) item.key = TextOrEmpty(spec->GetPrefix()) + L":";
    item.key += item.name;
    item.isStatic = dynamic_cast<const StaticDataItemSpec*>(spec) != nullptr;
    if (const auto* const xml = dynamic_cast<const XMLDataItemSpec*>(spec)) {
      item.uri = TextOrEmpty(xml->GetUri());
      item.xpath = TextOrEmpty(xml->GetXPath());
    }
    items.push_back(std::move(item));
  }
  return items;
}

}  // namespace Corvane::Tool
