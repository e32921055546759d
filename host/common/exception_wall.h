// The wall that no exception passes on its way out of a transport class.
#ifndef CORVANE_HOST_COMMON_EXCEPTION_WALL_H_
#define CORVANE_HOST_COMMON_EXCEPTION_WALL_H_

#include <exception>

namespace Corvane::Host {

// What `operation()` returns, or `failure` when it throws, which here means: no memory.
template <typename Result, typename Operation>
Result BehindWall(Result failure, Operation operation) noexcept {
  try {
    return operation();
  } catch (const std::exception&) {
    return failure;
  }
}

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_COMMON_EXCEPTION_WALL_H_
