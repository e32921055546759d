// An item that is fetched from the device.
#ifndef CORVANE_DATA_ITEM_SPEC_H_
#define CORVANE_DATA_ITEM_SPEC_H_

#include <cstdint>

#include "corvane/nexo_data_item.h"

namespace Corvane {

// Adds how long a fetched value stays fresh, and the conversion table.
class CORVANE_API DataItemSpec : public NexoDataItem {
 public:
  DataItemSpec();
  // `lifespan` in tenths of a second; beyond 32 bits it is the largest that they hold.
  DataItemSpec(const wchar_t* name, bool transient, const wchar_t* prefix, std::uint64_t lifespan,
               const wchar_t* type);
  // Adds "Type", "Transient", "LifeSpan" and the "Conversion" children.
  explicit DataItemSpec(IXMLDOMNode* element);
  DataItemSpec(const DataItemSpec& other) = default;
  DataItemSpec& operator=(const DataItemSpec& other) = default;

  ~DataItemSpec() override;
  void Initialize() override;

  const wchar_t* GetType() const { return m_type; }
  // Tenths of a second; 0 never goes stale.
  unsigned long GetLifespan() const { return m_lifespan; }
  // Fetched on every query, never stored.
  bool IsTransient() const { return m_transient; }

 protected:
  // "true" in any ASCII case.
  static bool BoolValueOf(IXMLDOMNamedNodeMap* attributes, const wchar_t* name);
  // Leading white space and sign, then digits up to the first other character; 0 without digits or
  // attribute. 32 bits: more is 4294967295, and a minus sign counts down from 2^32.
  static unsigned long UlongValueOf(IXMLDOMNamedNodeMap* attributes, const wchar_t* name);
  // The node's local name is `name` in any ASCII case.
  static bool ElementNameIs(IXMLDOMNode* node, const wchar_t* name);
  // Takes the "Conversion" children of an item element into the table.
  void AddToConversionCollection(IXMLDOMNode* element);

  std::uint32_t m_lifespan = 0;
  bool m_transient = false;
  wchar_t* m_type = nullptr;
};

}  // namespace Corvane

#endif  // CORVANE_DATA_ITEM_SPEC_H_
