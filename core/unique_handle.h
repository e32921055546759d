// An event or a thread of the system, closed when its owner goes.
#ifndef CORVANE_CORE_UNIQUE_HANDLE_H_
#define CORVANE_CORE_UNIQUE_HANDLE_H_

#include "corvane/handles.h"
#include "platform/system.h"

namespace Corvane {

struct CloseSystemHandle {
  void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using UniqueHandle = UniqueHandleOf<HANDLE, CloseSystemHandle>;

}  // namespace Corvane

#endif  // CORVANE_CORE_UNIQUE_HANDLE_H_
