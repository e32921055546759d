// What the sources of this folder share about variant types and about values that own nothing.
#ifndef CORVANE_PLATFORM_LINUX_AUTOMATION_VARIANT_TYPES_H_
#define CORVANE_PLATFORM_LINUX_AUTOMATION_VARIANT_TYPES_H_

#include "corvane/linux/automation.h"

// Whether a variant may carry `type`, with its VT_ARRAY and VT_BYREF.
bool IsKnownType(VARTYPE type);

// Bytes of one value of a plain type; 0 for a type without any, and for an unknown one.
UINT ElementBytes(VARTYPE type);

// Sets *view to the value behind a VT_BYREF, or to `source` itself. The view owns nothing: never
// clear it. E_INVALIDARG: a NULL reference, or a reference to a variant that refers to another
// variant.
HRESULT Dereference(const VARIANT& source, VARIANT* view);

// Makes an owning copy of `source`, whose type is known; *copy is overwritten, and VT_EMPTY after a
// failure (E_OUTOFMEMORY).
HRESULT Duplicate(const VARIANT& source, VARIANT* copy);

// Clears *destination and moves `value` there. When it cannot be cleared, `value` is cleared
// instead and the failure returned.
HRESULT Replace(VARIANT* destination, VARIANT value);

#endif  // CORVANE_PLATFORM_LINUX_AUTOMATION_VARIANT_TYPES_H_
