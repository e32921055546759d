#include "corvane/platform.h"
#include "tests/support/wine.h"

namespace Corvane::Test {

const char* WineDefect(const char* reason) {
  const HMODULE system = GetModuleHandleW(L"ntdll.dll");
  return GetProcAddress(system, "wine_get_version") != nullptr ? reason : nullptr;
}

const char* LayerOnly(const char* reason) { return reason; }

}  // namespace Corvane::Test
