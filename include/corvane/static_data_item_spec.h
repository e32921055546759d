// An item with a constant value.
#ifndef CORVANE_STATIC_DATA_ITEM_SPEC_H_
#define CORVANE_STATIC_DATA_ITEM_SPEC_H_

#include "corvane/nexo_data_item.h"

namespace Corvane {

// Its value is the text of its element. It is not converted and never goes stale.
class CORVANE_API StaticDataItemSpec : public NexoDataItem {
 public:
  // Null when the object cannot be allocated. The caller deletes the item, or hands it to a data
  // map spec.
  static StaticDataItemSpec* CreateStaticDataItemSpec();
  static StaticDataItemSpec* CreateStaticDataItemSpec(IXMLDOMNode* element);
  static StaticDataItemSpec* CreateStaticDataItemSpec(const wchar_t* name, const wchar_t* value,
                                                      const wchar_t* prefix);

  StaticDataItemSpec& operator=(const StaticDataItemSpec& other) = default;
  ~StaticDataItemSpec() override;
  void Initialize() override;

  wchar_t* GetStaticDataItemValue() const { return m_value; }

 protected:
  StaticDataItemSpec();
  StaticDataItemSpec(const wchar_t* name, const wchar_t* value, const wchar_t* prefix);
  explicit StaticDataItemSpec(IXMLDOMNode* element);
  StaticDataItemSpec(const StaticDataItemSpec& other) = default;

  wchar_t* m_value = nullptr;
};

}  // namespace Corvane

#endif  // CORVANE_STATIC_DATA_ITEM_SPEC_H_
