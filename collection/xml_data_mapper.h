// The data collection over a map of XML resources.
#ifndef CORVANE_COLLECTION_XML_DATA_MAPPER_H_
#define CORVANE_COLLECTION_XML_DATA_MAPPER_H_

#include "collection/data_collection_impl.h"
#include "corvane/xml_data_item_spec.h"
#include "corvane/xml_provider.h"

namespace Corvane {

class XMLDataMapper : public DataCollectionImpl, public IDisposableImpl {
 public:
  // Takes a reference to each that is not null.
  XMLDataMapper(IXMLProvider* provider, DataMapSpec* spec);
  ~XMLDataMapper() override;

  std::uint32_t AddRef() override { return AddRefImpl(); }
  std::uint32_t AddRefConst() override { return AddRefImpl(); }
  std::uint32_t Dispose() override { return DisposeImpl(); }
  std::uint32_t Release() override { return DisposeImpl(); }
  const char* GetTypeName() override;

  // From the store while fresh, else from the device: the text is converted, and stored under
  // `name` for the item's lifespan unless the item is transient. `name` may begin with a prefix and
  // ":", which counts for the store alone.
  HRESULT GetValue(const wchar_t* name, VARIANT* value) override;
  // An XPath to this map's element, by the protocol of the provider's port.
  std::wstring GetDataMapName() override;

 private:
  XMLDataItemSpec* FindItem(const wchar_t* name);
  HRESULT Fetch(const XMLDataItemSpec& item, _variant_t* value);

  RefPtr<IXMLProvider> m_provider;
  RefPtr<DataMapSpec> m_spec;
};

}  // namespace Corvane

#endif  // CORVANE_COLLECTION_XML_DATA_MAPPER_H_
