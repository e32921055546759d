// Stores of the version before, whose names were folded by the C library (Linux).
#include <sqlite3.h>

#include <chrono>
#include <csignal>
#include <thread>
#include <vector>

#include "tests/platform/store_fixture.h"
#include "tests/support/cases.h"

namespace Corvane::Test {
namespace {

// One connection, which knows nothing of the layer.
class Sqlite {
 public:
  explicit Sqlite(const std::string& file) { sqlite3_open(file.c_str(), &m_sqlite); }
  Sqlite(const Sqlite&) = delete;
  Sqlite& operator=(const Sqlite&) = delete;
  ~Sqlite() { sqlite3_close(m_sqlite); }

  // The rows, "|" between columns and ";" behind each; "<message>" for a failure.
  std::string Run(const std::string& sql) {
    std::string rows;
    const auto add = [](void* context, int columns, char** texts, char**) {
      std::string& all = *static_cast<std::string*>(context);
      for (int i = 0; i < columns; ++i) all += (i > 0 ? "|" : "") + std::string(texts[i]);
      all += ";";
      return 0;
    };
    const bool done = sqlite3_exec(m_sqlite, sql.c_str(), add, &rows, nullptr) == SQLITE_OK;
    return done ? rows : "<" + std::string(sqlite3_errmsg(m_sqlite)) + ">";
  }
  sqlite3* Get() { return m_sqlite; }

 private:
  sqlite3* m_sqlite = nullptr;
};

constexpr char kNodes[] = "SELECT id, parent, folded, name FROM node2 WHERE id > 2 ORDER BY id";
constexpr char kValues[] = "SELECT node, folded, name, data FROM value2 ORDER BY node, folded";

// Rows of id, parent, folded name, name and time; of node, folded name, name and data.
std::string AddNodes(const std::string& rows) { return "INSERT INTO node VALUES" + rows + ";"; }
std::string AddValues(const std::string& rows) {
  return "INSERT INTO value SELECT column1, column2, column3, 3, CAST(column4 AS BLOB) FROM "
         "(VALUES" +
         rows + ");";
}
const std::string kRows =
    AddNodes("(3,1,'K','k',5),(4,3,'\u00C4','\u00C4',5),(5,3,'\u00E4','\u00E4',6)") +
    AddValues(
        "(3,'V','v','old'),(3,'\u0416','\u0436','zh'),(4,'V','v','upper'),(5,'V','v','lower')");

void MakeOld(const std::filesystem::path& file, const std::string& rows = kRows) {
  std::filesystem::create_directory(file.parent_path());
  ASSERT_EQ("wal;", Sqlite(file).Run(ReadData("platform/store_version_1.sql") + rows));
}
// Changes nothing else.
LSTATUS Write() { return RegDeleteKeyW(HKEY_LOCAL_MACHINE, L"missing"); }

using StoreMigrationTest = StoreTest;

// Where the C library had no table of letters, or an older one, names were two that now are one.
TEST_F(StoreMigrationTest, MakesOneOfRowsThatDifferInCaseAlone) {
  for (const Case& c : ReadCases("platform/store_migrations.txt")) {
    SCOPED_TRACE(c.Where());
    const TestStore store;
    MakeOld(store.File(), AddNodes(c.Text("nodes")) + AddValues(c.Text("values")));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, Write());
    Sqlite sqlite(store.File());
    EXPECT_EQ(c.Text("migrated nodes"), sqlite.Run(kNodes));
    EXPECT_EQ(c.Text("migrated values"), sqlite.Run(kValues));
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
  MakeReadOnly(true);
  const auto use = [] {
    const int result = ReadOld();
    return result != 0 || Write() == ERROR_ACCESS_DENIED ? result : 5;
  };
  EXPECT_EQ(0, InChild(use, User::kNobody));
  MakeReadOnly(false);
  EXPECT_EQ("1;", Sqlite(File()).Run("PRAGMA user_version"));
  // A handle lives through the migration, by its own process or by another.
  UniqueHkey reader;
  ASSERT_EQ(ERROR_SUCCESS, Open(KEY_READ, reader.Receive()));
  const UniqueHkey writer = Opened();
  EXPECT_EQ("old", Get(reader, L"v"));
  EXPECT_EQ("old", Get(writer, L"v"));
  EXPECT_EQ(0, InChild([&] { return Set(writer, L"V", "new"); }));
  EXPECT_EQ("2;", Sqlite(File()).Run("PRAGMA user_version"));
  EXPECT_EQ("new", Get(reader, L"v"));
  EXPECT_EQ(ERROR_SUCCESS, Set(writer, L"V", "newer"));
  EXPECT_EQ("newer", Get(reader, L"v"));
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
        "INSERT INTO value VALUES(3, 'V', 'v', 3, 'x') ON CONFLICT DO UPDATE SET data = 'x'",
        "DELETE FROM value WHERE node = 3"}) {
    sqlite3_stmt*& statement = statements.emplace_back();
    ASSERT_EQ(SQLITE_OK, sqlite3_prepare_v2(older.Get(), sql, -1, &statement, nullptr)) << sql;
  }
  EXPECT_EQ(SQLITE_ROW, sqlite3_step(statements[0]));
  sqlite3_reset(statements[0]);
  UniqueHkey key;
  ASSERT_EQ(ERROR_SUCCESS, Create(KEY_READ, key.Receive(), L"new"));
  for (sqlite3_stmt* statement : statements) {
    EXPECT_EQ(SQLITE_ERROR, sqlite3_step(statement)) << sqlite3_sql(statement);
    sqlite3_finalize(statement);
  }
  EXPECT_EQ("3|1|k|k;4|3|\u00E4|\u00C4;6|1|new|new;", older.Run(kNodes)) << "5 was another key";
  EXPECT_EQ("old", Value(L"v"));
}

TEST_F(StoreMigrationTest, ReadsOnWhereItCannotMigrate) {
  MakeOld(File(), kRows + "CREATE TABLE value2(x);");
  EXPECT_EQ(ERROR_REGISTRY_CORRUPT, Write());
  EXPECT_EQ(0, ReadOld());
  EXPECT_EQ("1|5;", Sqlite(File()).Run("SELECT 1, count(*) FROM node"));
}

// Later each time, until it is done before.
TEST_F(StoreMigrationTest, LeavesTheOldOrTheNewStoreWhenKilled) {
  std::string rows;
  for (int i = 0; i < 2000; ++i) {
    const std::string name = "'N" + std::to_string(i) + "'";
    rows.append(i > 0 ? ",(3," : "(3,")
        .append(name)
        .append(",")
        .append(name)
        .append(",zeroblob(100))");
  }
  const TestStore old;
  MakeOld(old.File(), kRows + AddValues(rows));
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
    const bool isNew = sqlite.Run("PRAGMA user_version") == "2;";
    EXPECT_EQ(isNew ? "2003;" : "2004;",
              sqlite.Run(std::string("SELECT count(*) FROM ") + (isNew ? "value2" : "value")));
    EXPECT_EQ("ok;", sqlite.Run("PRAGMA integrity_check"));
    EXPECT_TRUE(isNew || !done);
  }
}

}  // namespace
}  // namespace Corvane::Test
