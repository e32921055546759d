// The data collection over a map of IPP attributes.
#ifndef CORVANE_COLLECTION_IPP_DATA_MAPPER_H_
#define CORVANE_COLLECTION_IPP_DATA_MAPPER_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "collection/data_collection_impl.h"
#include "corvane/ipp_data_item_spec.h"
#include "ipp/provider/ipp_provider_impl.h"

namespace Corvane {

// Values come from the store while fresh. On a miss a printer attribute comes from what the
// provider read when it was made, as long as that is fresh by the item's lifespan, else from the
// printer; a job attribute and a transient item always from the printer. Every value is converted
// by its item and stored for its lifespan, from the moment when it was read, unless the item is
// transient.
//
// The attribute is the item's AttributeID, or its Name without one. The item's own "Command",
// "JobURI", "ResourceURI", "Charset" and "Lang" go before those of the map's "IPPParams".
class IPPDataMapper : public DataCollectionImpl, public IDisposableImpl {
 public:
  // Takes a reference to each that is not null.
  IPPDataMapper(IPPProviderImpl* provider, DataMapSpec* spec);
  ~IPPDataMapper() override;

  std::uint32_t AddRef() override { return AddRefImpl(); }
  std::uint32_t AddRefConst() override { return AddRefImpl(); }
  std::uint32_t Dispose() override { return DisposeImpl(); }
  std::uint32_t Release() override { return DisposeImpl(); }
  const char* GetTypeName() override;

  // The path under which the map's provider serves it: the "ResourceURI" of the "IPPParams", or
  // "/ipp/printer".
  static std::string ResourceUriOf(DataMapSpec* spec);

  // `name` is "name", "prefix:name", or either with "." and three digits: of an attribute with
  // several values, "marker:Level.002" is the second one. Without digits it is all of them, joined
  // by ",". S_FALSE when there are fewer; E_FAIL when the printer has no such attribute, cannot be
  // reached, or for a "Command" that is neither Get-Printer-Attributes nor Get-Job-Attributes.
  HRESULT GetValue(const wchar_t* name, VARIANT* value) override;
  std::wstring GetDataMapName() override;

 private:
  struct Values;

  IPPDataItemSpec* FindItem(std::wstring_view name) const;
  HRESULT Read(const IPPDataItemSpec& item, Values* values);
  bool HasOwnWay(const IPPDataItemSpec& item) const;
  // Of the item, or of the map's parameters; empty for neither.
  std::string Parameter(const IPPDataItemSpec& item, wchar_t* IPPDataItemSpec::*field) const;
  void Keep(const IPPDataItemSpec& item, const std::wstring& key, const Values& values);

  RefPtr<IPPProviderImpl> m_provider;
  RefPtr<DataMapSpec> m_spec;
  ComInitialization m_mapperCom;
};

}  // namespace Corvane

#endif  // CORVANE_COLLECTION_IPP_DATA_MAPPER_H_
