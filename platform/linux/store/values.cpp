#include "platform/linux/store/values.h"

#include <cstring>
#include <cwchar>

#include "platform/linux/misc/caller_memory.h"
#include "platform/linux/store/limits.h"

namespace Corvane::Store {

LSTATUS CheckValue(const wchar_t* name, const Data& data) {
  if (wcsnlen(name, kMaxValueNameChars + 1) > kMaxValueNameChars) return ERROR_INVALID_PARAMETER;
  if (data.size > kMaxDataBytes) return ERROR_NO_SYSTEM_RESOURCES;
  return IsReadable(data.bytes, data.size) ? ERROR_SUCCESS : ERROR_NOACCESS;
}

LSTATUS SetValue(Database& database, std::int64_t node, const Name& name, const Data& data) {
  Query query(database, Sql::kSetValue);
  query.Bind(node).Bind(name.folded).Bind(name.text);
  query.Bind(std::int64_t{data.type}).Bind(data.bytes, data.size);
  const LSTATUS result = query.Step();
  return result == ERROR_NO_MORE_ITEMS ? LSTATUS{ERROR_SUCCESS} : result;
}

LSTATUS GetValue(Database& database, std::int64_t node, const Name& name, const Buffer& buffer) {
  Query query(database, Sql::kFindValue);
  const LSTATUS result = query.Bind(node).Bind(name.folded).Step();
  if (result == ERROR_NO_MORE_ITEMS) return ERROR_FILE_NOT_FOUND;
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
  Query query(database, Sql::kDeleteValue);
  const LSTATUS result = query.Bind(node).Bind(name.folded).Step();
  if (result != ERROR_NO_MORE_ITEMS) return result;
  return query.Changed() ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

}  // namespace Corvane::Store
