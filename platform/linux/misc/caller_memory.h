// Memory that a caller says is there.
#ifndef CORVANE_PLATFORM_LINUX_MISC_CALLER_MEMORY_H_
#define CORVANE_PLATFORM_LINUX_MISC_CALLER_MEMORY_H_

#include "corvane/linux/base.h"

typedef std::uintptr_t UINT_PTR;

extern "C" {

// TRUE when some of the bytes are no memory of the process or may not be read. Asks the kernel and
// touches nothing, where Windows would catch the fault: callers pass integers for addresses.
BOOL WINAPI IsBadReadPtr(const void* memory, UINT_PTR bytes);

}  // extern "C"

#endif  // CORVANE_PLATFORM_LINUX_MISC_CALLER_MEMORY_H_
