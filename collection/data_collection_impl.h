// The core of all data collections: the store of known values, and the ways to make a collection.
#ifndef CORVANE_COLLECTION_DATA_COLLECTION_IMPL_H_
#define CORVANE_COLLECTION_DATA_COLLECTION_IMPL_H_

#include <string>

#include "core/com.h"
#include "corvane/data_collection.h"
#include "corvane/handles.h"

namespace Corvane {

// A mapper derives from this and from IDisposableImpl. Values known beforehand (static items, a
// cache's values) and values fetched are in the store; when the collection goes, the whole store
// goes to the cache.
class DataCollectionImpl : public DataCollection {
 public:
  // Each parses a specification and makes a collection over it, as the exported function of its
  // purpose says.
  static HRESULT CreateFromFile(Address* address, const wchar_t* path, DataCollection** collection,
                                ICacheProvider* cache);
  static HRESULT CreateFromXML(Address* address, const wchar_t* xml, DataCollection** collection,
                               ICacheProvider* cache);
  static HRESULT CreateFromDOM(Address* address, IXMLDOMNode* document, DataCollection** collection,
                               ICacheProvider* cache);

  // Walks the maps in order and makes a collection over the first whose protocol the device
  // answers, with the cache's values and the static items in its store. E_FAIL for a null address
  // or collection of specs, and when no map fits. The caller traces.
  static HRESULT Build(Address* address, DataMapSpecCollection* specs, DataCollection** collection,
                       ICacheProvider* cache);

  DataCollectionImpl();
  DataCollectionImpl(const DataCollectionImpl&) = delete;
  DataCollectionImpl& operator=(const DataCollectionImpl&) = delete;
  ~DataCollectionImpl() override;

  // From the store alone: S_OK and a copy of a fresh value; E_FAIL, `value` untouched, for null
  // arguments, an unknown key or a stale value.
  HRESULT GetValue(const wchar_t* name, VARIANT* value) override;
  HRESULT ClearValues(const wchar_t* prefix) override;

  // The XPath or name by which the mapper's data map is found in a specification.
  virtual std::wstring GetDataMapName() = 0;
  // Stores the values of the map's static items for ever and takes each stored item out of the map,
  // but for the one whose name sorts last. E_FAIL when the map has no items.
  virtual HRESULT LoadStaticItems(DataMapSpec* spec);
  // A copy of `value` under `key`, taken now; with lifespan 0 it never goes stale. E_FAIL when the
  // time cannot be had.
  virtual HRESULT StoreValue(const wchar_t* key, VARIANT* value, unsigned int lifespan);

 protected:
  // Fills the store with what the cache keeps of the map's items: S_OK, or S_FALSE for a cache of a
  // kind that is not the library's.
  HRESULT PopulateValueFromCache(ICacheProvider* cache, DataMapSpec* spec);

  RefPtr<ICacheProvider> m_cache;
  CachedValueMap m_values;  // by item key
  ComInitialization m_com;
};

}  // namespace Corvane

#endif  // CORVANE_COLLECTION_DATA_COLLECTION_IMPL_H_
