#include "corvane/next_oid_data_item_spec.h"

#include <new>

#include "base/decimal.h"
#include "spec/element.h"

namespace Corvane {

NextOIDDataItemSpec* NextOIDDataItemSpec::CreateNextOidDataItemSpec() {
  return new (std::nothrow) NextOIDDataItemSpec();
}

NextOIDDataItemSpec* NextOIDDataItemSpec::CreateNextOidDataItemSpec(IXMLDOMNode* element) {
  return new (std::nothrow) NextOIDDataItemSpec(element);
}

NextOIDDataItemSpec* NextOIDDataItemSpec::CreateNextOidDataItemSpec(
    const wchar_t* name, const wchar_t* oid, const wchar_t* group, bool transient,
    const wchar_t* prefix, std::uint64_t lifespan, const wchar_t* type, bool untilEnd, int count) {
  return new (std::nothrow)
      NextOIDDataItemSpec(name, oid, group, transient, prefix, lifespan, type, untilEnd, count);
}

NextOIDDataItemSpec::NextOIDDataItemSpec() = default;

NextOIDDataItemSpec::NextOIDDataItemSpec(const wchar_t* name, const wchar_t* oid,
                                         const wchar_t* group, bool transient,
                                         const wchar_t* prefix, std::uint64_t lifespan,
                                         const wchar_t* type, bool untilEnd, int count)
    : OIDDataItemSpec(name, oid, group, transient, prefix, lifespan, type),
      m_count(count),
      m_untilEnd(untilEnd) {}

NextOIDDataItemSpec::NextOIDDataItemSpec(IXMLDOMNode* element) : OIDDataItemSpec(element) {
  const auto attributes = AttributesOf(element);
  m_untilEnd = BoolValueOf(attributes.Get(), L"UntilEnd");
  m_count = IntValueOf(attributes.Get(), L"Count");
}

NextOIDDataItemSpec::~NextOIDDataItemSpec() = default;

void NextOIDDataItemSpec::Initialize() {
  m_count = 0;
  m_untilEnd = false;
}

NextOIDDataItemSpec* NextOIDDataItemSpec::GetNextOIDDataItemSpec() { return this; }

int NextOIDDataItemSpec::IntValueOf(IXMLDOMNamedNodeMap* attributes, const wchar_t* name) {
  return LeadingInt32(AttributeText(attributes, name).View());
}

}  // namespace Corvane
