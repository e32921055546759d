#include "platform/linux/store/result_codes.h"

#include <sqlite3.h>

#include <cerrno>

namespace Corvane::Store {
namespace {

constexpr int kPrimaryCode = 0xFF;  // the mask

// SQLite keeps the system's error number of a statement, but not of a failed COMMIT.
LSTATUS FromSystemError(int error, sqlite3* database) {
  LSTATUS code = FromErrno(error);
  if (code == ERROR_FILE_NOT_FOUND || code == ERROR_REGISTRY_IO_FAILED) {
    code = FromErrno(database != nullptr ? sqlite3_system_errno(database) : 0);
  }
  // A file that vanished under an open connection is no missing key.
  return code == ERROR_FILE_NOT_FOUND ? LSTATUS{ERROR_REGISTRY_IO_FAILED} : code;
}

}  // namespace

LSTATUS FromErrno(int error) {
  switch (error) {
    case ENOENT:
      return ERROR_FILE_NOT_FOUND;
    case EACCES:
    case EPERM:
    case EROFS:
      return ERROR_ACCESS_DENIED;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return ERROR_DISK_FULL;
    case ENOMEM:
      return ERROR_OUTOFMEMORY;
    default:
      return ERROR_REGISTRY_IO_FAILED;
  }
}

LSTATUS FromSqlite(int result, sqlite3* database) {
  const int error = errno;
  switch (result) {
    case SQLITE_CANTOPEN_SYMLINK:
      return ERROR_NOT_REGISTRY_FILE;
    case SQLITE_IOERR_NOMEM:
      return ERROR_OUTOFMEMORY;
    case SQLITE_IOERR_SHMSIZE:
      return ERROR_DISK_FULL;
    default:
      break;
  }
  switch (result & kPrimaryCode) {
    case SQLITE_OK:
    case SQLITE_ROW:
    case SQLITE_DONE:
      return ERROR_SUCCESS;
    case SQLITE_PERM:
    case SQLITE_AUTH:
    case SQLITE_READONLY:
      return ERROR_ACCESS_DENIED;
    case SQLITE_FULL:
      return ERROR_DISK_FULL;
    case SQLITE_NOTADB:
      return ERROR_NOT_REGISTRY_FILE;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return ERROR_BUSY;
    case SQLITE_NOMEM:
      return ERROR_OUTOFMEMORY;
    case SQLITE_CORRUPT:
    case SQLITE_ERROR:   // the statements are constants: the tables are not as they should be
    case SQLITE_SCHEMA:  // the same
    case SQLITE_TOOBIG:  // no row is written that long
      return ERROR_REGISTRY_CORRUPT;
    case SQLITE_CANTOPEN:
    case SQLITE_IOERR:
      return FromSystemError(error, database);
    default:
      return ERROR_REGISTRY_IO_FAILED;
  }
}

}  // namespace Corvane::Store
