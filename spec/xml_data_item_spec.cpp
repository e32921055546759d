#include "corvane/xml_data_item_spec.h"

#include <new>

#include "spec/element.h"
#include "spec/owned_text.h"

namespace Corvane {

XMLDataItemSpec* XMLDataItemSpec::CreateXMLDataItem() {
  return new (std::nothrow) XMLDataItemSpec();
}

XMLDataItemSpec* XMLDataItemSpec::CreateXMLDataItem(IXMLDOMNode* element) {
  return new (std::nothrow) XMLDataItemSpec(element);
}

XMLDataItemSpec* XMLDataItemSpec::CreateXMLDataItem(const wchar_t* name, const wchar_t* uri,
                                                    const wchar_t* xpath, const wchar_t* prefix,
                                                    bool transient, std::uint64_t lifespan,
                                                    const wchar_t* type) {
  return new (std::nothrow) XMLDataItemSpec(name, uri, xpath, prefix, transient, lifespan, type);
}

XMLDataItemSpec::XMLDataItemSpec() = default;

XMLDataItemSpec::XMLDataItemSpec(const wchar_t* name, const wchar_t* uri, const wchar_t* xpath,
                                 const wchar_t* prefix, bool transient, std::uint64_t lifespan,
                                 const wchar_t* type)
    : DataItemSpec(name, transient, prefix, lifespan, type),
      m_uri(DuplicateText(uri)),
      m_xpath(DuplicateText(xpath)) {}

XMLDataItemSpec::XMLDataItemSpec(IXMLDOMNode* element) : DataItemSpec(element) {
  const auto attributes = AttributesOf(element);
  UniqueText uri(TextValueOf(attributes.Get(), L"URI"));
  m_xpath = TextValueOf(attributes.Get(), L"XPath");
  m_uri = uri.release();
}

XMLDataItemSpec::~XMLDataItemSpec() {
  FreeText(m_uri);
  FreeText(m_xpath);
}

void XMLDataItemSpec::Initialize() {
  m_uri = nullptr;
  m_xpath = nullptr;
}

}  // namespace Corvane
