// The store's tables and statements. docs/store.md explains them.
#ifndef CORVANE_PLATFORM_LINUX_STORE_SCHEMA_H_
#define CORVANE_PLATFORM_LINUX_STORE_SCHEMA_H_

#include <cstdint>

#include "platform/linux/store/database.h"

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

constexpr const char* kStatements[] = {
    /*kBegin*/ "BEGIN",
    /*kBeginImmediate*/ "BEGIN IMMEDIATE",
    /*kCommit*/ "COMMIT",
    /*kRollback*/ "ROLLBACK",
    /*kFindNode*/ "SELECT id FROM node WHERE parent = ? AND folded = ?",
    /*kNodeExists*/ "SELECT 1 FROM node WHERE id = ?",
    /*kNodeWritten*/ "SELECT written FROM node WHERE id = ?",
    /*kAddNode*/
    "INSERT INTO node(parent, folded, name, written) VALUES(?, ?, ?, ?) RETURNING id",
    /*kTouchNode*/ "UPDATE node SET written = ? WHERE id = ?",
    /*kDeleteNode*/ "DELETE FROM node WHERE id = ?",
    /*kDeleteValues*/ "DELETE FROM value WHERE node = ?",
    /*kHasSubkeys*/ "SELECT 1 FROM node WHERE parent = ? LIMIT 1",
    /*kSubkeyInfo*/
    "SELECT count(*), coalesce(max(length(name)), 0) FROM node WHERE parent = ?",
    /*kListSubkeys*/
    "SELECT folded, name, written, '' FROM node WHERE parent = ? AND folded >= ? ORDER BY folded",
    /*kSkipToSubkey*/
    "SELECT folded FROM node WHERE parent = ? ORDER BY folded LIMIT 1 OFFSET ?",
    /*kFindValue*/ "SELECT type, data FROM value WHERE node = ? AND folded = ?",
    /*kSetValue*/
    ("INSERT INTO value(node, folded, name, type, data) VALUES(?, ?, ?, ?, ?) ON CONFLICT DO "
     "UPDATE SET type = excluded.type, data = excluded.data "
     "WHERE type <> excluded.type OR data <> excluded.data"),
    /*kDeleteValue*/ "DELETE FROM value WHERE node = ? AND folded = ?",
    /*kValueInfo*/
    ("SELECT count(*), coalesce(max(length(name)), 0), coalesce(max(length(data)), 0) FROM value "
     "WHERE node = ?"),
    /*kValueTotals*/
    ("SELECT count(*), coalesce(sum(length(name)), 0), coalesce(sum((length(data) + 7) & ~7), 0) "
     "FROM value WHERE node = ?"),
    /*kListValues*/
    "SELECT folded, name, type, data FROM value WHERE node = ? AND folded >= ? ORDER BY folded",
    /*kSkipToValue*/
    "SELECT folded FROM value WHERE node = ? ORDER BY folded LIMIT 1 OFFSET ?",
    /*kDataVersion*/ "PRAGMA data_version",
};
static_assert(sizeof kStatements / sizeof kStatements[0] == static_cast<std::size_t>(Sql::kCount));

}  // namespace Corvane::Store

#endif  // CORVANE_PLATFORM_LINUX_STORE_SCHEMA_H_
