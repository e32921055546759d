#include "platform/linux/store/result_codes.h"

#include <sqlite3.h>

#include <cerrno>
#include <iterator>

namespace Corvane::Store {
namespace {

struct Code {
  int from;
  LSTATUS to;
};

template <std::size_t count>
LSTATUS FindResultCode(const Code (&codes)[count], int from, LSTATUS otherwise) {
  for (const Code& code : codes) {
    if (code.from == from) return code.to;
  }
  return otherwise;
}

constexpr Code kErrnoCodes[] = {{ENOENT, ERROR_FILE_NOT_FOUND}, {EACCES, ERROR_ACCESS_DENIED},
                                {EPERM, ERROR_ACCESS_DENIED},   {EROFS, ERROR_ACCESS_DENIED},
                                {ENOSPC, ERROR_DISK_FULL},      {EDQUOT, ERROR_DISK_FULL},
                                {EFBIG, ERROR_DISK_FULL},       {ENOMEM, ERROR_OUTOFMEMORY}};

constexpr Code kExtendedCodes[] = {{SQLITE_CANTOPEN_SYMLINK, ERROR_NOT_REGISTRY_FILE},
                                   {SQLITE_IOERR_NOMEM, ERROR_OUTOFMEMORY},
                                   {SQLITE_IOERR_SHMSIZE, ERROR_DISK_FULL}};

constexpr int kPrimaryCode = 0xFF;  // the mask
constexpr Code kPrimaryCodes[] = {
    {SQLITE_OK, ERROR_SUCCESS},
    {SQLITE_ROW, ERROR_SUCCESS},
    {SQLITE_DONE, ERROR_SUCCESS},
    {SQLITE_PERM, ERROR_ACCESS_DENIED},
    {SQLITE_AUTH, ERROR_ACCESS_DENIED},
    {SQLITE_READONLY, ERROR_ACCESS_DENIED},
    {SQLITE_FULL, ERROR_DISK_FULL},
    {SQLITE_NOTADB, ERROR_NOT_REGISTRY_FILE},
    {SQLITE_BUSY, ERROR_BUSY},
    {SQLITE_LOCKED, ERROR_BUSY},
    {SQLITE_NOMEM, ERROR_OUTOFMEMORY},
    {SQLITE_CORRUPT, ERROR_REGISTRY_CORRUPT},
    {SQLITE_ERROR, ERROR_REGISTRY_CORRUPT},   // the statements are constants: the tables are wrong
    {SQLITE_SCHEMA, ERROR_REGISTRY_CORRUPT},  // the same
    {SQLITE_TOOBIG, ERROR_REGISTRY_CORRUPT},  // no row is written that long
};

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
  return FindResultCode(kErrnoCodes, error, ERROR_REGISTRY_IO_FAILED);
}

LSTATUS FromSqlite(int result, sqlite3* database) {
  const int error = errno;
  const int primary = result & kPrimaryCode;
  const bool isSystems = primary == SQLITE_CANTOPEN || primary == SQLITE_IOERR;
  const LSTATUS code = isSystems ? FromSystemError(error, database)
                                 : FindResultCode(kPrimaryCodes, primary, ERROR_REGISTRY_IO_FAILED);
  return FindResultCode(kExtendedCodes, result, code);
}

}  // namespace Corvane::Store
