// What the test process holds of the system, to see whether something is left behind.
#ifndef CORVANE_TESTS_SUPPORT_PROCESS_COUNTS_H_
#define CORVANE_TESTS_SUPPORT_PROCESS_COUNTS_H_

namespace Corvane::Test {

int CountThreads();
// On Linux those of the layer, and a constant.
int CountHandles();

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_PROCESS_COUNTS_H_
