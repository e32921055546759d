// Keys: opened, made, closed, deleted, listed.
#include <cstring>
#include <vector>

#include "platform/linux/misc/exception_wall.h"
#include "platform/linux/registry/registry_key.h"

namespace {

using Corvane::BehindWall;
using Corvane::HandleTable;
using Corvane::RegistryKey;
using Corvane::Store::Connection;
using Corvane::Store::Database;
using Corvane::Store::Enumeration;
using Corvane::Store::Name;
using Corvane::Store::NodeInfo;
using Corvane::Store::OpenMode;

constexpr REGSAM kWritingRights = KEY_SET_VALUE | KEY_CREATE_SUB_KEY;

FILETIME ToFileTime(std::int64_t units) {
  const auto bits = static_cast<std::uint64_t>(units);
  return {static_cast<DWORD>(bits), static_cast<DWORD>(bits >> 32)};
}

template <typename T>
void SetIfWanted(T* output, T value) {
  if (output != nullptr) *output = value;
}

// A class name that no key has: "", with its length where that is asked for.
LSTATUS GiveEmptyClass(wchar_t* text, DWORD* chars) {
  if (chars == nullptr) return ERROR_SUCCESS;
  const bool fits = text == nullptr || *chars > 0;
  if (text != nullptr && fits) *text = L'\0';
  *chars = 0;
  return fits ? ERROR_SUCCESS : ERROR_MORE_DATA;
}

// The rights that an open file allows of those that are asked for.
LSTATUS GrantKey(Connection& connection, OpenMode mode, REGSAM* access) {
  const bool most = (*access & MAXIMUM_ALLOWED) != 0;
  const bool toWrite = (*access & kWritingRights) != 0;
  LSTATUS result = connection.Open(mode, most || toWrite);
  if (most) *access |= KEY_ALL_ACCESS;
  if (most && !toWrite && result == ERROR_ACCESS_DENIED) {
    *access &= ~kWritingRights;
    result = connection.Open(mode, false);
  }
  return result;
}

// An open key and names below it.
struct Target {
  std::shared_ptr<RegistryKey> key;
  std::vector<Name> path;
};

LSTATUS FindKeyTarget(HKEY key, const wchar_t* path, Target* target) {
  const LSTATUS code = RegistryKey::Find(key, 0, &target->key);
  return code == ERROR_SUCCESS ? SplitPath(path, &target->path) : code;
}

// A key that is there is opened without writing, as it may be in a file that cannot be written.
LSTATUS OpenKey(const Target& target, OpenMode mode, REGSAM access, HKEY* result, bool* made) {
  auto connection = std::make_shared<Connection>();
  connection->PinAs(*target.key->Way());
  LSTATUS code = GrantKey(*connection, mode, &access);
  if (code != ERROR_SUCCESS) return code;
  std::int64_t node = 0;
  code = connection->Read([&](Database& database) {
    return FindNode(database, target.key->Node(), target.path, &node);
  });
  if (code == ERROR_FILE_NOT_FOUND && mode == OpenMode::kCreate) {
    code = connection->Write(mode, [&](Database& database) {
      return MakeNode(database, target.key->Node(), target.path, &node, made);
    });
  }
  if (code != ERROR_SUCCESS) return code;
  connection->Pin();
  *result = static_cast<HKEY>(HandleTable::OfProcess().Add(
      std::make_shared<RegistryKey>(std::move(connection), node, access)));
  return ERROR_SUCCESS;
}

}  // namespace

extern "C" {

LSTATUS WINAPI RegCreateKeyExW(HKEY key, const wchar_t* path, DWORD reserved, wchar_t*,
                               DWORD options, REGSAM access, const SECURITY_ATTRIBUTES*,
                               HKEY* result, DWORD* disposition) {
  return BehindWall([&]() -> LSTATUS {
    if (reserved != 0 || result == nullptr) return ERROR_INVALID_PARAMETER;
    if (path == nullptr) return ERROR_BADKEY;
    if (options != REG_OPTION_NON_VOLATILE) return ERROR_NOT_SUPPORTED;
    Target target;
    LSTATUS code = FindKeyTarget(key, path, &target);
    bool made = false;
    if (code == ERROR_SUCCESS) code = OpenKey(target, OpenMode::kCreate, access, result, &made);
    if (code != ERROR_SUCCESS) return code;
    SetIfWanted<DWORD>(disposition, made ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY);
    return ERROR_SUCCESS;
  });
}

LSTATUS WINAPI RegOpenKeyExW(HKEY key, const wchar_t* path, DWORD options, REGSAM access,
                             HKEY* result) {
  return BehindWall([&]() -> LSTATUS {
    if (result == nullptr) return ERROR_INVALID_PARAMETER;
    *result = nullptr;
    if (options != 0) return ERROR_NOT_SUPPORTED;
    Target target;
    const LSTATUS code = FindKeyTarget(key, path != nullptr ? path : L"", &target);
    if (code != ERROR_SUCCESS) return code;
    if (target.path.empty() && RegistryKey::IsPredefined(key)) {
      *result = key;
      return ERROR_SUCCESS;
    }
    return OpenKey(target, OpenMode::kExisting, access, result, nullptr);
  });
}

LSTATUS WINAPI RegCloseKey(HKEY key) {
  return BehindWall([&]() -> LSTATUS {
    if (RegistryKey::IsPredefined(key)) return ERROR_SUCCESS;
    const bool closed = HandleTable::OfProcess().Remove<RegistryKey>(key) != nullptr;
    return closed ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
  });
}

LSTATUS WINAPI RegDeleteKeyW(HKEY key, const wchar_t* path) {
  return BehindWall([&]() -> LSTATUS {
    Target target;
    LSTATUS code = FindKeyTarget(key, path != nullptr ? path : L"", &target);
    if (code == ERROR_SUCCESS && path == nullptr) code = ERROR_INVALID_PARAMETER;
    return code == ERROR_SUCCESS ? target.key->DeleteSubkey(target.path) : code;
  });
}

LSTATUS WINAPI RegQueryInfoKeyW(HKEY key, wchar_t* type, DWORD* typeChars, DWORD* reserved,
                                DWORD* subkeys, DWORD* maxSubkeyChars, DWORD* maxTypeChars,
                                DWORD* values, DWORD* maxNameChars, DWORD* maxDataBytes,
                                DWORD* securityBytes, FILETIME* lastWrite) {
  return BehindWall([&]() -> LSTATUS {
    if (reserved != nullptr || (type != nullptr && typeChars == nullptr)) {
      return ERROR_INVALID_PARAMETER;
    }
    std::shared_ptr<RegistryKey> opened;
    LSTATUS code = RegistryKey::Find(key, KEY_QUERY_VALUE, &opened);
    if (code != ERROR_SUCCESS) return code;
    NodeInfo info;
    code = opened->GetInfo(&info);
    if (code != ERROR_SUCCESS) return code;
    SetIfWanted(subkeys, static_cast<DWORD>(info.subkeys.count));
    SetIfWanted(maxSubkeyChars, static_cast<DWORD>(info.subkeys.maxNameChars));
    SetIfWanted<DWORD>(maxTypeChars, 0);
    SetIfWanted(values, static_cast<DWORD>(info.values.count));
    SetIfWanted(maxNameChars, static_cast<DWORD>(info.values.maxNameChars));
    SetIfWanted(maxDataBytes, static_cast<DWORD>(info.values.maxDataBytes));
    SetIfWanted<DWORD>(securityBytes, 0);
    SetIfWanted(lastWrite, ToFileTime(info.written));
    return GiveEmptyClass(type, typeChars);
  });
}

LSTATUS WINAPI RegEnumKeyExW(HKEY key, DWORD index, wchar_t* name, DWORD* nameChars,
                             DWORD* reserved, wchar_t* type, DWORD* typeChars,
                             FILETIME* lastWrite) {
  return BehindWall([&]() -> LSTATUS {
    if (reserved != nullptr || name == nullptr || nameChars == nullptr ||
        (type != nullptr && typeChars == nullptr)) {
      return ERROR_INVALID_PARAMETER;
    }
    std::shared_ptr<RegistryKey> opened;
    const LSTATUS code = RegistryKey::Find(key, KEY_ENUMERATE_SUB_KEYS, &opened);
    if (code != ERROR_SUCCESS) return code;
    const auto give = [&](const Enumeration::Item& item) -> LSTATUS {
      if (!item.CopyName(name, nameChars)) return ERROR_MORE_DATA;
      SetIfWanted(lastWrite, ToFileTime(item.number));
      return GiveEmptyClass(type, typeChars);
    };
    return opened->WithItem(Enumeration::Of::kSubkeys, index, give);
  });
}

}  // extern "C"
