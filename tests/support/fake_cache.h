// A cache that keeps what it is given.
#ifndef CORVANE_TESTS_SUPPORT_FAKE_CACHE_H_
#define CORVANE_TESTS_SUPPORT_FAKE_CACHE_H_

#include "corvane/cache_provider.h"
#include "tests/support/counted.h"

namespace Corvane::Test {

// Lives where a test declares it: the count alone never destroys it.
class FakeCache final : public Counted<ICacheProvider> {
 public:
  FakeCache() { SetNoDelete(true); }

  int writes = 0;
  CachedValueMap written;

  std::uint32_t GetDataValue(const wchar_t*, VARIANT*) override { return 1; }
  std::uint32_t SetDataValue(const wchar_t*, const VARIANT*, std::int64_t) override { return 1; }
  std::uint32_t SetDataValues(const CachedValueMap* values) override {
    ++writes;
    written = *values;
    return 0;
  }
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_FAKE_CACHE_H_
