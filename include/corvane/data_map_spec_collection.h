// All data maps of a specification, in document order.
#ifndef CORVANE_DATA_MAP_SPEC_COLLECTION_H_
#define CORVANE_DATA_MAP_SPEC_COLLECTION_H_

#include <list>

#include "corvane/data_map_spec.h"

namespace Corvane {

// Not reference-counted: one owner, who calls Dispose. One thread at a time.
class CORVANE_API DataMapSpecCollection {
 public:
  // Null when the object cannot be allocated.
  static DataMapSpecCollection* CreateDataMapSpecCollection();
  // A map spec for every child node of the element, whatever it is: a comment gives an empty map of
  // unknown type, and one for which memory ran out a null entry.
  static DataMapSpecCollection* CreateDataMapSpecCollection(IXMLDOMNode* dataMapsElement);

  DataMapSpecCollection(const DataMapSpecCollection&) = delete;
  DataMapSpecCollection& operator=(const DataMapSpecCollection&) = delete;
  // Gives back one reference to every map spec.
  virtual ~DataMapSpecCollection();

  // Appends; the collection takes over one reference of the caller's.
  void AddDataMapSpec(DataMapSpec* spec);
  int GetCount();
  // Counted from 0; the index is not checked. The collection keeps its reference.
  DataMapSpec* GetDataMapSpec(int index);
  // Destroys the collection; called on a null pointer it does nothing.
  void Dispose();

 protected:
  DataMapSpecCollection();
  explicit DataMapSpecCollection(IXMLDOMNode* dataMapsElement);

 private:
  std::list<DataMapSpec*> m_specs;
};

}  // namespace Corvane

#endif  // CORVANE_DATA_MAP_SPEC_COLLECTION_H_
