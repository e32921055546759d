#include "corvane/static_data_item_spec.h"

#include <new>

#include "spec/element.h"
#include "spec/owned_text.h"

namespace Corvane {

StaticDataItemSpec* StaticDataItemSpec::CreateStaticDataItemSpec() {
  return new (std::nothrow) StaticDataItemSpec();
}

StaticDataItemSpec* StaticDataItemSpec::CreateStaticDataItemSpec(IXMLDOMNode* element) {
  return new (std::nothrow) StaticDataItemSpec(element);
}

StaticDataItemSpec* StaticDataItemSpec::CreateStaticDataItemSpec(const wchar_t* name,
                                                                 const wchar_t* value,
                                                                 const wchar_t* prefix) {
  return new (std::nothrow) StaticDataItemSpec(name, value, prefix);
}

StaticDataItemSpec::StaticDataItemSpec() = default;

StaticDataItemSpec::StaticDataItemSpec(const wchar_t* name, const wchar_t* value,
                                       const wchar_t* prefix)
    : NexoDataItem(name, prefix), m_value(DuplicateText(value)) {}

StaticDataItemSpec::StaticDataItemSpec(IXMLDOMNode* element) : NexoDataItem(element) {
  if (element) m_value = DuplicateText(TextOfNode(element).Get());
}

StaticDataItemSpec::~StaticDataItemSpec() { FreeText(m_value); }

void StaticDataItemSpec::Initialize() { m_value = nullptr; }

}  // namespace Corvane
