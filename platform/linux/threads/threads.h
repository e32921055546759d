// Events, threads, waits and critical sections.
#ifndef CORVANE_PLATFORM_LINUX_THREADS_THREADS_H_
#define CORVANE_PLATFORM_LINUX_THREADS_THREADS_H_

#include <cstdint>

#include "corvane/linux/base.h"

#define INFINITE 0xFFFFFFFFu
#define MAXIMUM_WAIT_OBJECTS 64
#define WAIT_OBJECT_0 0u
#define WAIT_TIMEOUT 258u
#define WAIT_FAILED 0xFFFFFFFFu

struct _SECURITY_ATTRIBUTES;
typedef struct _RTL_CRITICAL_SECTION {
  void* mutex;
} CRITICAL_SECTION;

extern "C" {

// Null with a last error: ERROR_OUTOFMEMORY; ERROR_FILENAME_EXCED_RANGE for a name of more than 260
// characters. The name of an event that is open gives another handle of that event, as it is, and
// ERROR_ALREADY_EXISTS; the last error of a new one is 0. Names are of this process, without a name
// space before them; a null or empty name means none. Handles are not inherited: `security` is
// ignored.
HANDLE WINAPI CreateEventW(_SECURITY_ATTRIBUTES* security, BOOL manualReset, BOOL initialState,
                           const wchar_t* name);
// These three: FALSE and ERROR_INVALID_HANDLE unless the handle is open and of that kind. A thread
// goes on when its handle is closed. SetEvent ends the waits for the event before it returns, one
// wait of an automatic event: resetting it at once takes nothing back.
BOOL WINAPI SetEvent(HANDLE event);
BOOL WINAPI ResetEvent(HANDLE event);
BOOL WINAPI CloseHandle(HANDLE object);

// Milliseconds, INFINITE for no end. WAIT_OBJECT_0 and, of several, the index of the first that is
// signalled (of all, when `all` is set and they are at one moment); WAIT_TIMEOUT; WAIT_FAILED with
// ERROR_INVALID_HANDLE, or ERROR_INVALID_PARAMETER for none or more than MAXIMUM_WAIT_OBJECTS.
DWORD WINAPI WaitForSingleObject(HANDLE object, DWORD milliseconds);
DWORD WINAPI WaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL all,
                                    DWORD milliseconds);
void WINAPI Sleep(DWORD milliseconds);

// The handle of a thread that runs start(argument), signalled when it has ended; 0 when no
// thread can be started. `security` and `flags` are ignored, the stack is the system's; `id`, which
// may be null, is set to 0.
std::uintptr_t _beginthreadex(void* security, unsigned stackSize, unsigned (*start)(void*),
                              void* argument, unsigned flags, unsigned* id);

// Recursive. Ends the process when there is no memory, as little else would help.
void WINAPI InitializeCriticalSection(CRITICAL_SECTION* section);
void WINAPI EnterCriticalSection(CRITICAL_SECTION* section);
void WINAPI LeaveCriticalSection(CRITICAL_SECTION* section);
void WINAPI DeleteCriticalSection(CRITICAL_SECTION* section);

}  // extern "C"

#endif  // CORVANE_PLATFORM_LINUX_THREADS_THREADS_H_
