// Memory that a caller says is there.
#ifndef CORVANE_PLATFORM_LINUX_MISC_CALLER_MEMORY_H_
#define CORVANE_PLATFORM_LINUX_MISC_CALLER_MEMORY_H_

#include <cstddef>

namespace Corvane {

// False when some of the bytes are no memory of the process or may not be read. Asks the kernel and
// touches nothing, where Windows would catch the fault.
bool IsReadable(const void* memory, std::size_t bytes);

}  // namespace Corvane

#endif  // CORVANE_PLATFORM_LINUX_MISC_CALLER_MEMORY_H_
