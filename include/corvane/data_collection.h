// Start here: named values of one device.
#ifndef CORVANE_DATA_COLLECTION_H_
#define CORVANE_DATA_COLLECTION_H_

#include "corvane/address.h"
#include "corvane/cache_provider.h"
#include "corvane/data_map_spec_collection.h"
#include "corvane/disposable.h"

namespace Corvane {

// Answers values by name from its store while they are fresh, else from the device. Used by one
// thread at a time, the one that made it: it holds that thread's COM initialisation. Out of memory
// in string or variant work is raised as _com_error with E_OUTOFMEMORY or as std::bad_alloc; making
// a collection also raises _com_error when an SNMP agent describes its device by something that is
// no text. Nothing else is thrown.
class DataCollection : public Corvane::IDisposable {
 public:
  virtual ~DataCollection() = default;

  // The value of the item `name`, or of "prefix:name", converted by the item's table. On S_OK
  // *value, which must be initialised, is cleared and filled; the caller clears it. On every other
  // result it is untouched:
  // - E_FAIL: a null argument, no such item, an item without a place on the device, a device that
  //   did not answer, or an expression that does not parse.
  // - S_FALSE: the device answered, and its document has no such node, or it has no such object or
  //   step of a walk.
  // - Other codes are the provider's, unchanged.
  // A step of a walk is asked for by its number, "prefix:name.001" to ".999"; without one the first
  // answers. A walk stores all its steps, and ends after 999 or after 60 seconds at the latest.
  // Items of one group are fetched and stored together. May exchange data with the device.
  virtual HRESULT GetValue(const wchar_t* name, VARIANT* value) = 0;

  // Forgets the stored values whose key begins with `prefix` and ":". S_OK when there was one, else
  // E_FAIL.
  virtual HRESULT ClearValues(const wchar_t* prefix) = 0;
};

}  // namespace Corvane

// Each makes a collection over the first data map of the specification whose protocol the device
// answers, and may exchange data with the device for every map that it tries.
// - address: the device; the providers take their own references.
// - collection: written on S_OK only, with one reference that the caller gives back with Dispose or
//   Release.
// - cache: may be null; the collection takes its own reference.
// Results:
// - S_OK.
// - S_FALSE: the document does not parse, or its root is not "DataMaps".
// - E_FAIL: a required argument is null, there is no data map, or none fits the device.
// - The system's code when the DOM cannot be made.
extern "C" {

// `path` names the specification file.
CORVANE_API HRESULT CreateDataCollectionFromFile(Corvane::Address* address, const wchar_t* path,
                                                 Corvane::DataCollection** collection,
                                                 Corvane::ICacheProvider* cache);
// `xml` is the specification's text.
CORVANE_API HRESULT CreateDataCollectionFromXML(Corvane::Address* address, const wchar_t* xml,
                                                Corvane::DataCollection** collection,
                                                Corvane::ICacheProvider* cache);
// `document` is a node whose child "DataMaps" holds the data maps: usually the parsed document.
CORVANE_API HRESULT CreateDataCollectionFromDOM(Corvane::Address* address, IXMLDOMNode* document,
                                                Corvane::DataCollection** collection,
                                                Corvane::ICacheProvider* cache);
// `specs` stays the caller's; the collection keeps a reference to the one map that it chose, and
// takes out of it the static items that it stored.
CORVANE_API HRESULT CreateDataCollectionFromDataMapSpecsCollection(
    Corvane::Address* address, Corvane::DataMapSpecCollection* specs,
    Corvane::DataCollection** collection, Corvane::ICacheProvider* cache);

}  // extern "C"

namespace Corvane {
using ::CreateDataCollectionFromDataMapSpecsCollection;
using ::CreateDataCollectionFromDOM;
using ::CreateDataCollectionFromFile;
using ::CreateDataCollectionFromXML;
}  // namespace Corvane

#endif  // CORVANE_DATA_COLLECTION_H_
