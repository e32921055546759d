#include "corvane/ipp_data_item_spec.h"

#include "spec/element.h"
#include "spec/owned_text.h"

namespace Corvane {

IPPDataItemSpec::IPPDataItemSpec() = default;

IPPDataItemSpec::IPPDataItemSpec(IXMLDOMNode* element) : DataItemSpec(element) {
  const auto attributes = AttributesOf(element);
  UniqueText command(TextValueOf(attributes.Get(), L"Command"));
  UniqueText jobUri(TextValueOf(attributes.Get(), L"JobURI"));
  UniqueText resourceUri(TextValueOf(attributes.Get(), L"ResourceURI"));
  UniqueText charset(TextValueOf(attributes.Get(), L"Charset"));
  m_lang = TextValueOf(attributes.Get(), L"Lang");
  m_command = command.release();
  m_jobUri = jobUri.release();
  m_resourceUri = resourceUri.release();
  m_charset = charset.release();
}

IPPDataItemSpec::~IPPDataItemSpec() {
  FreeText(m_command);
  FreeText(m_jobUri);
  FreeText(m_resourceUri);
  FreeText(m_charset);
  FreeText(m_lang);
}

void IPPDataItemSpec::Initialize() {
  m_command = nullptr;
  m_jobUri = nullptr;
  m_resourceUri = nullptr;
  m_charset = nullptr;
  m_lang = nullptr;
}

}  // namespace Corvane
