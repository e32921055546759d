#include "platform/linux/store/values.h"

#include <cstring>
#include <cwchar>

#include "platform/linux/misc/caller_memory.h"

namespace Corvane::Store {
namespace {

// What a runaway writer can put into the file, and a reader must hold, at a time.
constexpr std::size_t kMaxDataBytes = std::size_t{1} << 20;

// In a file of the old version several may be found.
constexpr char kFindValue[] =
    "SELECT type, data FROM value2 WHERE node = ? AND folded = ? ORDER BY name = ? DESC";
constexpr char kSetValue[] =
    "INSERT INTO value2(node, folded, name, type, data) VALUES(?, ?, ?, ?, ?) ON CONFLICT DO "
    "UPDATE SET type = excluded.type, data = excluded.data "
    "WHERE type <> excluded.type OR data <> excluded.data";
constexpr char kDeleteValue[] = "DELETE FROM value2 WHERE node = ? AND folded = ?";

}  // namespace

LSTATUS CheckValue(const wchar_t* name, const Data& data) {
  if (wcsnlen(name, kMaxValueNameChars + 1) > kMaxValueNameChars) return ERROR_INVALID_PARAMETER;
  if (data.size > kMaxDataBytes) return ERROR_NO_SYSTEM_RESOURCES;
  return IsReadable(data.bytes, data.size) ? ERROR_SUCCESS : ERROR_NOACCESS;
}

LSTATUS SetValue(Database& database, std::int64_t node, const Name& name, const Data& data) {
  Query query(database, kSetValue);
  query.Bind(node).Bind(name.folded).Bind(name.text);
  return query.Bind(std::int64_t{data.type}).Bind(data.bytes, data.size).Step(ERROR_SUCCESS);
}

LSTATUS GetValue(Database& database, std::int64_t node, const Name& name, const Buffer& buffer) {
  Query query(database, kFindValue);
  query.Bind(node).Bind(name.folded).Bind(name.text);
  const LSTATUS result = query.Step(ERROR_FILE_NOT_FOUND);
  if (result != ERROR_SUCCESS) return result;
  const std::string_view data = query.Bytes(1);
  const bool fits = data.size() <= *buffer.size;
  *buffer.type = static_cast<DWORD>(query.Integer(0));
  *buffer.size = static_cast<DWORD>(data.size());
  if (buffer.bytes == nullptr) return ERROR_SUCCESS;
  if (!fits) return ERROR_MORE_DATA;
  if (!data.empty()) std::memcpy(buffer.bytes, data.data(), data.size());
  return ERROR_SUCCESS;
}

LSTATUS DeleteValue(Database& database, std::int64_t node, const Name& name) {
  Query query(database, kDeleteValue);
  const LSTATUS result = query.Bind(node).Bind(name.folded).Step(ERROR_SUCCESS);
  return result == ERROR_SUCCESS && !query.Changed() ? LSTATUS{ERROR_FILE_NOT_FOUND} : result;
}

}  // namespace Corvane::Store
