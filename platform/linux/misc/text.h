// Conversion between narrow and wide text. The default code page of this platform is UTF-8, and a
// wide character holds a whole code point: there are no surrogates.
#ifndef CORVANE_PLATFORM_LINUX_MISC_TEXT_H_
#define CORVANE_PLATFORM_LINUX_MISC_TEXT_H_

#include "corvane/linux/base.h"

#define CP_ACP 0
#define CP_UTF8 65001

#define MB_ERR_INVALID_CHARS 0x00000008
#define WC_ERR_INVALID_CHARS 0x00000080

extern "C" {

// Both give the number of units written, or with `outputSize` 0 the number needed. A negative input
// length means "up to and with the NUL"; otherwise NULs are text and none is added. Ill-formed
// input becomes U+FFFD, or fails when the flag above is given. 0 is a failure, with the last error
//   ERROR_INVALID_PARAMETER      no input, no output, input and output the same, another code page
//   ERROR_INVALID_FLAGS          any other flag
//   ERROR_INSUFFICIENT_BUFFER    what fits has been written, whole characters only
//   ERROR_NO_UNICODE_TRANSLATION ill-formed input; what precedes it has been written
// Success leaves the last error alone.
int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, const char* input, int inputBytes,
                               wchar_t* output, int outputSize);
// `defaultChar` and `usedDefaultChar` must be NULL: every character has its bytes in UTF-8.
int WINAPI WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* input, int inputChars,
                               char* output, int outputSize, const char* defaultChar,
                               BOOL* usedDefaultChar);

}  // extern "C"

#endif  // CORVANE_PLATFORM_LINUX_MISC_TEXT_H_
