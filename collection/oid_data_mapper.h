// The data collection over a map of SNMP objects.
#ifndef CORVANE_COLLECTION_OID_DATA_MAPPER_H_
#define CORVANE_COLLECTION_OID_DATA_MAPPER_H_

#include <string>
#include <string_view>
#include <vector>

#include "collection/data_collection_impl.h"
#include "corvane/next_oid_data_item_spec.h"
#include "corvane/oid_provider.h"

namespace Corvane {

// Values come from the store while fresh. On a miss an item is read by itself, together with the
// other items of its group, or by a walk; every value is converted by its item, and stored for its
// item's lifespan unless the item is transient.
class OIDDataMapper : public DataCollectionImpl, public IDisposableImpl {
 public:
  // Steps of a walk have three digits.
  static constexpr int kMaxSteps = 999;
  // And a walk takes no new step after this time, however slowly the agent answers.
  static constexpr int kMaxWalkSeconds = 60;

  // Takes a reference to each that is not null.
  OIDDataMapper(OIDProvider* provider, DataMapSpec* spec);
  ~OIDDataMapper() override;

  std::uint32_t AddRef() override { return AddRefImpl(); }
  std::uint32_t AddRefConst() override { return AddRefImpl(); }
  std::uint32_t Dispose() override { return DisposeImpl(); }
  std::uint32_t Release() override { return DisposeImpl(); }
  const char* GetTypeName() override;

  // `name` is "name", "prefix:name", or either with "." and the three digits of a walk's step,
  // "tray:Level.002"; a walk asked for without a step answers its first.
  //
  // - An item with a "GroupID" is read in one request with all others of the group, and each is
  //   stored under its item key, so that asking for the next costs no exchange. Left out are
  //   transient items, walks, and OIDs with a trigger. When the request fails as a whole the item
  //   is read alone.
  // - A walk stores each step. It ends after "Count" steps, or with "UntilEnd" at the end of the
  //   subtree; at an OID that is not below the base, or not behind the one before; after kMaxSteps
  //   or kMaxWalkSeconds; and with the first failure, which is the result when the step asked for
  //   was not reached. A transient walk ends at that step.
  //
  // S_FALSE when a walk has no such step, or the device no value (VT_EMPTY, VT_NULL or VT_ERROR)
  // where the session tells no failure; E_FAIL when a walk's time is up before the step.
  HRESULT GetValue(const wchar_t* name, VARIANT* value) override;
  std::wstring GetDataMapName() override;

 private:
  struct Request;

  // The request is settled by it: whether its name ends with a suffix, and where.
  OIDDataItemSpec* FindItem(Request* request);
  // Each gives a converted value, which is stored.
  HRESULT GetAlone(const OIDDataItemSpec& item, const std::wstring& key, _variant_t* value);
  HRESULT GetGrouped(const OIDDataItemSpec& item, const wchar_t* name, _variant_t* value);
  HRESULT GetStep(NextOIDDataItemSpec& item, const Request& request, _variant_t* value);

  std::vector<const OIDDataItemSpec*> GroupOf(const OIDDataItemSpec& item);
  HRESULT ReadGroup(const OIDDataItemSpec& item, _variant_t* value);
  HRESULT Walk(NextOIDDataItemSpec& item, const std::wstring& base, int wanted, _variant_t* value);
  void ForgetStepsFrom(int step, const std::wstring& base);
  // Converts the value in place and stores it unless the item is transient. False when it is none.
  bool Keep(const OIDDataItemSpec& item, const std::wstring& key, _variant_t* value);

  RefPtr<OIDProvider> m_provider;
  RefPtr<DataMapSpec> m_spec;
  ComInitialization m_mapperCom;
};

}  // namespace Corvane

#endif  // CORVANE_COLLECTION_OID_DATA_MAPPER_H_
