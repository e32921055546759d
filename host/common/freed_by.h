// Owners of what a C library hands out.
#ifndef CORVANE_HOST_COMMON_FREED_BY_H_
#define CORVANE_HOST_COMMON_FREED_BY_H_

namespace Corvane::Host {

// For std::unique_ptr: gives an object back with the library's own function.
template <auto Free>
struct FreedBy {
  template <typename T>
  void operator()(T* object) const {
    Free(object);
  }
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_COMMON_FREED_BY_H_
