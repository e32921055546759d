#include "tests/support/wine.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace Corvane::Test {

bool UnderWine() {
#ifdef _WIN32
  return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
#else
  return false;
#endif
}

}  // namespace Corvane::Test
