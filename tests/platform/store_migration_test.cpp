// Stores of the version before, whose names were folded by the C library (Linux).
#include <sqlite3.h>
#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>
#include <vector>

#include "tests/platform/store_fixture.h"

namespace Corvane::Test {
namespace {

// One connection, which knows nothing of the layer.
class Sqlite {
 public:
  explicit Sqlite(const std::string& file) { sqlite3_open(file.c_str(), &m_sqlite); }
  Sqlite(const Sqlite&) = delete;
  Sqlite& operator=(const Sqlite&) = delete;
  ~Sqlite() { sqlite3_close(m_sqlite); }

  int Run(const std::string& sql) {
    return sqlite3_exec(m_sqlite, sql.c_str(), nullptr, nullptr, nullptr);
  }
  // The rows, "|" between columns and ";" behind each; "<message>" for a failure.
  std::string Rows(const std::string& sql) {
    std::string rows;
    const auto add = [](void* context, int columns, char** texts, char**) {
      std::string& all = *static_cast<std::string*>(context);
      for (int i = 0; i < columns; ++i) all += (i > 0 ? "|" : "") + std::string(texts[i]);
      all += ";";
      return 0;
    };
    const bool read = sqlite3_exec(m_sqlite, sql.c_str(), add, &rows, nullptr) == SQLITE_OK;
    return read ? rows : "<" + std::string(sqlite3_errmsg(m_sqlite)) + ">";
  }
  sqlite3* Get() { return m_sqlite; }

 private:
  sqlite3* m_sqlite = nullptr;
};

constexpr char kVersion1[] = R"(
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
)";
constexpr char kNodes[] = "SELECT id, parent, folded, name FROM node2 WHERE id > 2 ORDER BY id";
constexpr char kValues[] = "SELECT node, folded, name, data FROM value2 ORDER BY node, folded";

// Before rows of node, folded name, name and data, which SQL has as a text.
const std::string kAddValues =
    "INSERT INTO value SELECT column1, column2, column3, 3, CAST(column4 AS BLOB) FROM (VALUES";
const std::string kRows =
    "INSERT INTO node VALUES(3,1,'K','k',5),(4,3,'\u00C4','\u00C4',5),(5,3,'\u00E4','\u00E4',6);" +
    kAddValues +
    "(3,'V','v','old'),(3,'\u0416','\u0436','zh'),(4,'V','v','upper'),(5,'V','v','lower'));";

void MakeOld(const std::string& file, const std::string& rows = kRows) {
  std::filesystem::create_directory(std::filesystem::path(file).parent_path());
  ASSERT_EQ(SQLITE_OK, Sqlite(file).Run(kVersion1 + rows));
}
// Changes nothing else.
LSTATUS Write() { return RegDeleteKeyW(HKEY_LOCAL_MACHINE, L"missing"); }

using StoreMigrationTest = StoreTest;

// Where the C library had no table of letters, or an older one, names were two that now are one.
TEST_F(StoreMigrationTest, MakesOneOfRowsThatDifferInCaseAlone) {
  const struct {
    const char* name;
    const char* nodes;   // id, parent, folded, name, written
    const char* values;  // node, folded, name, type, data
    std::string migratedNodes;
    std::string migratedValues;
  } kCases[] = {
      {"nothing to merge", "(3,1,'K\u00C4','K\u00E4',5),(9,2,'Q','q',5),(11,9,'UBIDI','Ubidi',5)",
       "(3,'','','default'),(3,'A_\u0416','a_\u0436','1'),(11,'V','V','2')",
       "3|1|k\u00E4|K\u00E4;9|2|q|q;11|9|ubidi|Ubidi;",
       "3|||default;3|a_\u0436|a_\u0436|1;11|v|V|2;"},
      {"two values of a key", "(3,1,'K','k',5)",
       "(3,'\u00C4','\u00C4','upper'),(3,'\u00E4','\u00E4','lower'),(3,'\u00E4B','\u00E4b','"
       "other')",
       "3|1|k|k;", "3|\u00E4|\u00C4|upper;3|\u00E4b|\u00E4b|other;"},
      {"keys, the later one last", "(3,1,'\u00C4','\u00C4',5),(4,1,'\u00E4','\u00E4',6)",
       "(3,'A','A','old'),(3,'B','b','only old'),(4,'A','a','new')", "4|1|\u00E4|\u00E4;",
       "4|a|a|new;4|b|b|only old;"},
      {"keys, the later one first", "(3,1,'\u00C4','\u00C4',6),(4,1,'\u00E4','\u00E4',5)",
       "(3,'A','A','new'),(4,'A','a','old')", "3|1|\u00E4|\u00C4;", "3|a|A|new;"},
      {"three keys written at once",
       "(3,1,'\u00C4\u00D6','x',5),(4,1,'\u00C4\u00F6','x',5),(5,1,'\u00E4\u00F6','x',5)",
       "(3,'A','A','3'),(4,'A','A','4'),(3,'B','B','3'),(5,'C','C','5')", "5|1|x|x;",
       "5|a|A|4;5|b|B|3;5|c|C|5;"},
      {"keys below merged keys",
       "(3,1,'\u00C4','\u00C4',6),(4,1,'\u00E4','\u00E4',5),(5,3,'S','s',1),(6,4,'S','S',2),(7,4,'"
       "T','T',3),"
       "(8,6,'U','u',1)",
       "(5,'V','V','5'),(6,'V','V','6'),(8,'V','V','8')",
       "3|1|\u00E4|\u00C4;6|3|s|S;7|3|t|T;8|6|u|u;", "6|v|V|6;8|v|V|8;"},
      {"printers", "(3,2,'\u00C4','\u00C4',5),(4,2,'\u00E4','\u00E4',6)", "(3,'V','V','3')",
       "4|2|\u00E4|\u00E4;", "4|v|V|3;"},
      {"what hangs on nothing, and a circle",
       "(3,1,'K','k',5),(4,77,'L','l',5),(5,6,'M','m',5),(6,5,'N','n',5)",
       "(3,'V','V','3'),(4,'V','V','4'),(99,'V','V','99')", "3|1|k|k;", "3|v|V|3;"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    const TestStore store;
    MakeOld(store.File(),
            std::string("INSERT INTO node VALUES") + c.nodes + ";" + kAddValues + c.values + ")");
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, Write());
    Sqlite sqlite(store.File());
    EXPECT_EQ(c.migratedNodes, sqlite.Rows(kNodes));
    EXPECT_EQ(c.migratedValues, sqlite.Rows(kValues));
  }
}

// What a program sees that only reads; of two names the one that is spelled as asked for.
int ReadOld() {
  if (Value(L"V") != "old" || Value(L"\u0416") != "zh") return 1;
  if (Value(L"V", L"K\\\u00C4") != "upper" || Value(L"V", L"K\\\u00E4") != "lower") return 2;
  UniqueHkey key;
  if (Open(MAXIMUM_ALLOWED, key.Receive()) != ERROR_SUCCESS) return 3;
  std::wstring names;
  wchar_t name[8];
  for (DWORD i = 0, chars = 8;
       RegEnumValueW(key.Get(), i, name, &chars, nullptr, nullptr, nullptr, nullptr) == 0; ++i) {
    names += name;
    chars = 8;
  }
  return names == L"v\u0436" ? 0 : 4;
}

TEST_F(StoreMigrationTest, ReadsWithoutWriting) {
  MakeOld(File());
  EXPECT_EQ(0, ReadOld());
  chmod(File().c_str(), 0444);
  chmod(Folder().c_str(), 0555);
  EXPECT_EQ(0, Wait(Start(
                   [] {
                     const int result = ReadOld();
                     return result != 0 || Write() == ERROR_ACCESS_DENIED ? result : 5;
                   },
                   User::kNobody)));
  chmod(Folder().c_str(), 0700);
  chmod(File().c_str(), 0600);
  EXPECT_EQ("1;", Sqlite(File()).Rows("PRAGMA user_version"));
  // A handle lives through the migration, by its own process or by another.
  UniqueHkey reader;
  UniqueHkey writer;
  ASSERT_EQ(ERROR_SUCCESS, Open(KEY_READ, reader.Receive()));
  ASSERT_EQ(ERROR_SUCCESS, Open(KEY_ALL_ACCESS, writer.Receive()));
  EXPECT_EQ("old", Get(reader.Get(), L"v"));
  EXPECT_EQ("old", Get(writer.Get(), L"v"));
  EXPECT_EQ(0, Wait(Start([&] { return Set(writer.Get(), L"V", "new"); })));
  EXPECT_EQ("2;", Sqlite(File()).Rows("PRAGMA user_version"));
  EXPECT_EQ("new", Get(reader.Get(), L"v"));
  EXPECT_EQ(ERROR_SUCCESS, Set(writer.Get(), L"V", "newer"));
  EXPECT_EQ("newer", Get(reader.Get(), L"v"));
  EXPECT_EQ("lower", Value(L"v", L"k\\\u00C4"));
}

// It has the file open, and everything prepared.
TEST_F(StoreMigrationTest, RefusesAnOlderProcess) {
  MakeOld(File(), kRows + "DELETE FROM node WHERE id = 5;");
  Sqlite older(File());
  std::vector<sqlite3_stmt*> statements;
  for (const char* const sql :
       {"SELECT id FROM node WHERE parent = 1 AND folded = 'K'",
        "INSERT INTO node(parent, folded, name, written) VALUES(1, 'X', 'x', 5) RETURNING id",
        "UPDATE node SET written = 7 WHERE id = 3", "DELETE FROM node WHERE id = 4",
        "INSERT INTO value VALUES(3, 'V', 'v', 3, 'older') ON CONFLICT DO UPDATE SET data = "
        "'older'",
        "DELETE FROM value WHERE node = 3"}) {
    ASSERT_EQ(SQLITE_OK,
              sqlite3_prepare_v2(older.Get(), sql, -1, &statements.emplace_back(), nullptr));
  }
  EXPECT_EQ(SQLITE_ROW, sqlite3_step(statements[0]));
  sqlite3_reset(statements[0]);
  UniqueHkey key;
  ASSERT_EQ(ERROR_SUCCESS, Create(KEY_READ, key.Receive(), L"new"));
  for (sqlite3_stmt* statement : statements) {
    EXPECT_EQ(SQLITE_ERROR, sqlite3_step(statement)) << sqlite3_sql(statement);
    sqlite3_finalize(statement);
  }
  EXPECT_EQ("3|1|k|k;4|3|\u00E4|\u00C4;6|1|new|new;", older.Rows(kNodes)) << "5 was another key";
  EXPECT_EQ("old", Value(L"v"));
}

TEST_F(StoreMigrationTest, ReadsOnWhereItCannotMigrate) {
  MakeOld(File(), kRows + "CREATE TABLE value2(x);");
  EXPECT_EQ(ERROR_REGISTRY_CORRUPT, Write());
  EXPECT_EQ(0, ReadOld());
  EXPECT_EQ("1|5;", Sqlite(File()).Rows("SELECT 1, count(*) FROM node"));
}

// Later each time, until it is done before.
TEST_F(StoreMigrationTest, LeavesTheOldOrTheNewStoreWhenKilled) {
  std::string rows = kRows + kAddValues;
  for (int i = 0; i < 2000; ++i) {
    const std::string name = "'N" + std::to_string(i) + "'";
    rows += (i > 0 ? "," : "") + ("(3," + name) + "," + name + ",zeroblob(100))";
  }
  const TestStore old;
  MakeOld(old.File(), rows + ")");
  bool done = false;
  for (std::chrono::microseconds delay(500); !done; delay += delay / 4) {
    const TestStore store;
    std::filesystem::create_directory(store.File().parent_path());
    std::filesystem::copy_file(old.File(), store.File());
    const pid_t child = Start([] { return Write() == ERROR_FILE_NOT_FOUND ? 0 : 1; });
    std::this_thread::sleep_for(delay);
    kill(child, SIGKILL);
    done = Wait(child) == 0;
    Sqlite sqlite(store.File());
    const bool isNew = sqlite.Rows("PRAGMA user_version") == "2;";
    EXPECT_EQ(isNew ? "2003;" : "2004;",
              sqlite.Rows(std::string("SELECT count(*) FROM ") + (isNew ? "value2" : "value")));
    EXPECT_EQ("ok;", sqlite.Rows("PRAGMA integrity_check"));
    EXPECT_TRUE(isNew || !done);
  }
}

}  // namespace
}  // namespace Corvane::Test
