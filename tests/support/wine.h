// Tells Wine from Windows, for tests that Wine's known defects would fail.
#ifndef CORVANE_TESTS_SUPPORT_WINE_H_
#define CORVANE_TESTS_SUPPORT_WINE_H_

namespace Corvane::Test {

// The Windows build runs under Wine. A test that skips then names the defect.
bool UnderWine();

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_WINE_H_
