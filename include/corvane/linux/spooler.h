// Printer data: named values in named keys of a printer, kept in the registry's file (see
// corvane/linux/registry.h, also for what any operation may give and for threads).
//
// There is no list of printers here: every well-formed name opens, and a printer's data comes into
// being with the first write. Names of printers, keys and values fold case. Sizes are bytes.
#ifndef CORVANE_LINUX_SPOOLER_H_
#define CORVANE_LINUX_SPOOLER_H_

#include "corvane/linux/base.h"

typedef struct _devicemodeW DEVMODEW;  // never looked at

typedef struct _PRINTER_DEFAULTSW {
  wchar_t* pDatatype;
  DEVMODEW* pDevMode;
  ACCESS_MASK DesiredAccess;
} PRINTER_DEFAULTSW;
typedef PRINTER_DEFAULTSW PRINTER_DEFAULTS;

typedef struct _PRINTER_ENUM_VALUESW {
  wchar_t* pValueName;
  DWORD cbValueName;  // with the terminator
  DWORD dwType;
  BYTE* pData;  // NULL when there is none
  DWORD cbData;
} PRINTER_ENUM_VALUESW;
typedef PRINTER_ENUM_VALUESW PRINTER_ENUM_VALUES;

#define PRINTER_ACCESS_ADMINISTER 0x00000004
#define PRINTER_ACCESS_USE 0x00000008
#define PRINTER_READ 0x00020008
#define PRINTER_WRITE 0x00020008
#define PRINTER_EXECUTE 0x00020008
#define PRINTER_ALL_ACCESS 0x000F000C

extern "C" {

// TRUE, and a handle that the caller closes. Of `defaults` only DesiredAccess counts; writing needs
// PRINTER_ACCESS_ADMINISTER. With NULL the handle has every right (on Windows it could only print):
// the data of a queue here is the user's own. FALSE and a NULL *printer, with the last error
//   ERROR_INVALID_PRINTER_NAME  not 1 to 220 characters, or one of them is "\", "," or "!"
//   ERROR_INVALID_PARAMETER     `printer` is NULL
//   ERROR_NOT_SUPPORTED         `name` is NULL: there is no print server
CORVANE_API BOOL WINAPI OpenPrinterW(wchar_t* name, HANDLE* printer, PRINTER_DEFAULTSW* defaults);

// FALSE and ERROR_INVALID_HANDLE (last error).
CORVANE_API BOOL WINAPI ClosePrinter(HANDLE printer);

// Every value of one key, in no order that means anything: *count structures at the start of
// `values`, whose pointers lead into its rest. ERROR_SUCCESS also for a key without values.
//   ERROR_MORE_DATA          the buffer is too small; *needed is the size that does, *count 0
//   ERROR_FILE_NOT_FOUND     the printer has no such key; *needed and *count are 0
//   ERROR_INVALID_PARAMETER  `needed`, `count` or `key` is NULL, `values` is with a size
CORVANE_API DWORD WINAPI EnumPrinterDataExW(HANDLE printer, const wchar_t* key, BYTE* values,
                                            DWORD valuesBytes, DWORD* needed, DWORD* count);

// `type` may be NULL. *needed is the value's size in every case but the last two.
//   ERROR_MORE_DATA          the buffer is too small
//   ERROR_FILE_NOT_FOUND     no such key or value; *needed is 0
//   ERROR_INVALID_PARAMETER  `key`, `value` or `needed` is NULL, `data` is with a size
CORVANE_API DWORD WINAPI GetPrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* value,
                                           DWORD* type, BYTE* data, DWORD dataBytes, DWORD* needed);

// Makes the key, and those it lies below ("a\b"), where they are missing.
//   ERROR_NOACCESS           `data` cannot be read: no memory of the process
//   ERROR_ACCESS_DENIED      the handle was opened without PRINTER_ACCESS_ADMINISTER
//   ERROR_INVALID_PARAMETER  `key` is NULL or empty, `value` is NULL, a name is too long
CORVANE_API DWORD WINAPI SetPrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* value,
                                           DWORD type, BYTE* data, DWORD dataBytes);

// ERROR_FILE_NOT_FOUND: no such key or value.
CORVANE_API DWORD WINAPI DeletePrinterDataExW(HANDLE printer, const wchar_t* key,
                                              const wchar_t* value);

}  // extern "C"

#endif  // CORVANE_LINUX_SPOOLER_H_
