#include "corvane/data_item_spec.h"

#include <algorithm>
#include <limits>

#include "base/decimal.h"
#include "base/letter_case.h"
#include "spec/element.h"
#include "spec/owned_text.h"

namespace Corvane {

DataItemSpec::DataItemSpec() = default;

DataItemSpec::DataItemSpec(const wchar_t* name, bool transient, const wchar_t* prefix,
                           std::uint64_t lifespan, const wchar_t* type)
    : NexoDataItem(name, prefix),
      m_lifespan(static_cast<std::uint32_t>(
          std::min<std::uint64_t>(lifespan, std::numeric_limits<std::uint32_t>::max()))),
      m_transient(transient),
      m_type(DuplicateText(type)) {}

DataItemSpec::DataItemSpec(IXMLDOMNode* element) : NexoDataItem(element) {
  const auto attributes = AttributesOf(element);
  if (!attributes) return;
  UniqueText type(TextValueOf(attributes.Get(), L"Type"));
  m_transient = BoolValueOf(attributes.Get(), L"Transient");
  m_lifespan = static_cast<std::uint32_t>(UlongValueOf(attributes.Get(), L"LifeSpan"));
  AddToConversionCollection(element);
  m_type = type.release();
}

DataItemSpec::~DataItemSpec() { FreeText(m_type); }

void DataItemSpec::Initialize() {
  m_lifespan = 0;
  m_transient = false;
  m_type = nullptr;
}

bool DataItemSpec::BoolValueOf(IXMLDOMNamedNodeMap* attributes, const wchar_t* name) {
  return EqualsIgnoreAsciiCase(AttributeText(attributes, name).View(), L"true");
}

unsigned long DataItemSpec::UlongValueOf(IXMLDOMNamedNodeMap* attributes, const wchar_t* name) {
  return LeadingUint32(AttributeText(attributes, name).View());
}

bool DataItemSpec::ElementNameIs(IXMLDOMNode* node, const wchar_t* name) {
  return name && LocalNameIs(node, name);
}

void DataItemSpec::AddToConversionCollection(IXMLDOMNode* element) {
  const auto children = ChildrenOf(element);
  ForEachNode(children.Get(), [this](IXMLDOMNode* child) {
    if (!ElementNameIs(child, L"Conversion")) return;
    const auto attributes = AttributesOf(child);
    const UniqueBstr contains = AttributeText(attributes.Get(), L"Contains");
    const UniqueBstr value = AttributeText(attributes.Get(), L"Value");
    if (!contains.Get() || !value.Get()) return;
    m_conversions[ToLower(contains.View())] = value.View();
  });
}

}  // namespace Corvane
