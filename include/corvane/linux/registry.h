// The registry below HKEY_LOCAL_MACHINE, kept in one SQLite file that processes may share: the one
// that the environment variable CORVANE_STORE names, else $XDG_STATE_HOME/corvane/store.db, else
// ~/.local/state/corvane/store.db. docs/store.md says more. A file of an earlier version of the
// library is read as it is; the first write to it makes it one of this version, which the earlier
// library refuses.
//
// Names fold case and keep the one they were made with. "\" separates the names of a path; several
// in a row and trailing ones count as one. Sizes of data are bytes, of names wide characters (here
// 32 bits each). Data is kept byte for byte whatever its type; a string counts its terminator only
// where the writer stored one, and none is added.
//
// Every operation may run on several threads, on one handle as well. A
// child may use the handles of its parent.
// Outputs are untouched after a failure unless something else is said. Any operation may give
//   ERROR_INVALID_HANDLE      NULL, closed, made up, or not a key
//   ERROR_KEY_DELETED         the key has been deleted since it was opened
//   ERROR_ACCESS_DENIED       the handle has not the right; the file or its folder is not writable
//   ERROR_BUSY                another process has held the file for longer than the time-out
//   ERROR_NOT_REGISTRY_FILE   the file is no database, another's, or of a newer version
//   ERROR_REGISTRY_CORRUPT    the file is damaged
//   ERROR_NOT_SUPPORTED       in a child, through a handle whose transaction its parent had begun
//   ERROR_DISK_FULL  ERROR_OUTOFMEMORY  ERROR_REGISTRY_IO_FAILED (all else that goes wrong there)
#ifndef CORVANE_LINUX_REGISTRY_H_
#define CORVANE_LINUX_REGISTRY_H_

#include <bit>

#include "corvane/linux/base.h"

typedef struct HKEY__* HKEY;
typedef ACCESS_MASK REGSAM;

// Always open, with every right.
#define HKEY_LOCAL_MACHINE \
  (std::bit_cast<HKEY>(static_cast<std::intptr_t>(static_cast<LONG>(0x80000002))))

#define KEY_QUERY_VALUE 0x0001
#define KEY_SET_VALUE 0x0002
#define KEY_CREATE_SUB_KEY 0x0004
#define KEY_ENUMERATE_SUB_KEYS 0x0008
#define KEY_NOTIFY 0x0010
#define KEY_CREATE_LINK 0x0020
#define KEY_WOW64_64KEY 0x0100
#define KEY_WOW64_32KEY 0x0200
#define KEY_READ 0x20019
#define KEY_WRITE 0x20006
#define KEY_EXECUTE KEY_READ
#define KEY_ALL_ACCESS 0xF003F
#define MAXIMUM_ALLOWED 0x02000000

#define REG_NONE 0
#define REG_SZ 1
#define REG_EXPAND_SZ 2
#define REG_BINARY 3
#define REG_DWORD 4
#define REG_DWORD_LITTLE_ENDIAN 4
#define REG_DWORD_BIG_ENDIAN 5
#define REG_LINK 6
#define REG_MULTI_SZ 7
#define REG_QWORD 11
#define REG_QWORD_LITTLE_ENDIAN 11

#define REG_OPTION_NON_VOLATILE 0
#define REG_CREATED_NEW_KEY 1
#define REG_OPENED_EXISTING_KEY 2

extern "C" {

// Opens the key at `path` below `key`, making it and its parents where they are missing. `type` and
// `security` are ignored, `options` other than REG_OPTION_NON_VOLATILE is ERROR_NOT_SUPPORTED.
// `disposition` may be NULL. The caller closes *result. Making a key needs no right of `key`'s
// handle, as on Windows.
//   ERROR_BADKEY              `path` is NULL
//   ERROR_BAD_PATHNAME        `path` begins with "\"
//   ERROR_INVALID_PARAMETER   `reserved` is not 0, `result` is NULL, a name is longer than 255
CORVANE_API LSTATUS WINAPI RegCreateKeyExW(HKEY key, const wchar_t* path, DWORD reserved,
                                           wchar_t* type, DWORD options, REGSAM access,
                                           const SECURITY_ATTRIBUTES* security, HKEY* result,
                                           DWORD* disposition);

// Opens the key at `path` (NULL or "": `key` itself) and makes nothing, no file either. The caller
// closes *result. *result is NULL when the key is missing.
//   ERROR_FILE_NOT_FOUND      no such key, or no file yet
//   ERROR_BAD_PATHNAME, ERROR_INVALID_PARAMETER as above; ERROR_NOT_SUPPORTED: `options` is not 0
CORVANE_API LSTATUS WINAPI RegOpenKeyExW(HKEY key, const wchar_t* path, DWORD options,
                                         REGSAM access, HKEY* result);

// Closing HKEY_LOCAL_MACHINE does nothing.
CORVANE_API LSTATUS WINAPI RegCloseKey(HKEY key);

// Any output may be NULL. Lengths of names are characters without terminator, of data bytes, of the
// longest there is. Keys have no class here: "" and 0. `securityBytes` is 0.
CORVANE_API LSTATUS WINAPI RegQueryInfoKeyW(HKEY key, wchar_t* type, DWORD* typeChars,
                                            DWORD* reserved, DWORD* subkeys, DWORD* maxSubkeyChars,
                                            DWORD* maxTypeChars, DWORD* values, DWORD* maxNameChars,
                                            DWORD* maxDataBytes, DWORD* securityBytes,
                                            FILETIME* lastWrite);

// The value number `index`, in no order that means anything. *nameChars is on entry the size of
// `name` with, and on return its length without, the terminator; *dataBytes the size of `data` and
// of the value. `type`, and `data` with `dataBytes`, may be NULL. Counting upwards costs the same
// for every step; a value written meanwhile may move the others.
//   ERROR_NO_MORE_ITEMS       `index` is past the last value
//   ERROR_MORE_DATA           `name` or `data` is too small; *type and *dataBytes are set
//   ERROR_INVALID_PARAMETER   `reserved` is not NULL, `name` or `nameChars` is, `data` without
//   `dataBytes`
CORVANE_API LSTATUS WINAPI RegEnumValueW(HKEY key, DWORD index, wchar_t* name, DWORD* nameChars,
                                         DWORD* reserved, DWORD* type, BYTE* data,
                                         DWORD* dataBytes);

// As RegEnumValueW, of the keys below `key`. `type` and `typeChars` get "" and 0.
CORVANE_API LSTATUS WINAPI RegEnumKeyExW(HKEY key, DWORD index, wchar_t* name, DWORD* nameChars,
                                         DWORD* reserved, wchar_t* type, DWORD* typeChars,
                                         FILETIME* lastWrite);

// A NULL or empty `name` is the key's default value. A NULL `data` asks for type and size.
//   ERROR_FILE_NOT_FOUND      no such value; *dataBytes is 0 if `data` is NULL
//   ERROR_MORE_DATA           `data` is too small; *type and *dataBytes (the bytes needed) are set
//   ERROR_INVALID_PARAMETER   `data` without `dataBytes`, `reserved` is not NULL
CORVANE_API LSTATUS WINAPI RegQueryValueExW(HKEY key, const wchar_t* name, DWORD* reserved,
                                            DWORD* type, BYTE* data, DWORD* dataBytes);

// Outside a group of writes each call is a transaction: once it has succeeded, a process killed at
// any moment leaves the new value, and before that the old one.
//   ERROR_NOACCESS            `data` cannot be read: NULL, or no memory of the process
//   ERROR_INVALID_PARAMETER   the name is longer than 16383 characters, `reserved` is not 0
//   ERROR_NO_SYSTEM_RESOURCES more data than the store takes (1 MiB)
CORVANE_API LSTATUS WINAPI RegSetValueExW(HKEY key, const wchar_t* name, DWORD reserved, DWORD type,
                                          const BYTE* data, DWORD dataBytes);

// ERROR_FILE_NOT_FOUND: no such value.
CORVANE_API LSTATUS WINAPI RegDeleteValueW(HKEY key, const wchar_t* name);

// Deletes the key at `path` with its values. Needs no right of `key`'s handle, as on Windows.
//   ERROR_ACCESS_DENIED       it has keys below it, or is HKEY_LOCAL_MACHINE
//   ERROR_FILE_NOT_FOUND      no such key
CORVANE_API LSTATUS WINAPI RegDeleteKeyW(HKEY key, const wchar_t* path);

}  // extern "C"

#endif  // CORVANE_LINUX_REGISTRY_H_
