// One data map of a specification: a protocol, and item specs by name.
#ifndef CORVANE_DATA_MAP_SPEC_H_
#define CORVANE_DATA_MAP_SPEC_H_

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "corvane/code_unit_less.h"
#include "corvane/disposable.h"
#include "corvane/nexo_data_item.h"

namespace Corvane {

// The kind of a data map, by its protocol.
enum DataMapTypeEnum : std::int32_t {
  DataMapTypeUnknown = 0,
  DataMapTypeQUARN = 1,
  DataMapTypeWS = 2,
  DataMapTypePLSXML = 3,
  DataMapTypeIPP = 4,
  DataMapTypeOID = 5,
};

// Owns its items. One thread at a time; the map itself holds the one iteration that may be under
// way. What it throws: _com_error with E_OUTOFMEMORY, and the standard length error of a full
// table.
class CORVANE_API DataMapSpec : public IDisposableImpl {
 public:
  // Each returns an object with one reference, or null when it cannot be allocated.
  static DataMapSpec* CreateDataMapSpec();
  // A protocol of its own for the five known types, none for others.
  static DataMapSpec* CreateDataMapSpec(DataMapTypeEnum type);
  // Reads "XMLDataMap", "OIDDataMap" or "IPPDataMap" (any ASCII case, any prefix) with its items;
  // any other node gives an empty map. Items without a name are dropped; of items with one name the
  // last counts.
  static DataMapSpec* CreateDataMapSpec(IXMLDOMNode* mapElement);
  // By the protocol's text in any ASCII case.
  static DataMapTypeEnum TypeOfProtocol(std::wstring_view protocol);

  // Takes ownership of `item`. An item that stood under the name is forgotten, not destroyed: it is
  // the caller's again. A null name destroys the item.
  void AddDataItemSpec(const wchar_t* name, NexoDataItem* item);
  // Case-sensitive; null when there is none. The map keeps the item.
  NexoDataItem* GetDataItemSpec(std::wstring name);
  DataMapTypeEnum GetDataMapType();  // of its protocol
  std::wstring GetProtocolType();
  int SizeOf();

  // Iteration in name order: null at the end.
  void Begin();
  NexoDataItem* GetNextDataItemSpec();
  // Destroys the item that GetNextDataItemSpec returned last. At the end of the iteration it does
  // nothing, so the last item of a map stays; nor before the first step.
  void RemoveFromMap();

  const char* GetTypeName() override;

 protected:
  DataMapSpec();
  explicit DataMapSpec(DataMapTypeEnum type);
  explicit DataMapSpec(IXMLDOMNode* mapElement);
  ~DataMapSpec() override;

 private:
  using ItemTable = std::map<std::wstring, NexoDataItem*, CodeUnitLess>;

  enum class MapElement { kXml, kOid, kIpp };

  void ReadItems(IXMLDOMNodeList* children, MapElement kind);
  static NexoDataItem* CreateDataItem(IXMLDOMNode* element, MapElement kind);
  // Stores the item under its name or the fixed one; destroys an item without a name.
  void KeepItem(NexoDataItem* item, const wchar_t* fixedName = nullptr);

  ItemTable m_items;
  ItemTable::iterator m_cursor = m_items.end();
  std::wstring m_protocol;
};

}  // namespace Corvane

#endif  // CORVANE_DATA_MAP_SPEC_H_
