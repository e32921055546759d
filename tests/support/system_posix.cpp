// Where the tests run: on the layer, whose store a test can choose.
#include <cstdlib>

#include "tests/support/test_store.h"
#include "tests/support/wine.h"

namespace Corvane::Test {
namespace {
constexpr const char* kVariable = "CORVANE_STORE";
}

TestStore::TestStore() {
  if (const char* previous = std::getenv(kVariable)) m_previous = previous;
  setenv(kVariable, File().c_str(), 1);
}

TestStore::~TestStore() {
  if (m_previous) {
    setenv(kVariable, m_previous->c_str(), 1);
  } else {
    unsetenv(kVariable);
  }
}

bool UnderWine() { return false; }
bool OnLayer() { return true; }

}  // namespace Corvane::Test
