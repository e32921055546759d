#include "platform/linux/store/database.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>

#include "platform/linux/store/result_codes.h"
#include "platform/linux/store/schema.h"
#include "platform/linux/store/store_file.h"

namespace Corvane::Store {
namespace {

// Of a row read from the file, longest names and data included: the memory that a damaged length
// can ask for.
constexpr int kMaxRowBytes = 2 << 20;

// For who repairs the log after a crash. Writers wait for each other elsewhere.
constexpr int kBusyTimeoutMs = 5000;

// Of the log, after which a commit copies it into the database. Small, because whoever opens the
// file first reads it through; large enough that few commits wait for the disk.
constexpr int kCheckpointPages = 256;

constexpr char kVersionMark[] = "PRAGMA user_version";

bool IsEmptyOrMissing(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) != 0 || status.st_size == 0;
}

void AppendToSql(const std::string& path, bool withChanges, std::vector<std::int64_t>* state) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) return;
  state->insert(state->end(), {static_cast<std::int64_t>(status.st_dev),
                               static_cast<std::int64_t>(status.st_ino)});
  if (!withChanges) return;
  state->insert(state->end(), {status.st_size, status.st_ctim.tv_sec, status.st_ctim.tv_nsec});
}

// Differs when the file or what lies beside it is another, or the file has been changed.
std::vector<std::int64_t> FileState(const std::string& path) {
  std::vector<std::int64_t> state;
  AppendToSql(path, true, &state);
  for (const char* const beside : {"-wal", "-shm"}) AppendToSql(path + beside, false, &state);
  return state;
}

// `path` as the URI of a file that nobody can be writing: read without locks or log.
std::string UnchangingUri(const std::string& path) {
  std::string uri = "file:";
  for (const char c : path) {
    uri += c == '?' ? "%3F" : c == '#' ? "%23" : c == '%' ? "%25" : std::string(1, c);
  }
  return uri + "?immutable=1";
}

}  // namespace

LSTATUS Database::Open(OpenMode mode) {
  std::string path;
  LSTATUS result = StorePath(&path);
  if (result != ERROR_SUCCESS) return result;
  m_path = path;
  result = FindStoreFile(&m_path);
  if (result == ERROR_FILE_NOT_FOUND && mode == OpenMode::kCreate) {
    result = CreateStoreFile(path, [this](const std::string& fresh) { return Fill(fresh); });
    m_path = path;
    if (result == ERROR_SUCCESS) result = FindStoreFile(&m_path);
  }
  if (result == ERROR_SUCCESS) result = OpenFile();
  if (result != ERROR_SUCCESS) Close();
  return result;
}

// Nobody else sees the file yet.
LSTATUS Database::Fill(const std::string& path) {
  LSTATUS result = Connect(path, SQLITE_OPEN_READWRITE);
  if (result == ERROR_SUCCESS) result = FromSqlite(CreateStore(m_sqlite), m_sqlite);
  Close();
  return result;
}

bool Database::Rest() {
  if (!IsOpen() || IsReadOnly() || InTransaction()) return false;
  m_asLeft = FileState(m_path);
  return true;
}

bool Database::IsAsLeft() const {
  std::string path;
  return !IsInherited() && StorePath(&path) == ERROR_SUCCESS &&
         FindStoreFile(&path) == ERROR_SUCCESS && path == m_path && FileState(path) == m_asLeft;
}

StoreId Database::Id() const {
  struct stat status {};
  if (lstat(m_path.c_str(), &status) != 0) return {};
  return {m_path, static_cast<std::int64_t>(status.st_dev),
          static_cast<std::int64_t>(status.st_ino)};
}

LSTATUS Database::OpenFile() {
  const std::string path = m_path;
  LSTATUS result = Connect(path, SQLITE_OPEN_READWRITE);
  if (result == ERROR_SUCCESS) result = Configure();
  // A folder where the log cannot be made: only without a log is the file whole by itself.
  if (result != ERROR_ACCESS_DENIED || !IsEmptyOrMissing(path + "-wal")) return result;
  Close();
  m_path = path;
  result = Connect(UnchangingUri(path), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
  return result == ERROR_SUCCESS ? Configure() : result;
}

LSTATUS Database::Connect(const std::string& name, int flags) {
  constexpr int kFlags =
      SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_PRIVATECACHE | SQLITE_OPEN_NOFOLLOW | SQLITE_OPEN_EXRESCODE;
  errno = 0;
  m_generation = ProcessGeneration();
  return FromSqlite(OpenSqlite(name.c_str(), &m_sqlite, flags | kFlags), m_sqlite);
}

LSTATUS Database::Configure() {
  sqlite3_busy_timeout(m_sqlite, kBusyTimeoutMs);
  sqlite3_wal_autocheckpoint(m_sqlite, kCheckpointPages);
  sqlite3_limit(m_sqlite, SQLITE_LIMIT_LENGTH, kMaxRowBytes);
  constexpr struct {
    int option;
    int value;
  } kOptions[] = {
      // Closing must not wait for the disk; the next checkpoint copies the log.
      {SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1},
      // The file is another's word: nothing in it runs.
      {SQLITE_DBCONFIG_DEFENSIVE, 1},
      {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
      {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
      {SQLITE_DBCONFIG_ENABLE_VIEW, 0},
  };
  for (const auto& [option, value] : kOptions) {
    sqlite3_db_config(m_sqlite, option, value, nullptr);
  }
  const LSTATUS result = CheckVersion();
  return result == ERROR_SUCCESS ? Run("PRAGMA synchronous = NORMAL") : result;
}

LSTATUS Database::CheckVersion() {
  std::int64_t application = 0;
  LSTATUS result = ReadMark("PRAGMA application_id", &application);
  std::int64_t version = 0;
  if (result == ERROR_SUCCESS) result = ReadMark(kVersionMark, &version);
  if (result != ERROR_SUCCESS) return result;
  m_isOld = version == kOldVersion;
  if (application != kApplicationId || !(m_isOld || version == kSchemaVersion)) {
    return ERROR_NOT_REGISTRY_FILE;
  }
  return m_isOld ? FromSqlite(ShowOldVersion(m_sqlite), m_sqlite) : LSTATUS{ERROR_SUCCESS};
}

LSTATUS Database::ReadMark(Sql pragma, std::int64_t* mark) {
  Query query(*this, pragma);
  const LSTATUS result = query.Step();
  if (result == ERROR_SUCCESS) *mark = query.Integer(0);
  return result;
}

void Database::Close() {
  if (!IsInherited()) {
    for (const auto& [sql, statement] : m_statements) sqlite3_finalize(statement);
    sqlite3_close(m_sqlite);
  }
  m_statements.clear();
  m_sqlite = nullptr;
  m_path.clear();
}

bool Database::IsReadOnly() const { return sqlite3_db_readonly(m_sqlite, "main") == 1; }

bool Database::InTransaction() const { return sqlite3_get_autocommit(m_sqlite) == 0; }

LSTATUS Database::Run(Sql sql) { return Query(*this, sql).Step(ERROR_SUCCESS); }

LSTATUS Database::BeginRead() { return Begin("BEGIN", false); }

LSTATUS Database::BeginWrite() {
  sqlite3_busy_timeout(m_sqlite, 0);
  const LSTATUS result = Begin("BEGIN IMMEDIATE", true);
  sqlite3_busy_timeout(m_sqlite, kBusyTimeoutMs);
  return result;
}

LSTATUS Database::Begin(Sql begin, bool toWrite) {
  LSTATUS result = Run(begin);
  if (result != ERROR_SUCCESS || !m_isOld) return result;
  std::int64_t version = 0;
  result = ReadMark(kVersionMark, &version);
  if (result == ERROR_SUCCESS && version == kOldVersion) {
    if (!toWrite) return ERROR_SUCCESS;
    result = FromSqlite(Migrate(m_sqlite), m_sqlite);
  }
  if (result == ERROR_SUCCESS) result = Run(kCommit);
  if (InTransaction()) Run(kRollback);
  if (result == ERROR_SUCCESS) result = FromSqlite(HideOldVersion(m_sqlite), m_sqlite);
  if (result != ERROR_SUCCESS) return result;
  m_isOld = false;
  return Run(begin);
}

LSTATUS Database::Prepare(Sql sql, sqlite3_stmt** statement) {
  for (const auto& [prepared, found] : m_statements) {
    if (prepared != sql) continue;
    *statement = found;
    return ERROR_SUCCESS;
  }
  m_statements.reserve(m_statements.size() + 1);
  errno = 0;
  const int result =
      sqlite3_prepare_v3(m_sqlite, sql, -1, SQLITE_PREPARE_PERSISTENT, statement, nullptr);
  if (result == SQLITE_OK) m_statements.emplace_back(sql, *statement);
  return FromSqlite(result, m_sqlite);
}

Query::Query(Database& database, Sql sql)
    : m_database(database), m_failure(database.Prepare(sql, &m_statement)) {}

Query::~Query() { sqlite3_reset(m_statement); }

Query& Query::Bind(std::int64_t value) {
  sqlite3_bind_int64(m_statement, ++m_parameter, value);
  return *this;
}

Query& Query::Bind(std::string_view text) {
  sqlite3_bind_text64(m_statement, ++m_parameter, text.data(), text.size(), SQLITE_STATIC,
                      SQLITE_UTF8);
  return *this;
}

Query& Query::Bind(const void* data, std::size_t bytes) {
  ++m_parameter;
  if (bytes == 0) {
    sqlite3_bind_zeroblob(m_statement, m_parameter, 0);
  } else {
    sqlite3_bind_blob64(m_statement, m_parameter, data, bytes, SQLITE_STATIC);
  }
  return *this;
}

LSTATUS Query::Step(LSTATUS atEnd) {
  if (m_failure != ERROR_SUCCESS) return m_failure;
  errno = 0;
  const int result = sqlite3_step(m_statement);
  if (result == SQLITE_ROW) return ERROR_SUCCESS;
  if (result == SQLITE_DONE) return atEnd;
  return FromSqlite(result, m_database.m_sqlite);
}

std::int64_t Query::Integer(int column) const { return sqlite3_column_int64(m_statement, column); }

// Not as text: that would copy each one to put a terminator behind it.
std::string_view Query::Bytes(int column) const {
  const auto* data = static_cast<const char*>(sqlite3_column_blob(m_statement, column));
  const auto bytes = static_cast<std::size_t>(sqlite3_column_bytes(m_statement, column));
  return data != nullptr ? std::string_view(data, bytes) : std::string_view();
}

bool Query::Changed() const { return sqlite3_changes(m_database.m_sqlite) != 0; }

}  // namespace Corvane::Store
