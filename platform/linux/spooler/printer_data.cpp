// The data of printers.
#include <cstring>
#include <string>
#include <utility>

#include "platform/linux/misc/exception_wall.h"
#include "platform/linux/spooler/printer.h"
#include "platform/linux/store/nodes.h"

namespace Corvane {
namespace {

using namespace Store;

// What an operation is about: an open printer, a key of it, a value of that.
struct Target {
  std::shared_ptr<Printer> printer;
  std::vector<Name> key;
  Name value;
};

LSTATUS FindPrinterDataTarget(HANDLE printer, const wchar_t* key, const wchar_t* value,
                              ACCESS_MASK rights, Target* target) {
  target->printer = HandleTable::OfProcess().Find<Printer>(printer);
  if (target->printer == nullptr) return ERROR_INVALID_HANDLE;
  if (key == nullptr || value == nullptr) return ERROR_INVALID_PARAMETER;
  const bool wellFormed = SplitPath(key, &target->key) == ERROR_SUCCESS && !target->key.empty() &&
                          MakeName(value, &target->value);
  return wellFormed ? target->printer->Require(rights) : LSTATUS{ERROR_INVALID_PARAMETER};
}

// The calls of the spooler give their codes as DWORDs.
template <typename Operation>
DWORD CallPrinterData(Operation&& operation) {
  return static_cast<DWORD>(BehindWall(operation));
}

// A part of the caller's buffer, filled from its beginning.
struct Room {
  BYTE* begin;
  BYTE* end;

  // Null when there is too little.
  BYTE* Take(std::size_t bytes) {
    if (bytes > static_cast<std::size_t>(end - begin)) return nullptr;
    return std::exchange(begin, begin + bytes);
  }
};

constexpr std::size_t RoundUpEntry(std::size_t bytes) { return (bytes + 7) & ~std::size_t{7}; }

// What a buffer holds: the structures, the data of all of them, their names.
struct Contents {
  std::size_t entryBytes = 0;
  std::size_t dataBytes = 0;
  std::size_t nameBytes = 0;

  std::size_t Bytes() const { return entryBytes + dataBytes + nameBytes; }

  LSTATUS Count(const Enumeration::Item& item) {
    entryBytes += sizeof(PRINTER_ENUM_VALUESW);
    dataBytes += RoundUpEntry(item.data.size());
    nameBytes += (item.name.size() + 1) * sizeof(wchar_t);
    return ERROR_SUCCESS;
  }
};

// ERROR_REGISTRY_CORRUPT when there is more than was counted.
LSTATUS WritePrinterDataEntry(const Enumeration::Item& item, Room* entries, Room* datas,
                              Room* names) {
  const std::size_t nameBytes = (item.name.size() + 1) * sizeof(wchar_t);
  BYTE* const entryAt = entries->Take(sizeof(PRINTER_ENUM_VALUESW));
  BYTE* const dataAt = datas->Take(RoundUpEntry(item.data.size()));
  BYTE* const nameAt = names->Take(nameBytes);
  if (entryAt == nullptr || dataAt == nullptr || nameAt == nullptr) return ERROR_REGISTRY_CORRUPT;
  const PRINTER_ENUM_VALUESW entry = {
      reinterpret_cast<wchar_t*>(nameAt), static_cast<DWORD>(nameBytes),
      static_cast<DWORD>(item.number), item.data.empty() ? nullptr : dataAt,
      static_cast<DWORD>(item.data.size())};
  std::memcpy(entryAt, &entry, sizeof entry);
  std::memset(nameAt, 0, nameBytes);
  std::memcpy(nameAt, item.name.data(), nameBytes - sizeof(wchar_t));
  item.data.copy(reinterpret_cast<char*>(dataAt), item.data.size());
  return ERROR_SUCCESS;
}

}  // namespace
}  // namespace Corvane

using namespace Corvane;

extern "C" {

DWORD WINAPI EnumPrinterDataExW(HANDLE printer, const wchar_t* key, BYTE* values, DWORD valuesBytes,
                                DWORD* needed, DWORD* count) {
  return CallPrinterData([&]() -> LSTATUS {
    if (needed == nullptr || count == nullptr || (values == nullptr && valuesBytes != 0)) {
      return ERROR_INVALID_PARAMETER;
    }
    *needed = 0;
    *count = 0;
    Target target;
    const LSTATUS code = FindPrinterDataTarget(printer, key, L"", 0, &target);
    if (code != ERROR_SUCCESS) return code;
    return target.printer->Way()->Read([&](Database& database) -> LSTATUS {
      std::int64_t node = 0;
      LSTATUS result = target.printer->Find(database, target.key, &node);
      if (result != ERROR_SUCCESS) return result;
      Contents all;
      const auto add = [&](const Enumeration::Item& item) { return all.Count(item); };
      result = target.printer->VisitLocked(node, add);
      if (result != ERROR_SUCCESS) return result;
      if (all.Bytes() > UINT32_MAX) return ERROR_OUTOFMEMORY;
      *needed = static_cast<DWORD>(all.Bytes());
      if (all.Bytes() > valuesBytes) return ERROR_MORE_DATA;
      if (all.Bytes() == 0) return ERROR_SUCCESS;
      Room entries{values, values + all.entryBytes};
      Room datas{entries.end, entries.end + all.dataBytes};
      Room names{datas.end, datas.end + all.nameBytes};
      const auto write = [&](const Enumeration::Item& item) {
        return WritePrinterDataEntry(item, &entries, &datas, &names);
      };
      result = target.printer->VisitLocked(node, write);
      if (result != ERROR_SUCCESS) return result;
      *count = static_cast<DWORD>(all.entryBytes / sizeof(PRINTER_ENUM_VALUESW));
      return ERROR_SUCCESS;
    });
  });
}

DWORD WINAPI GetPrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* value,
                               DWORD* type, BYTE* data, DWORD dataBytes, DWORD* needed) {
  return CallPrinterData([&]() -> LSTATUS {
    if (needed == nullptr || (data == nullptr && dataBytes != 0)) return ERROR_INVALID_PARAMETER;
    *needed = 0;
    Target target;
    const LSTATUS code = FindPrinterDataTarget(printer, key, value, 0, &target);
    if (code != ERROR_SUCCESS) return code;
    DWORD foundType = 0;
    DWORD size = dataBytes;
    const LSTATUS read = target.printer->Way()->Read([&](Database& database) {
      std::int64_t node = 0;
      const LSTATUS result = target.printer->Find(database, target.key, &node);
      if (result != ERROR_SUCCESS) return result;
      return Store::GetValue(database, node, target.value, {&foundType, data, &size});
    });
    if (read != ERROR_SUCCESS && read != ERROR_MORE_DATA) return read;
    *needed = size;
    if (type != nullptr) *type = foundType;
    return size > dataBytes ? LSTATUS{ERROR_MORE_DATA} : read;
  });
}

DWORD WINAPI SetPrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* value, DWORD type,
                               BYTE* data, DWORD dataBytes) {
  return CallPrinterData([&]() -> LSTATUS {
    Target target;
    const Data written = {type, data, dataBytes};
    LSTATUS code = FindPrinterDataTarget(printer, key, value, PRINTER_ACCESS_ADMINISTER, &target);
    if (code == ERROR_SUCCESS) code = CheckValue(value, written);
    return code == ERROR_SUCCESS ? target.printer->SetValue(target.key, target.value, written)
                                 : code;
  });
}

DWORD WINAPI DeletePrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* value) {
  return CallPrinterData([&]() -> LSTATUS {
    Target target;
    const LSTATUS code =
        FindPrinterDataTarget(printer, key, value, PRINTER_ACCESS_ADMINISTER, &target);
    if (code != ERROR_SUCCESS) return code;
    return target.printer->Way()->Write(Store::OpenMode::kExisting, [&](Database& database) {
      std::int64_t node = 0;
      const LSTATUS result = target.printer->Find(database, target.key, &node);
      return result == ERROR_SUCCESS ? Store::DeleteValue(database, node, target.value) : result;
    });
  });
}

}  // extern "C"
