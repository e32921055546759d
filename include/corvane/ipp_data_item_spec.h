// An item kept in an IPP attribute, and the parameters of an IPP data map.
#ifndef CORVANE_IPP_DATA_ITEM_SPEC_H_
#define CORVANE_IPP_DATA_ITEM_SPEC_H_

#include "corvane/data_item_spec.h"

namespace Corvane {

// Made by a data map spec alone, from an element.
class CORVANE_API IPPDataItemSpec : public DataItemSpec {
 public:
  IPPDataItemSpec& operator=(const IPPDataItemSpec& other) = default;
  ~IPPDataItemSpec() override;
  void Initialize() override;

 protected:
  friend class DataMapSpec;
  friend class IPPDataMapper;

  IPPDataItemSpec();
  // Adds "Command", "JobURI", "ResourceURI", "Charset" and "Lang".
  explicit IPPDataItemSpec(IXMLDOMNode* element);
  IPPDataItemSpec(const IPPDataItemSpec& other) = default;

  wchar_t* m_command = nullptr;
  wchar_t* m_jobUri = nullptr;
  wchar_t* m_resourceUri = nullptr;
  wchar_t* m_charset = nullptr;
  wchar_t* m_lang = nullptr;
};

}  // namespace Corvane

#endif  // CORVANE_IPP_DATA_ITEM_SPEC_H_
