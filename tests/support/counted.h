// An object at the boundary, counted.
#ifndef CORVANE_TESTS_SUPPORT_COUNTED_H_
#define CORVANE_TESTS_SUPPORT_COUNTED_H_

#include <cstdint>

#include "corvane/disposable.h"

namespace Corvane::Test {

template <typename Interface>
class Counted : public Interface, public IDisposableImpl {
 public:
  std::uint32_t AddRef() override { return AddRefImpl(); }
  std::uint32_t AddRefConst() override { return AddRefImpl(); }
  std::uint32_t Dispose() override { return DisposeImpl(); }
  std::uint32_t Release() override { return DisposeImpl(); }

  std::uint32_t References() {
    AddRef();
    return Release();
  }
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_COUNTED_H_
