// One connection to the store's file, and the statements it runs.
#ifndef CORVANE_PLATFORM_LINUX_STORE_DATABASE_H_
#define CORVANE_PLATFORM_LINUX_STORE_DATABASE_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "corvane/linux/base.h"
#include "platform/linux/store/fork.h"

struct sqlite3;
struct sqlite3_stmt;

namespace Corvane::Store {

// A statement: a constant, which is prepared when it is first needed.
using Sql = const char*;

inline constexpr char kCommit[] = "COMMIT";
inline constexpr char kRollback[] = "ROLLBACK";

// Whoever opens the file may make it.
enum class OpenMode { kExisting, kCreate };

// Which file a store is.
struct StoreId {
  std::string path;  // empty: none
  std::int64_t device = 0;
  std::int64_t node = 0;

  friend bool operator==(const StoreId&, const StoreId&) = default;
};

// One thread at a time.
class Database {
 public:
  Database() = default;
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;
  ~Database() { Close(); }

  // ERROR_FILE_NOT_FOUND when there is no file and none is to be made.
  LSTATUS Open(OpenMode mode);
  // An open transaction is undone. What is a parent's is left to it.
  void Close();

  // For one that may be used again: true when it can be left open, without a transaction. Later,
  // whether the store is still where it was and nobody has touched the file, its log apart.
  bool Rest();
  bool IsAsLeft() const;

  StoreId Id() const;

  bool IsOpen() const { return m_sqlite != nullptr; }
  // Opened by the parent of this process.
  bool IsInherited() const { return IsOpen() && m_generation != ProcessGeneration(); }
  bool IsReadOnly() const;
  bool InTransaction() const;

  // A statement without parameters and rows.
  LSTATUS Run(Sql sql);
  LSTATUS BeginRead();
  // ERROR_BUSY at once while another writes. A file of the old version becomes one of this before.
  LSTATUS BeginWrite();

 private:
  friend class Query;

  LSTATUS Fill(const std::string& path);
  LSTATUS OpenFile();
  LSTATUS Connect(const std::string& name, int flags);
  LSTATUS Configure();
  LSTATUS CheckVersion();
  LSTATUS ReadMark(Sql pragma, std::int64_t* mark);
  LSTATUS Begin(Sql begin, bool toWrite);
  LSTATUS Prepare(Sql sql, sqlite3_stmt** statement);

  sqlite3* m_sqlite = nullptr;
  unsigned m_generation = 0;
  bool m_isOld = false;  // shown through views, at least when it was last looked at
  std::string m_path;
  std::vector<std::int64_t> m_asLeft;
  std::vector<std::pair<Sql, sqlite3_stmt*>> m_statements;
};

// One run of a statement. All its parameters are bound before the first step; what they point to
// stays until the end. A failure to prepare is the result of the first step.
class Query {
 public:
  Query(Database& database, Sql sql);
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;
  ~Query();

  Query& Bind(std::int64_t value);
  Query& Bind(std::string_view text);
  Query& Bind(const void* data, std::size_t bytes);

  // ERROR_SUCCESS with a row, `atEnd` when there is none.
  LSTATUS Step(LSTATUS atEnd = ERROR_NO_MORE_ITEMS);

  std::int64_t Integer(int column) const;
  // Of a text or a blob. Until the next step.
  std::string_view Bytes(int column) const;

  // Of the last statement that wrote.
  bool Changed() const;

 private:
  Database& m_database;
  sqlite3_stmt* m_statement = nullptr;
  LSTATUS m_failure = ERROR_SUCCESS;
  int m_parameter = 0;
};

}  // namespace Corvane::Store

#endif  // CORVANE_PLATFORM_LINUX_STORE_DATABASE_H_
