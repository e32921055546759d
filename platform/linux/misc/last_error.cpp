#include "corvane/linux/base.h"

namespace {
thread_local DWORD lastError = ERROR_SUCCESS;
}  // namespace

extern "C" {

DWORD WINAPI GetLastError() { return lastError; }

void WINAPI SetLastError(DWORD code) { lastError = code; }

}  // extern "C"
