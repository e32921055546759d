// For Windows.
#include <windows.h>

#include <tlhelp32.h>

#include "tests/support/process_counts.h"

namespace Corvane::Test {

int CountThreads() {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 thread = {};
  thread.dwSize = sizeof(thread);
  int count = 0;
  for (BOOL found = Thread32First(snapshot, &thread); found;
       found = Thread32Next(snapshot, &thread)) {
    if (thread.th32OwnerProcessID == GetCurrentProcessId()) ++count;
  }
  CloseHandle(snapshot);
  return count;
}

int CountHandles() {
  DWORD count = 0;
  GetProcessHandleCount(GetCurrentProcess(), &count);
  return static_cast<int>(count);
}

}  // namespace Corvane::Test
