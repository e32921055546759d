// The key of an item's value: what it is asked for by, and its name in a cache.
#ifndef CORVANE_TOOLS_MAP_ITEM_KEY_H_
#define CORVANE_TOOLS_MAP_ITEM_KEY_H_

#include <string>

#include "corvane/nexo_data_item.h"

namespace Corvane::Tool {

// "NAME" or "PREFIX:NAME". A prefix counts even when it is empty: the item is then ":NAME".
inline std::wstring ItemKey(const NexoDataItem& item) {
  std::wstring key;
  if (item.GetPrefix()) key.append(item.GetPrefix()).push_back(L':');
  if (item.GetName()) key += item.GetName();
  return key;
}

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_MAP_ITEM_KEY_H_
