// Integer types, result codes, GUIDs and the thread's last error, under their Win32 names.
// Widths are those of Windows: LONG, ULONG, DWORD and HRESULT have 32 bits. `wchar_t` keeps Linux's
// 32 bits.
#ifndef CORVANE_LINUX_BASE_H_
#define CORVANE_LINUX_BASE_H_

#include <cstdint>
#include <cstring>

#define CORVANE_API __attribute__((visibility("default")))
#define WINAPI
#define __stdcall
#define STDMETHODCALLTYPE

typedef std::uint8_t BYTE;
typedef char CHAR;
typedef std::int16_t SHORT;
typedef std::uint16_t USHORT;
typedef std::uint16_t WORD;
typedef std::int32_t LONG;
typedef std::uint32_t ULONG;
typedef std::uint32_t DWORD;
typedef int INT;
typedef unsigned int UINT;
typedef int BOOL;
typedef long long LONGLONG;  // not int64_t, which is `long` here: _variant_t tells the two apart
typedef unsigned long long ULONGLONG;
typedef float FLOAT;
typedef double DOUBLE;
typedef double DATE;
typedef wchar_t WCHAR;
typedef wchar_t OLECHAR;
typedef void* HANDLE;
typedef std::int32_t HRESULT;
typedef std::int32_t SCODE;
typedef std::int32_t LSTATUS;
typedef DWORD LCID;
typedef DWORD ACCESS_MASK;

typedef union tagCY {
  LONGLONG int64;
} CY;

// 100-nanosecond units since 1601-01-01 UTC.
typedef struct _FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
} FILETIME;

// Accepted wherever Windows takes one, and without effect: the file's owner alone has access.
typedef struct _SECURITY_ATTRIBUTES {
  DWORD nLength;
  void* lpSecurityDescriptor;
  BOOL bInheritHandle;
} SECURITY_ATTRIBUTES;

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

typedef struct _GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
} GUID;
typedef GUID IID;
typedef GUID CLSID;
typedef GUID UUID;
typedef const GUID& REFGUID;
typedef const IID& REFIID;
typedef const CLSID& REFCLSID;

inline bool operator==(const GUID& a, const GUID& b) {
  return std::memcmp(&a, &b, sizeof(GUID)) == 0;
}
inline bool operator!=(const GUID& a, const GUID& b) { return !(a == b); }
inline bool IsEqualGUID(REFGUID a, REFGUID b) { return a == b; }
inline bool IsEqualIID(REFIID a, REFIID b) { return a == b; }

#define SUCCEEDED(hr) (static_cast<HRESULT>(hr) >= 0)
#define FAILED(hr) (static_cast<HRESULT>(hr) < 0)

#define S_OK (static_cast<HRESULT>(0))
#define S_FALSE (static_cast<HRESULT>(1))
#define E_NOTIMPL (static_cast<HRESULT>(0x80004001))
#define E_NOINTERFACE (static_cast<HRESULT>(0x80004002))
#define E_POINTER (static_cast<HRESULT>(0x80004003))
#define E_FAIL (static_cast<HRESULT>(0x80004005))
#define E_UNEXPECTED (static_cast<HRESULT>(0x8000FFFF))
#define E_OUTOFMEMORY (static_cast<HRESULT>(0x8007000E))
#define E_INVALIDARG (static_cast<HRESULT>(0x80070057))
#define CO_E_NOTINITIALIZED (static_cast<HRESULT>(0x800401F0))
#define CLASS_E_NOAGGREGATION (static_cast<HRESULT>(0x80040110))
#define REGDB_E_CLASSNOTREG (static_cast<HRESULT>(0x80040154))
#define DISP_E_TYPEMISMATCH (static_cast<HRESULT>(0x80020005))
#define DISP_E_BADVARTYPE (static_cast<HRESULT>(0x80020008))
#define DISP_E_OVERFLOW (static_cast<HRESULT>(0x8002000A))
#define DISP_E_BADINDEX (static_cast<HRESULT>(0x8002000B))
#define DISP_E_ARRAYISLOCKED (static_cast<HRESULT>(0x8002000D))

#define ERROR_SUCCESS 0
#define ERROR_FILE_NOT_FOUND 2
#define ERROR_ACCESS_DENIED 5
#define ERROR_INVALID_HANDLE 6
#define ERROR_OUTOFMEMORY 14
#define ERROR_NOT_SUPPORTED 50
#define ERROR_INVALID_PARAMETER 87
#define ERROR_DISK_FULL 112
#define ERROR_INSUFFICIENT_BUFFER 122
#define ERROR_BAD_PATHNAME 161
#define ERROR_BUSY 170
#define ERROR_ALREADY_EXISTS 183
#define ERROR_FILENAME_EXCED_RANGE 206
#define ERROR_MORE_DATA 234
#define ERROR_NO_MORE_ITEMS 259
#define ERROR_OPERATION_ABORTED 995
#define ERROR_NOACCESS 998
#define ERROR_INVALID_FLAGS 1004
#define ERROR_BADKEY 1010
#define ERROR_REGISTRY_CORRUPT 1015
#define ERROR_REGISTRY_IO_FAILED 1016
#define ERROR_NOT_REGISTRY_FILE 1017
#define ERROR_KEY_DELETED 1018
#define ERROR_NO_UNICODE_TRANSLATION 1113
#define ERROR_CANCELLED 1223
#define ERROR_NO_SYSTEM_RESOURCES 1450
#define ERROR_TIMEOUT 1460
#define ERROR_INCORRECT_SIZE 1462
#define ERROR_UNKNOWN_PORT 1796
#define ERROR_INVALID_PRINTER_NAME 1801

extern "C" {

// The calling thread's last error: 0 on a new thread, changed only by SetLastError and by
// operations that say so.
CORVANE_API DWORD WINAPI GetLastError();
CORVANE_API void WINAPI SetLastError(DWORD code);

}  // extern "C"

#endif  // CORVANE_LINUX_BASE_H_
