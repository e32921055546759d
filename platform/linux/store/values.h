// Operations on the values of a node. Each runs inside a transaction of the caller's.
#ifndef CORVANE_PLATFORM_LINUX_STORE_VALUES_H_
#define CORVANE_PLATFORM_LINUX_STORE_VALUES_H_

#include <string>

#include "platform/linux/store/database.h"
#include "platform/linux/store/names.h"

namespace Corvane::Store {

// The data of a value that is to be written, in memory of the caller's.
struct Data {
  DWORD type;
  const BYTE* bytes;
  DWORD size;
};

// ERROR_NOACCESS when the memory cannot be read, ERROR_NO_SYSTEM_RESOURCES for more of it than the
// store takes, ERROR_INVALID_PARAMETER for a name longer than a value may have.
LSTATUS CheckValue(const wchar_t* name, const Data& data);

// The node must be there.
LSTATUS SetValue(Database& database, std::int64_t node, const Name& name, const Data& data);

// Where the data of a value goes to: `bytes` may be null, `type` and `size` never. As the Win32
// calls have it: *size is the buffer's size, then the value's. ERROR_MORE_DATA, also with *type;
// ERROR_FILE_NOT_FOUND.
struct Buffer {
  DWORD* type;
  BYTE* bytes;
  DWORD* size;
};
LSTATUS GetValue(Database& database, std::int64_t node, const Name& name, const Buffer& buffer);

// ERROR_FILE_NOT_FOUND.
LSTATUS DeleteValue(Database& database, std::int64_t node, const Name& name);

}  // namespace Corvane::Store

#endif  // CORVANE_PLATFORM_LINUX_STORE_VALUES_H_
