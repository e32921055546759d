// An item kept under an SNMP object identifier.
#ifndef CORVANE_OID_DATA_ITEM_SPEC_H_
#define CORVANE_OID_DATA_ITEM_SPEC_H_

#include "corvane/data_item_spec.h"

namespace Corvane {

class NextOIDDataItemSpec;

class CORVANE_API OIDDataItemSpec : public DataItemSpec {
 public:
  // Null when the object cannot be allocated. The caller deletes the item, or hands it to a data
  // map spec.
  static OIDDataItemSpec* CreateOIDDataItemSpec();
  static OIDDataItemSpec* CreateOIDDataItemSpec(IXMLDOMNode* element);
  static OIDDataItemSpec* CreateOIDDataItemSpec(const wchar_t* name, const wchar_t* oid,
                                                const wchar_t* group, bool transient,
                                                const wchar_t* prefix, std::uint64_t lifespan,
                                                const wchar_t* type);

  OIDDataItemSpec& operator=(const OIDDataItemSpec& other) = default;
  ~OIDDataItemSpec() override;
  void Initialize() override;
  // The item itself when it is a walk, null for a plain one.
  virtual NextOIDDataItemSpec* GetNextOIDDataItemSpec();

  const wchar_t* GetOid() const { return m_oid; }
  const wchar_t* GetGroup() const { return m_group; }

 protected:
  OIDDataItemSpec();
  OIDDataItemSpec(const wchar_t* name, const wchar_t* oid, const wchar_t* group, bool transient,
                  const wchar_t* prefix, std::uint64_t lifespan, const wchar_t* type);
  // Adds "OID" and "GroupID".
  explicit OIDDataItemSpec(IXMLDOMNode* element);
  OIDDataItemSpec(const OIDDataItemSpec& other) = default;

  wchar_t* m_group = nullptr;
  wchar_t* m_oid = nullptr;
};

}  // namespace Corvane

#endif  // CORVANE_OID_DATA_ITEM_SPEC_H_
