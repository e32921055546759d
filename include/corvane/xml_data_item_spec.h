// An item kept in one of the device's XML resources.
#ifndef CORVANE_XML_DATA_ITEM_SPEC_H_
#define CORVANE_XML_DATA_ITEM_SPEC_H_

#include "corvane/data_item_spec.h"

namespace Corvane {

class CORVANE_API XMLDataItemSpec : public DataItemSpec {
 public:
  // Null when the object cannot be allocated. The caller deletes the item, or hands it to a data
  // map spec.
  static XMLDataItemSpec* CreateXMLDataItem();
  static XMLDataItemSpec* CreateXMLDataItem(IXMLDOMNode* element);
  static XMLDataItemSpec* CreateXMLDataItem(const wchar_t* name, const wchar_t* uri,
                                            const wchar_t* xpath, const wchar_t* prefix,
                                            bool transient, std::uint64_t lifespan,
                                            const wchar_t* type);

  XMLDataItemSpec& operator=(const XMLDataItemSpec& other) = default;
  ~XMLDataItemSpec() override;
  void Initialize() override;

  const wchar_t* GetUri() const { return m_uri; }
  const wchar_t* GetXPath() const { return m_xpath; }

 protected:
  XMLDataItemSpec();
  XMLDataItemSpec(const wchar_t* name, const wchar_t* uri, const wchar_t* xpath,
                  const wchar_t* prefix, bool transient, std::uint64_t lifespan,
                  const wchar_t* type);
  // Adds "URI" and "XPath".
  explicit XMLDataItemSpec(IXMLDOMNode* element);
  XMLDataItemSpec(const XMLDataItemSpec& other) = default;

  wchar_t* m_uri = nullptr;
  wchar_t* m_xpath = nullptr;
};

}  // namespace Corvane

#endif  // CORVANE_XML_DATA_ITEM_SPEC_H_
