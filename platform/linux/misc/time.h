// Calendar time (UTC) and its count of 100-nanosecond units since 1601-01-01.
#ifndef CORVANE_PLATFORM_LINUX_MISC_TIME_H_
#define CORVANE_PLATFORM_LINUX_MISC_TIME_H_

#include "corvane/linux/base.h"

typedef struct _SYSTEMTIME {
  WORD wYear;
  WORD wMonth;      // from 1
  WORD wDayOfWeek;  // Sunday is 0
  WORD wDay;        // from 1
  WORD wHour;
  WORD wMinute;
  WORD wSecond;
  WORD wMilliseconds;
} SYSTEMTIME;

extern "C" {

void WINAPI GetSystemTime(SYSTEMTIME* now);

// FALSE and ERROR_INVALID_PARAMETER, with the output untouched: a field out of its range or a day
// that the month does not have (wDayOfWeek is ignored), a year outside 1601 to 30827.
BOOL WINAPI SystemTimeToFileTime(const SYSTEMTIME* systemTime, FILETIME* fileTime);

}  // extern "C"

#endif  // CORVANE_PLATFORM_LINUX_MISC_TIME_H_
