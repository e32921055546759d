#include "corvane/data_map_spec_collection.h"

#include <iterator>
#include <new>

#include "spec/element.h"

namespace Corvane {

DataMapSpecCollection* DataMapSpecCollection::CreateDataMapSpecCollection() {
  return new (std::nothrow) DataMapSpecCollection();
}

DataMapSpecCollection* DataMapSpecCollection::CreateDataMapSpecCollection(
    IXMLDOMNode* dataMapsElement) {
  return new (std::nothrow) DataMapSpecCollection(dataMapsElement);
}

DataMapSpecCollection::DataMapSpecCollection() = default;

DataMapSpecCollection::DataMapSpecCollection(IXMLDOMNode* dataMapsElement)
    : DataMapSpecCollection() {
  const auto children = ChildrenOf(dataMapsElement);
  ForEachNode(children.Get(), [this](IXMLDOMNode* child) {
    AddDataMapSpec(DataMapSpec::CreateDataMapSpec(child));
  });
}

DataMapSpecCollection::~DataMapSpecCollection() {
  for (DataMapSpec* const spec : m_specs) {
    if (spec) spec->Dispose();
  }
}

void DataMapSpecCollection::AddDataMapSpec(DataMapSpec* spec) { m_specs.push_back(spec); }

int DataMapSpecCollection::GetCount() { return static_cast<int>(m_specs.size()); }

DataMapSpec* DataMapSpecCollection::GetDataMapSpec(int index) {
  return *std::next(m_specs.begin(), index);
}

// Clients call this on a null pointer too. The compiler may take `this` as never null; it cannot
// take a volatile copy.
void DataMapSpecCollection::Dispose() {
  DataMapSpecCollection* const volatile self = this;
  delete self;
}

}  // namespace Corvane
