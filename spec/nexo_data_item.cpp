#include "corvane/nexo_data_item.h"

#include "spec/element.h"
#include "spec/owned_text.h"

namespace Corvane {

NexoDataItem::NexoDataItem() = default;

NexoDataItem::NexoDataItem(const wchar_t* name, const wchar_t* prefix)
    : m_name(DuplicateText(name)),
      m_attributeId(DuplicateText(name)),
      m_prefix(DuplicateText(prefix)) {}

NexoDataItem::NexoDataItem(IXMLDOMNode* element) : NexoDataItem() {
  const auto attributes = AttributesOf(element);
  if (!attributes) return;
  m_name = TextValueOf(attributes.Get(), L"Name");
  m_attributeId = TextValueOf(attributes.Get(), L"AttributeID");
  if (!m_name) m_name = DuplicateText(m_attributeId);
  m_prefix = TextValueOf(attributes.Get(), L"Prefix");
}

NexoDataItem::~NexoDataItem() {
  FreeText(m_name);
  FreeText(m_attributeId);
  FreeText(m_prefix);
}

void NexoDataItem::Initialize() {
  m_name = nullptr;
  m_attributeId = nullptr;
  m_prefix = nullptr;
}

wchar_t* NexoDataItem::TextValueOf(IXMLDOMNamedNodeMap* attributes, const wchar_t* name) {
  return DuplicateText(AttributeText(attributes, name).Get());
}

}  // namespace Corvane
