#include "corvane/platform.h"
#include "tests/support/test_store.h"
#include "tests/support/wine.h"

namespace Corvane::Test {

TestStore::TestStore() = default;
TestStore::~TestStore() = default;

bool UnderWine() {
  return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}
bool OnLayer() { return false; }

}  // namespace Corvane::Test
