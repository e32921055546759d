// Values of keys.
#include <cstring>
#include <cwchar>

#include "platform/linux/misc/exception_wall.h"
#include "platform/linux/registry/registry_key.h"

namespace {

using Corvane::BehindWall;
using Corvane::RegistryKey;
using Corvane::Store::Data;
using Corvane::Store::Enumeration;
using Corvane::Store::Name;

const wchar_t* ValueNameOrDefault(const wchar_t* name) { return name != nullptr ? name : L""; }

// A name that no value can have is that of a missing one.
bool RegistryNameCanExist(const wchar_t* name, Name* made) {
  using Corvane::Store::kMaxValueNameChars;
  const std::size_t chars = wcsnlen(name, kMaxValueNameChars + 1);
  return chars <= kMaxValueNameChars && MakeName({name, chars}, made);
}

}  // namespace

extern "C" {

LSTATUS WINAPI RegEnumValueW(HKEY key, DWORD index, wchar_t* name, DWORD* nameChars,
                             DWORD* reserved, DWORD* type, BYTE* data, DWORD* dataBytes) {
  return BehindWall([&]() -> LSTATUS {
    if (reserved != nullptr || name == nullptr || nameChars == nullptr ||
        (data != nullptr && dataBytes == nullptr)) {
      return ERROR_INVALID_PARAMETER;
    }
    std::shared_ptr<RegistryKey> opened;
    const LSTATUS code = RegistryKey::Find(key, KEY_QUERY_VALUE, &opened);
    if (code != ERROR_SUCCESS) return code;
    return opened->WithItem(
        Enumeration::Of::kValues, index, [&](const Enumeration::Item& item) -> LSTATUS {
          const bool nameFits = item.CopyName(name, nameChars);
          const bool dataFits = data == nullptr || item.data.size() <= *dataBytes;
          if (nameFits && dataFits && data != nullptr && !item.data.empty()) {
            std::memcpy(data, item.data.data(), item.data.size());
          }
          if (type != nullptr) *type = static_cast<DWORD>(item.number);
          if (dataBytes != nullptr) *dataBytes = static_cast<DWORD>(item.data.size());
          return nameFits && dataFits ? ERROR_SUCCESS : ERROR_MORE_DATA;
        });
  });
}

LSTATUS WINAPI RegQueryValueExW(HKEY key, const wchar_t* name, DWORD* reserved, DWORD* type,
                                BYTE* data, DWORD* dataBytes) {
  return BehindWall([&]() -> LSTATUS {
    if (reserved != nullptr || (data != nullptr && dataBytes == nullptr)) {
      return ERROR_INVALID_PARAMETER;
    }
    std::shared_ptr<RegistryKey> opened;
    LSTATUS code = RegistryKey::Find(key, KEY_QUERY_VALUE, &opened);
    if (code != ERROR_SUCCESS) return code;
    DWORD foundType = REG_NONE;
    DWORD size = data != nullptr ? *dataBytes : 0;
    Name made;
    code = RegistryNameCanExist(ValueNameOrDefault(name), &made)
               ? opened->GetValue(made, {&foundType, data, &size})
               : LSTATUS{ERROR_FILE_NOT_FOUND};
    const bool found = code == ERROR_SUCCESS || code == ERROR_MORE_DATA;
    if (found && type != nullptr) *type = foundType;
    if (found && dataBytes != nullptr) *dataBytes = size;
    if (code == ERROR_FILE_NOT_FOUND && data == nullptr && dataBytes != nullptr) *dataBytes = 0;
    return code;
  });
}

LSTATUS WINAPI RegSetValueExW(HKEY key, const wchar_t* name, DWORD reserved, DWORD type,
                              const BYTE* data, DWORD dataBytes) {
  return BehindWall([&]() -> LSTATUS {
    if (reserved != 0) return ERROR_INVALID_PARAMETER;
    std::shared_ptr<RegistryKey> opened;
    LSTATUS code = RegistryKey::Find(key, KEY_SET_VALUE, &opened);
    if (code != ERROR_SUCCESS) return code;
    const Data value = {type, data, dataBytes};
    code = CheckValue(ValueNameOrDefault(name), value);
    if (code != ERROR_SUCCESS) return code;
    Name made;
    if (!MakeName(ValueNameOrDefault(name), &made)) return ERROR_INVALID_PARAMETER;
    return opened->SetValue(made, value);
  });
}

LSTATUS WINAPI RegDeleteValueW(HKEY key, const wchar_t* name) {
  return BehindWall([&]() -> LSTATUS {
    std::shared_ptr<RegistryKey> opened;
    const LSTATUS code = RegistryKey::Find(key, KEY_SET_VALUE, &opened);
    if (code != ERROR_SUCCESS) return code;
    Name made;
    return RegistryNameCanExist(ValueNameOrDefault(name), &made) ? opened->DeleteValue(made)
                                                                 : LSTATUS{ERROR_FILE_NOT_FOUND};
  });
}

}  // extern "C"
