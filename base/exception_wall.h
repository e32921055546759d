// The wall that no exception passes, for code that is called through an interface without them.
#ifndef CORVANE_BASE_EXCEPTION_WALL_H_
#define CORVANE_BASE_EXCEPTION_WALL_H_

#include <new>
#include <utility>

namespace Corvane {

enum class Thrown { kNoMemory, kOther };

// What `operation()` returns, or `failed(Thrown)` when it throws.
template <typename Operation, typename Failed>
auto CatchAll(Operation&& operation, Failed&& failed) noexcept -> decltype(operation()) {
  try {
    return operation();
  } catch (const std::bad_alloc&) {
    return failed(Thrown::kNoMemory);
  } catch (...) {
    return failed(Thrown::kOther);
  }
}

// What `operation()` returns, or `failure` when it throws, which nearly always means: no memory.
template <typename Result, typename Operation>
Result BehindWall(Result failure, Operation&& operation) noexcept {
  return CatchAll([&]() -> Result { return operation(); },
                  [&](Thrown) { return std::move(failure); });
}

}  // namespace Corvane

#endif  // CORVANE_BASE_EXCEPTION_WALL_H_
