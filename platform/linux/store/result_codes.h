// The one place where results of SQLite and of the system become Win32 codes.
#ifndef CORVANE_PLATFORM_LINUX_STORE_RESULT_CODES_H_
#define CORVANE_PLATFORM_LINUX_STORE_RESULT_CODES_H_

#include "corvane/linux/base.h"

struct sqlite3;

namespace Corvane::Store {

// `database` is the connection that gave `result`, an extended code; it may be null. errno was 0
// before that call.
LSTATUS FromSqlite(int result, sqlite3* database);

// A system's error number.
LSTATUS FromErrno(int error);

}  // namespace Corvane::Store

#endif  // CORVANE_PLATFORM_LINUX_STORE_RESULT_CODES_H_
