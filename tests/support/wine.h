// Where the tests run, for the few cases that cannot hold everywhere.
#ifndef CORVANE_TESTS_SUPPORT_WINE_H_
#define CORVANE_TESTS_SUPPORT_WINE_H_

namespace Corvane::Test {

// The Windows build runs under Wine, which is known to answer some cases otherwise. A test that
// skips then names the defect.
bool UnderWine();

// The platform is this project's own layer, whose limits some cases are about.
bool OnLayer();

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_WINE_H_
