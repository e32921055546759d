// The store's tables, of this version and of the one before. docs/store.md explains them.
#ifndef CORVANE_PLATFORM_LINUX_STORE_SCHEMA_H_
#define CORVANE_PLATFORM_LINUX_STORE_SCHEMA_H_

#include <cstdint>

struct sqlite3;

namespace Corvane::Store {

constexpr std::int64_t kApplicationId = 0x43727653;  // "CrvS"
constexpr std::int64_t kSchemaVersion = 2;           // a larger one is of a newer program
constexpr std::int64_t kOldVersion = 1;

// The two nodes without a parent.
constexpr std::int64_t kRegistryRoot = 1;  // HKEY_LOCAL_MACHINE
constexpr std::int64_t kPrinterRoot = 2;   // a node a printer, below it a node a key

// What the following give is SQLite's result.

// Fills an empty file.
int CreateStore(sqlite3* sqlite);

// A file of the old version is read as it is, until the first write to it. Shows it to the
// statements of this version, with names folded while they are compared: in temporary views of this
// connection, which can only be read.
int ShowOldVersion(sqlite3* sqlite);
// When the file is migrated, by whichever process.
int HideOldVersion(sqlite3* sqlite);

// Makes a file of this version of an old one that is shown, within a transaction of the caller's.
int Migrate(sqlite3* sqlite);

}  // namespace Corvane::Store

#endif  // CORVANE_PLATFORM_LINUX_STORE_SCHEMA_H_
