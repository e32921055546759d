-- A store of version 1, empty.
BEGIN;
CREATE TABLE node(id INTEGER PRIMARY KEY AUTOINCREMENT, parent INTEGER NOT NULL,
  folded TEXT NOT NULL, name TEXT NOT NULL, written INTEGER NOT NULL, UNIQUE(parent, folded)) STRICT;
CREATE TABLE value(node INTEGER NOT NULL, folded TEXT NOT NULL, name TEXT NOT NULL,
  type INTEGER NOT NULL, data BLOB NOT NULL, PRIMARY KEY(node, folded)) STRICT, WITHOUT ROWID;
INSERT INTO node VALUES(1, 0, 'REGISTRY', 'Registry', 0), (2, 0, 'PRINTERS', 'Printers', 0);
PRAGMA application_id = 1131574867;
PRAGMA user_version = 1;
COMMIT;
PRAGMA journal_mode = WAL;
