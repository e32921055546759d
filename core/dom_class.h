// The DOM document class that specifications and device documents are parsed with.
#ifndef CORVANE_CORE_DOM_CLASS_H_
#define CORVANE_CORE_DOM_CLASS_H_

#include "corvane/platform.h"

namespace Corvane {

inline constexpr CLSID kDomDocumentClass = {
    0xF5078F32, 0xC551, 0x11D3, {0x89, 0xB9, 0x00, 0x00, 0xF8, 0x1F, 0xE2, 0x21}};

}  // namespace Corvane

#endif  // CORVANE_CORE_DOM_CLASS_H_
