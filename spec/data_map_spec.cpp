#include "corvane/data_map_spec.h"

#include <memory>
#include <new>

#include "base/letter_case.h"
#include "core/trace.h"
#include "corvane/ipp_data_item_spec.h"
#include "corvane/next_oid_data_item_spec.h"
#include "corvane/static_data_item_spec.h"
#include "corvane/xml_data_item_spec.h"
#include "spec/element.h"

namespace Corvane {
namespace {

// In the order in which a protocol's text is compared.
constexpr struct {
  DataMapTypeEnum type;
  const wchar_t* protocol;
} kProtocols[] = {
    {DataMapTypeQUARN, L"QUARN"}, {DataMapTypeWS, L"WS"},   {DataMapTypePLSXML, L"PLSXML"},
    {DataMapTypeOID, L"OID"},     {DataMapTypeIPP, L"IPP"},
};

constexpr wchar_t kIppParams[] = L"IPPParams";

}  // namespace

DataMapSpec* DataMapSpec::CreateDataMapSpec() { return new (std::nothrow) DataMapSpec(); }

DataMapSpec* DataMapSpec::CreateDataMapSpec(DataMapTypeEnum type) {
  return new (std::nothrow) DataMapSpec(type);
}

DataMapSpec* DataMapSpec::CreateDataMapSpec(IXMLDOMNode* mapElement) {
  return new (std::nothrow) DataMapSpec(mapElement);
}

DataMapSpec::DataMapSpec() { AddRefImpl(); }

DataMapSpec::DataMapSpec(DataMapTypeEnum type) : DataMapSpec() {
  for (const auto& known : kProtocols) {
    if (known.type == type) m_protocol = known.protocol;
  }
}

DataMapSpec::DataMapSpec(IXMLDOMNode* mapElement) : DataMapSpec() {
  const auto children = ChildrenOf(mapElement);
  if (LocalNameIs(mapElement, L"XMLDataMap")) {
    if (!children) return;
    const auto attributes = AttributesOf(mapElement);
    m_protocol = AttributeText(attributes.Get(), L"Protocol").View();
    ReadItems(children.Get(), MapElement::kXml);
  } else if (LocalNameIs(mapElement, L"OIDDataMap")) {
    m_protocol = L"OID";
    ReadItems(children.Get(), MapElement::kOid);
  } else if (LocalNameIs(mapElement, L"IPPDataMap")) {
    m_protocol = L"IPP";
    ReadItems(children.Get(), MapElement::kIpp);
  }
}

DataMapSpec::~DataMapSpec() {
  for (const auto& entry : m_items) delete entry.second;
}

void DataMapSpec::ReadItems(IXMLDOMNodeList* children, MapElement kind) {
  ForEachNode(children, [this, kind](IXMLDOMNode* child) {
    if (LocalNameIs(child, L"DataItem")) {
      KeepItem(CreateDataItem(child, kind));
    } else if (LocalNameIs(child, L"StaticDataItem")) {
      KeepItem(StaticDataItemSpec::CreateStaticDataItemSpec(child));
    } else if (kind == MapElement::kOid && LocalNameIs(child, L"NextDataItem")) {
      KeepItem(NextOIDDataItemSpec::CreateNextOidDataItemSpec(child));
    } else if (kind == MapElement::kIpp && LocalNameIs(child, kIppParams)) {
      KeepItem(CreateDataItem(child, kind), kIppParams);
    }
  });
}

NexoDataItem* DataMapSpec::CreateDataItem(IXMLDOMNode* element, MapElement kind) {
  switch (kind) {
    case MapElement::kXml:
      return XMLDataItemSpec::CreateXMLDataItem(element);
    case MapElement::kOid:
      return OIDDataItemSpec::CreateOIDDataItemSpec(element);
    case MapElement::kIpp:
      return new (std::nothrow) IPPDataItemSpec(element);
  }
  return nullptr;
}

// An item of the same name that was read before is destroyed: nobody else has seen it.
void DataMapSpec::KeepItem(NexoDataItem* item, const wchar_t* fixedName) {
  std::unique_ptr<NexoDataItem> owned(item);
  if (!item || !item->GetName()) return;
  NexoDataItem*& entry = m_items[fixedName ? fixedName : item->GetName()];
  delete entry;
  entry = owned.release();
}

void DataMapSpec::AddDataItemSpec(const wchar_t* name, NexoDataItem* item) {
  std::unique_ptr<NexoDataItem> owned(item);
  if (!name) return;
  m_items[name] = item;
  static_cast<void>(owned.release());
}

NexoDataItem* DataMapSpec::GetDataItemSpec(std::wstring name) {
  const auto found = m_items.find(name);
  return found == m_items.end() ? nullptr : found->second;
}

DataMapTypeEnum DataMapSpec::TypeOfProtocol(std::wstring_view protocol) {
  for (const auto& known : kProtocols) {
    if (EqualsIgnoreAsciiCase(protocol, known.protocol)) return known.type;
  }
  return DataMapTypeUnknown;
}

DataMapTypeEnum DataMapSpec::GetDataMapType() { return TypeOfProtocol(m_protocol); }

std::wstring DataMapSpec::GetProtocolType() { return m_protocol; }

int DataMapSpec::SizeOf() { return static_cast<int>(m_items.size()); }

void DataMapSpec::Begin() { m_cursor = m_items.begin(); }

NexoDataItem* DataMapSpec::GetNextDataItemSpec() {
  return m_cursor == m_items.end() ? nullptr : (m_cursor++)->second;
}

// Erasing a map entry leaves the cursor, at the next name, valid.
void DataMapSpec::RemoveFromMap() {
  if (m_cursor == m_items.end() || m_cursor == m_items.begin()) return;
  const auto last = std::prev(m_cursor);
  delete last->second;
  m_items.erase(last);
}

const char* DataMapSpec::GetTypeName() { return kClassIdentification; }

}  // namespace Corvane
