#include "tests/support/test_store.h"

namespace Corvane::Test {

TestStore::TestStore() = default;
TestStore::~TestStore() = default;

}  // namespace Corvane::Test
