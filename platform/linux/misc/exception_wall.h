// The wall that no exception passes on its way to a caller of the Win32 names.
#ifndef CORVANE_PLATFORM_LINUX_MISC_EXCEPTION_WALL_H_
#define CORVANE_PLATFORM_LINUX_MISC_EXCEPTION_WALL_H_

#include "base/exception_wall.h"
#include "corvane/linux/base.h"

namespace Corvane {

// The result of `operation()`, which throws nothing but std::bad_alloc: ERROR_OUTOFMEMORY then.
template <typename Operation>
LSTATUS BehindWall(Operation&& operation) noexcept {
  return BehindWall<LSTATUS>(ERROR_OUTOFMEMORY, operation);
}

}  // namespace Corvane

#endif  // CORVANE_PLATFORM_LINUX_MISC_EXCEPTION_WALL_H_
