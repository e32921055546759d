#include "corvane/oid_data_item_spec.h"

#include <new>

#include "spec/element.h"
#include "spec/owned_text.h"

namespace Corvane {

OIDDataItemSpec* OIDDataItemSpec::CreateOIDDataItemSpec() {
  return new (std::nothrow) OIDDataItemSpec();
}

OIDDataItemSpec* OIDDataItemSpec::CreateOIDDataItemSpec(IXMLDOMNode* element) {
  return new (std::nothrow) OIDDataItemSpec(element);
}

OIDDataItemSpec* OIDDataItemSpec::CreateOIDDataItemSpec(const wchar_t* name, const wchar_t* oid,
                                                        const wchar_t* group, bool transient,
                                                        const wchar_t* prefix,
                                                        std::uint64_t lifespan,
                                                        const wchar_t* type) {
  return new (std::nothrow) OIDDataItemSpec(name, oid, group, transient, prefix, lifespan, type);
}

OIDDataItemSpec::OIDDataItemSpec() = default;

OIDDataItemSpec::OIDDataItemSpec(const wchar_t* name, const wchar_t* oid, const wchar_t* group,
                                 bool transient, const wchar_t* prefix, std::uint64_t lifespan,
                                 const wchar_t* type)
    : DataItemSpec(name, transient, prefix, lifespan, type),
      m_group(DuplicateText(group)),
      m_oid(DuplicateText(oid)) {}

OIDDataItemSpec::OIDDataItemSpec(IXMLDOMNode* element) : DataItemSpec(element) {
  const auto attributes = AttributesOf(element);
  UniqueText oid(TextValueOf(attributes.Get(), L"OID"));
  m_group = TextValueOf(attributes.Get(), L"GroupID");
  m_oid = oid.release();
}

OIDDataItemSpec::~OIDDataItemSpec() {
  FreeText(m_group);
  FreeText(m_oid);
}

void OIDDataItemSpec::Initialize() {
  m_group = nullptr;
  m_oid = nullptr;
}

NextOIDDataItemSpec* OIDDataItemSpec::GetNextOIDDataItemSpec() { return nullptr; }

}  // namespace Corvane
