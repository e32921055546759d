// An item that stands for a walk below an SNMP object identifier.
#ifndef CORVANE_NEXT_OID_DATA_ITEM_SPEC_H_
#define CORVANE_NEXT_OID_DATA_ITEM_SPEC_H_

#include "corvane/oid_data_item_spec.h"

namespace Corvane {

class CORVANE_API NextOIDDataItemSpec : public OIDDataItemSpec {
 public:
  // Null when the object cannot be allocated. The caller deletes the item, or hands it to a data
  // map spec.
  static NextOIDDataItemSpec* CreateNextOidDataItemSpec();
  static NextOIDDataItemSpec* CreateNextOidDataItemSpec(IXMLDOMNode* element);
  static NextOIDDataItemSpec* CreateNextOidDataItemSpec(const wchar_t* name, const wchar_t* oid,
                                                        const wchar_t* group, bool transient,
                                                        const wchar_t* prefix,
                                                        std::uint64_t lifespan, const wchar_t* type,
                                                        bool untilEnd, int count);

  NextOIDDataItemSpec& operator=(const NextOIDDataItemSpec& other) = default;
  ~NextOIDDataItemSpec() override;
  void Initialize() override;
  NextOIDDataItemSpec* GetNextOIDDataItemSpec() override;

  // The walk runs to the end of the subtree, whatever Count says.
  bool IsUntilEnd() const { return m_untilEnd; }
  // Steps of the walk at most; with 0, and not UntilEnd, it has none.
  int Count() const { return m_count; }

 protected:
  NextOIDDataItemSpec();
  NextOIDDataItemSpec(const wchar_t* name, const wchar_t* oid, const wchar_t* group, bool transient,
                      const wchar_t* prefix, std::uint64_t lifespan, const wchar_t* type,
                      bool untilEnd, int count);
  // Adds "UntilEnd" and "Count".
  explicit NextOIDDataItemSpec(IXMLDOMNode* element);
  NextOIDDataItemSpec(const NextOIDDataItemSpec& other) = default;

  // As UlongValueOf, signed: what 32 bits do not hold is the nearest that they do.
  static int IntValueOf(IXMLDOMNamedNodeMap* attributes, const wchar_t* name);

  std::int32_t m_count = 0;
  bool m_untilEnd = false;
};

}  // namespace Corvane

#endif  // CORVANE_NEXT_OID_DATA_ITEM_SPEC_H_
