// The base of all item specs: one named value of a data map.
#ifndef CORVANE_NEXO_DATA_ITEM_H_
#define CORVANE_NEXO_DATA_ITEM_H_

#include <map>
#include <string>

#include "corvane/code_unit_less.h"
#include "corvane/platform.h"

namespace Corvane {

// An item owns its texts and frees them in its destructor. Accessors return the item's own pointer,
// null for an absent text; the caller must not free it. A copy shares the texts of its source: only
// one of the two may be destroyed. Out of memory for a string of the DOM is raised as _com_error
// with E_OUTOFMEMORY.
class CORVANE_API NexoDataItem {
 public:
  NexoDataItem();
  // Copies its texts; `name` becomes the AttributeID too. Null leaves a text absent.
  NexoDataItem(const wchar_t* name, const wchar_t* prefix);
  // Reads "Name" (or else "AttributeID"), "AttributeID" and "Prefix" of an item element; null reads
  // nothing.
  explicit NexoDataItem(IXMLDOMNode* element);
  NexoDataItem(const NexoDataItem& other) = default;
  NexoDataItem& operator=(const NexoDataItem& other) = default;

  virtual ~NexoDataItem();
  // Forgets the texts without freeing them.
  virtual void Initialize();

  wchar_t* GetName() const { return m_name; }
  wchar_t* GetAttributeID() const { return m_attributeId; }
  const wchar_t* GetPrefix() const { return m_prefix; }

  // `value` in the client's words: the replacement of the matching entry of the conversion table as
  // a VT_BSTR (an empty one as a null string), or `value` as it is when nothing matches and there
  // is no entry "default".
  //
  // Matching ignores case. VT_I4 is matched as decimal text, VT_BSTR as it is, every other type as
  // empty text. Entries are tried in code-unit order of their match texts: one with commas matches
  // when all its words occur in the value, and the search goes on; one without matches the whole
  // value, or one of the value's words between commas, and ends it.
  _variant_t ConvertValue(_variant_t value) const;

 protected:
  // The attribute's text, for the caller to free(); null when it is absent or cannot be read.
  static wchar_t* TextValueOf(IXMLDOMNamedNodeMap* attributes, const wchar_t* name);

  // Lower-cased match text to replacement.
  using ConversionTable = std::map<std::wstring, std::wstring, CodeUnitLess>;

  wchar_t* m_name = nullptr;
  wchar_t* m_attributeId = nullptr;
  wchar_t* m_prefix = nullptr;
  ConversionTable m_conversions;
};

// The key of an item's value, in queries, stores and caches: its name, or prefix + ":" + name when
// it has a prefix, be it an empty one. Empty without a name.
inline std::wstring ItemKey(const NexoDataItem& item) {
  std::wstring key;
  if (!item.GetName()) return key;
  if (item.GetPrefix()) key.append(item.GetPrefix()).push_back(L':');
  return key.append(item.GetName());
}

}  // namespace Corvane

#endif  // CORVANE_NEXO_DATA_ITEM_H_
