// Splitting URLs into their parts.
#ifndef CORVANE_PLATFORM_LINUX_NET_WININET_H_
#define CORVANE_PLATFORM_LINUX_NET_WININET_H_

#include "corvane/linux/base.h"

#define ERROR_INTERNET_INVALID_URL 12005
#define ERROR_INTERNET_UNRECOGNIZED_SCHEME 12006

typedef WORD INTERNET_PORT;

// Of the schemes that Windows names those that make a difference here; others are unknown.
typedef enum {
  INTERNET_SCHEME_UNKNOWN = -1,
  INTERNET_SCHEME_FTP = 1,
  INTERNET_SCHEME_HTTP = 3,
  INTERNET_SCHEME_HTTPS = 4,
  INTERNET_SCHEME_FILE = 5,
} INTERNET_SCHEME;

// A part that is wanted has a NULL pointer and a length that is not 0. Only scheme, host and path
// can be wanted here.
typedef struct {
  DWORD dwStructSize;  // bytes
  wchar_t* lpszScheme;
  DWORD dwSchemeLength;  // characters, here and below
  INTERNET_SCHEME nScheme;
  wchar_t* lpszHostName;
  DWORD dwHostNameLength;
  INTERNET_PORT nPort;
  wchar_t* lpszUserName;
  DWORD dwUserNameLength;
  wchar_t* lpszPassword;
  DWORD dwPasswordLength;
  wchar_t* lpszUrlPath;
  DWORD dwUrlPathLength;
  wchar_t* lpszExtraInfo;
  DWORD dwExtraInfoLength;
} URL_COMPONENTSW;

extern "C" {

// TRUE, with each wanted part's place in `url` and its length; a part that the URL does not have is
// NULL with length 0. `urlChars` 0 means up to the NUL.
//   host   between "//" and the first "/", "?" or "#", less user information and port; an IPv6
//          literal keeps its brackets. A URL of files or without "//" has none
//   path   what follows, query and fragment included, cut at a line feed
//   nPort  the scheme's own when none or an empty one is given, 0 when that is not known
// Nothing is decoded. FALSE with nothing touched, and the last error
//   ERROR_INTERNET_UNRECOGNIZED_SCHEME  no scheme in front
//   ERROR_INTERNET_INVALID_URL          a port that is no decimal number up to 65535, an open "["
//   ERROR_INVALID_PARAMETER             a NULL argument, an empty URL, a flag, another dwStructSize
//   ERROR_NOT_SUPPORTED                 another part is wanted, or one in a buffer of the caller's
BOOL WINAPI InternetCrackUrlW(const wchar_t* url, DWORD urlChars, DWORD flags,
                              URL_COMPONENTSW* components);

}  // extern "C"

#endif  // CORVANE_PLATFORM_LINUX_NET_WININET_H_
