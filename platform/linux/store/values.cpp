#include "platform/linux/store/values.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <cwchar>

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

constexpr std::uintptr_t kPageBytes = 4096;  // the smallest of x86-64
constexpr std::uintptr_t kSignalSetBytes = 8;

// The kernel copies the signal set in before it refuses the unknown operation: EFAULT when it could
// not be read, else EINVAL. A tenth of what process_vm_readv costs, and allowed in every sandbox.
bool IsPageReadable(std::uintptr_t address) {
  constexpr int kNoOperation = -1;
  const int saved = errno;
  syscall(SYS_rt_sigprocmask, kNoOperation, address & ~(kSignalSetBytes - 1), nullptr,
          kSignalSetBytes);
  const bool readable = errno == EINVAL;
  errno = saved;
  return readable;
}

// False when some of the bytes are no memory of the process or may not be read. Asks the kernel and
// touches nothing, where Windows would catch the fault.
bool IsReadableValue(const void* memory, std::size_t bytes) {
  if (bytes == 0) return true;
  const auto first = reinterpret_cast<std::uintptr_t>(memory);
  // The first page is never mapped, and a null set would be no set.
  if (first < kPageBytes || first > UINTPTR_MAX - (bytes - 1)) return false;
  const std::uintptr_t last = first + (bytes - 1);
  if (!IsPageReadable(last)) return false;
  for (std::uintptr_t page = first & ~(kPageBytes - 1); page < (last & ~(kPageBytes - 1));
       page += kPageBytes) {
    if (!IsPageReadable(page)) return false;
  }
  return true;
}

}  // namespace

LSTATUS CheckValue(const wchar_t* name, const Data& data) {
  if (wcsnlen(name, kMaxValueNameChars + 1) > kMaxValueNameChars) return ERROR_INVALID_PARAMETER;
  if (data.size > kMaxDataBytes) return ERROR_NO_SYSTEM_RESOURCES;
  return IsReadableValue(data.bytes, data.size) ? ERROR_SUCCESS : ERROR_NOACCESS;
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
