// The key of an item's value in stores and caches.
#ifndef CORVANE_SPEC_ITEM_KEY_H_
#define CORVANE_SPEC_ITEM_KEY_H_

#include <string>

#include "corvane/nexo_data_item.h"

namespace Corvane {

// The item's name, or prefix + ":" + name when it has a prefix, be it an empty one. Empty without a
// name.
inline std::wstring ItemKey(const NexoDataItem& item) {
  std::wstring key;
  if (!item.GetName()) return key;
  if (item.GetPrefix()) key.append(item.GetPrefix()).push_back(L':');
  return key.append(item.GetName());
}

}  // namespace Corvane

#endif  // CORVANE_SPEC_ITEM_KEY_H_
