// Variants at the boundary.
#ifndef CORVANE_CORE_VARIANT_H_
#define CORVANE_CORE_VARIANT_H_

#include "corvane/platform.h"

namespace Corvane {

// Moves a value into an output argument, whose earlier content is cleared. What cannot be cleared
// was never a variant, or is a locked array: there is nothing of it to free here.
inline void MoveTo(_variant_t&& from, VARIANT* to) {
  if (FAILED(VariantClear(to))) VariantInit(to);
  *to = from.Detach();
}

}  // namespace Corvane

#endif  // CORVANE_CORE_VARIANT_H_
