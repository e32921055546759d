#include "tests/support/wine.h"

#include <iostream>

#ifdef _WIN32
#include "corvane/platform.h"
#endif

namespace Corvane::Test {

#ifdef _WIN32
const char* WineDefect(const char* reason) {
  return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr ? reason
                                                                                       : nullptr;
}

const char* LayerOnly(const char* reason) { return reason; }
#else
const char* WineDefect(const char*) { return nullptr; }

const char* LayerOnly(const char*) { return nullptr; }
#endif

bool SkipRow(const char* name, const char* reason) {
  if (reason != nullptr) std::cout << "[  SKIPPED ] " << name << ": " << reason << '\n';
  return reason != nullptr;
}

}  // namespace Corvane::Test
