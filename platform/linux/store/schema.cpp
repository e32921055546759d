#include "platform/linux/store/schema.h"

#include <sqlite3.h>

#include <cerrno>
#include <initializer_list>
#include <string>

#include "base/exception_wall.h"
#include "platform/linux/store/names.h"

namespace Corvane::Store {
namespace {

// The tables of each version have names of their own: a process of another version that has the
// file open finds none from its next statement on, whatever it has prepared, and so writes nothing.
//
// AUTOINCREMENT: the number of a deleted key never comes to mean another one.
constexpr char kCreateTables[] = R"(
CREATE TABLE node2(
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  parent INTEGER NOT NULL,
  folded TEXT NOT NULL,
  name TEXT NOT NULL,
  written INTEGER NOT NULL,
  UNIQUE(parent, folded)
) STRICT;
CREATE TABLE value2(
  node INTEGER NOT NULL,
  folded TEXT NOT NULL,
  name TEXT NOT NULL,
  type INTEGER NOT NULL,
  data BLOB NOT NULL,
  PRIMARY KEY(node, folded)
) STRICT, WITHOUT ROWID;
PRAGMA user_version = 2;
)";

constexpr char kAddRoots[] = R"(
INSERT INTO node2 VALUES(1, 0, 'registry', 'Registry', 0), (2, 0, 'printers', 'Printers', 0);
PRAGMA application_id = 1131574867;
)";

constexpr char kShowOldVersion[] = R"(
CREATE TEMP VIEW node2 AS SELECT id, parent, fold(name) AS folded, name, written FROM main.node;
CREATE TEMP VIEW value2 AS SELECT node, fold(name) AS folded, name, type, data FROM main.value;
)";
constexpr char kHideOldVersion[] =
    "DROP VIEW IF EXISTS temp.node2; DROP VIEW IF EXISTS temp.value2";

// Keys whose paths differ in case alone become one: the one written last, which also has what is
// below the others. Of values that become one the key's that was written last stays; of two in one
// key, of which nothing tells the times, the one whose old folded name comes first, as that of the
// C library which knows more capital letters does. What hangs on no root is left behind.
constexpr char kCopyOldVersion[] = R"(
CREATE TEMP TABLE merged(id INTEGER PRIMARY KEY, written, kept);
INSERT INTO merged
  WITH RECURSIVE tree(id, written, path) AS (
    SELECT id, written, id FROM node WHERE id IN (1, 2)
    UNION ALL
    SELECT node.id, node.written, path || '\' || fold(name)
      FROM tree JOIN node ON parent = tree.id WHERE node.id NOT IN (1, 2))
  SELECT id, written, first_value(id) OVER (PARTITION BY path ORDER BY written DESC, id DESC)
    FROM tree;
INSERT INTO node2
  SELECT node.id, coalesce(above.kept, 0), fold(name), name, node.written
    FROM merged JOIN node USING(id) LEFT JOIN merged AS above ON above.id = parent
    WHERE node.id = merged.kept;
INSERT OR IGNORE INTO value2
  SELECT kept, fold(name), name, type, data FROM merged JOIN value ON node = id
    ORDER BY written DESC, id DESC, folded;
UPDATE sqlite_sequence SET seq = max(seq, (SELECT seq FROM sqlite_sequence WHERE name = 'node'))
  WHERE name = 'node2';
DROP TABLE node;
DROP TABLE value;
DROP TABLE merged;
)";

void FoldInSql(sqlite3_context* context, int, sqlite3_value** arguments) {
  const auto* text = static_cast<const char*>(sqlite3_value_blob(arguments[0]));
  const auto bytes = static_cast<std::size_t>(sqlite3_value_bytes(arguments[0]));
  const bool done = BehindWall(false, [&] {
    const std::string folded = FoldedText(text != nullptr ? std::string_view(text, bytes) : "");
    sqlite3_result_text64(context, folded.data(), folded.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    return true;
  });
  if (!done) sqlite3_result_error_nomem(context);
}

int RunSchemaScripts(sqlite3* sqlite, std::initializer_list<const char*> scripts) {
  int result = SQLITE_OK;
  errno = 0;
  for (const char* script : scripts) {
    if (result == SQLITE_OK) result = sqlite3_exec(sqlite, script, nullptr, nullptr, nullptr);
  }
  return result;
}

}  // namespace

int CreateStore(sqlite3* sqlite) {
  return RunSchemaScripts(
      sqlite, {"BEGIN", kCreateTables, kAddRoots, "COMMIT", "PRAGMA journal_mode = WAL"});
}

int ShowOldVersion(sqlite3* sqlite) {
  constexpr int kFlags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
  const int result =
      sqlite3_create_function(sqlite, "fold", 1, kFlags, nullptr, &FoldInSql, nullptr, nullptr);
  return result == SQLITE_OK ? RunSchemaScripts(sqlite, {kShowOldVersion}) : result;
}

int HideOldVersion(sqlite3* sqlite) { return RunSchemaScripts(sqlite, {kHideOldVersion}); }

int Migrate(sqlite3* sqlite) {
  return RunSchemaScripts(sqlite, {kHideOldVersion, kCreateTables, kCopyOldVersion});
}

}  // namespace Corvane::Store
