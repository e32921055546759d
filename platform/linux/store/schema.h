// The store's tables. docs/store.md explains them.
#ifndef CORVANE_PLATFORM_LINUX_STORE_SCHEMA_H_
#define CORVANE_PLATFORM_LINUX_STORE_SCHEMA_H_

#include <cstdint>

namespace Corvane::Store {

constexpr std::int64_t kApplicationId = 0x43727653;  // "CrvS"
constexpr std::int64_t kSchemaVersion = 1;           // a larger one is of a newer program

// The two nodes without a parent.
constexpr std::int64_t kRegistryRoot = 1;  // HKEY_LOCAL_MACHINE
constexpr std::int64_t kPrinterRoot = 2;   // a node a printer, below it a node a key

// AUTOINCREMENT: the number of a deleted key never comes to mean another one.
constexpr const char* kCreateSchema = R"(
BEGIN;
CREATE TABLE node(
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  parent INTEGER NOT NULL,
  folded TEXT NOT NULL,
  name TEXT NOT NULL,
  written INTEGER NOT NULL,
  UNIQUE(parent, folded)
) STRICT;
CREATE TABLE value(
  node INTEGER NOT NULL,
  folded TEXT NOT NULL,
  name TEXT NOT NULL,
  type INTEGER NOT NULL,
  data BLOB NOT NULL,
  PRIMARY KEY(node, folded)
) STRICT, WITHOUT ROWID;
INSERT INTO node VALUES(1, 0, 'REGISTRY', 'Registry', 0), (2, 0, 'PRINTERS', 'Printers', 0);
PRAGMA application_id = 1131574867;
PRAGMA user_version = 1;
COMMIT;
PRAGMA journal_mode = WAL;
)";

}  // namespace Corvane::Store

#endif  // CORVANE_PLATFORM_LINUX_STORE_SCHEMA_H_
