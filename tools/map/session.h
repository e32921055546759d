// One device, read through the data map that fits it.
#ifndef CORVANE_TOOLS_MAP_SESSION_H_
#define CORVANE_TOOLS_MAP_SESSION_H_

#include <string>
#include <string_view>
#include <vector>

#include "corvane/address.h"
#include "corvane/cache_provider.h"
#include "corvane/data_collection.h"
#include "corvane/handles.h"
#include "tools/map/specification.h"

namespace Corvane::Tool {

// An answer to one query.
struct NamedValue {
  std::wstring name;  // as asked
  HRESULT result = E_FAIL;
  UniqueVariant value;  // when `result` is S_OK
  std::string problem;  // otherwise why, escaped, in one line
};

// Used by one thread, which must hold COM for longer than the session lives.
class Session {
 public:
  // The steps of a walk are numbered with three digits.
  static constexpr int kMaxSteps = 999;

  // Tries the data maps in order, as the library does with a whole specification; but one by one,
  // which tells which one it took and what is wrong with the others. Exchanges data with the
  // device. `address` and `cache` must outlive the session; `cache` may be null, and gets the
  // session's values when it goes. Throws Failure with kNoAnswer.
  Session(Address& address, std::vector<DataMap> maps, ICacheProvider* cache);

  // May exchange data with the device.
  NamedValue Query(const std::wstring& name);

  struct Key {
    std::wstring name;  // "NAME" or "PREFIX:NAME"
    bool isWalk;        // has a value for each step, not under its own name
  };
  // Of every item of the data map, in the order of their names.
  std::vector<Key> Keys() const;
  // "NAME.001"
  static std::wstring StepKey(const std::wstring& walk, int step);

 private:
  struct Item {
    std::wstring name;
    std::wstring key;
    bool isStatic = false;
    bool isWalk = false;
    std::wstring uri;
    std::wstring xpath;
    std::wstring oid;
  };

  static std::vector<Item> ItemsOf(DataMapSpec& map);
  bool TryDataMap(DataMapSpec& map);
  std::string WhyNotUsed(const DataMap& map) const;
  std::string WhyNoSnmp() const;
  std::string WhyNoIpp() const;
  const Item* FindItem(std::wstring_view name) const;
  std::string WhyNoValue(std::wstring_view name, HRESULT result) const;
  std::string WhyNoXmlValue(const Item& item, HRESULT result) const;
  std::string WhyNoOidValue(const Item& item, HRESULT result) const;
  std::string WhyNoIppValue() const;

  Address& m_address;
  ICacheProvider* const m_cache;
  DataMapTypeEnum m_type = DataMapTypeUnknown;  // of the map that was tried last
  std::vector<Item> m_items;
  RefPtr<DataCollection> m_collection;
};

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_MAP_SESSION_H_
