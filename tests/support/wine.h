// Where the tests run, for the few cases that cannot hold everywhere.
#ifndef CORVANE_TESTS_SUPPORT_WINE_H_
#define CORVANE_TESTS_SUPPORT_WINE_H_

#include <iostream>

namespace Corvane::Test {

// `reason` when the program runs under Wine, which is known to answer otherwise; null elsewhere.
const char* WineDefect(const char* reason);

// `reason` when the platform is not this project's own layer, whose limits are what the case is
// about; null on Linux.
const char* LayerOnly(const char* reason);

// Prints that the table row `name` is skipped, and why, when `reason` is not null. True when it is
// to be skipped.
inline bool SkipRow(const char* name, const char* reason) {
  if (reason != nullptr) std::cout << "[  SKIPPED ] " << name << ": " << reason << '\n';
  return reason != nullptr;
}

// The Windows build runs under Wine. A test that skips then names the defect.
inline bool UnderWine() { return WineDefect("") != nullptr; }

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_WINE_H_
