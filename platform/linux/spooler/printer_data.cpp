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

LSTATUS FindTarget(HANDLE printer, const wchar_t* key, const wchar_t* value, ACCESS_MASK rights,
                   Target* target) {
  target->printer = HandleTable::OfProcess().Find<Printer>(printer);
  if (target->printer == nullptr) return ERROR_INVALID_HANDLE;
  if (key == nullptr || value == nullptr) return ERROR_INVALID_PARAMETER;
  const bool wellFormed = SplitPath(key, &target->key) == ERROR_SUCCESS && !target->key.empty() &&
                          MakeName(value, &target->value);
  return wellFormed ? target->printer->Require(rights) : LSTATUS{ERROR_INVALID_PARAMETER};
}

// The calls of the spooler give their codes as DWORDs.
template <typename Operation>
DWORD Call(Operation&& operation) {
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

std::uint64_t BytesFor(const ValueTotals& totals) {
  return static_cast<std::uint64_t>(totals.values) *
             (sizeof(PRINTER_ENUM_VALUESW) + sizeof(wchar_t)) +
         static_cast<std::uint64_t>(totals.dataBytes) +
         static_cast<std::uint64_t>(totals.nameChars) * sizeof(wchar_t);
}

// The structures, the data of all of them, their names. ERROR_REGISTRY_CORRUPT when the file counts
// other lengths than it holds.
LSTATUS WriteEntries(Database& database, std::int64_t node, const ValueTotals& totals,
                     BYTE* buffer) {
  const auto values = static_cast<std::size_t>(totals.values);
  Room entries{buffer, buffer + values * sizeof(PRINTER_ENUM_VALUESW)};
  Room datas{entries.end, entries.end + totals.dataBytes};
  Room names{datas.end, buffer + BytesFor(totals)};
  Query query(database, kListValues);
  query.Bind(node).Bind(std::string_view(""));
  std::wstring name;
  LSTATUS result = query.Step();
  for (; result == ERROR_SUCCESS; result = query.Step()) {
    name.clear();
    AppendWide(query.Bytes(1), &name);
    const std::string_view data = query.Bytes(3);
    const std::size_t nameBytes = (name.size() + 1) * sizeof(wchar_t);
    BYTE* const entryAt = entries.Take(sizeof(PRINTER_ENUM_VALUESW));
    BYTE* const dataAt = datas.Take((data.size() + 7) & ~std::size_t{7});  // as the store counts it
    BYTE* const nameAt = names.Take(nameBytes);
    if (entryAt == nullptr || dataAt == nullptr || nameAt == nullptr) return ERROR_REGISTRY_CORRUPT;
    const PRINTER_ENUM_VALUESW entry = {
        reinterpret_cast<wchar_t*>(nameAt), static_cast<DWORD>(nameBytes),
        static_cast<DWORD>(query.Integer(2)), data.empty() ? nullptr : dataAt,
        static_cast<DWORD>(data.size())};
    std::memcpy(entryAt, &entry, sizeof entry);
    std::memcpy(nameAt, name.c_str(), nameBytes);
    data.copy(reinterpret_cast<char*>(dataAt), data.size());
  }
  if (result != ERROR_NO_MORE_ITEMS) return result;
  return entries.begin == entries.end ? ERROR_SUCCESS : ERROR_REGISTRY_CORRUPT;
}

}  // namespace
}  // namespace Corvane

using namespace Corvane;

extern "C" {

DWORD WINAPI EnumPrinterDataExW(HANDLE printer, const wchar_t* key, BYTE* values, DWORD valuesBytes,
                                DWORD* needed, DWORD* count) {
  return Call([&]() -> LSTATUS {
    if (needed == nullptr || count == nullptr || (values == nullptr && valuesBytes != 0)) {
      return ERROR_INVALID_PARAMETER;
    }
    *needed = 0;
    *count = 0;
    Target target;
    const LSTATUS code = FindTarget(printer, key, L"", 0, &target);
    if (code != ERROR_SUCCESS) return code;
    return target.printer->Way()->Read([&](Database& database) -> LSTATUS {
      std::int64_t node = 0;
      ValueTotals totals;
      LSTATUS result = target.printer->Find(database, target.key, &node);
      if (result == ERROR_SUCCESS) result = target.printer->MeasureLocked(database, node, &totals);
      if (result != ERROR_SUCCESS) return result;
      const std::uint64_t bytes = BytesFor(totals);
      if (bytes > UINT32_MAX) return ERROR_OUTOFMEMORY;
      *needed = static_cast<DWORD>(bytes);
      if (bytes > valuesBytes) return ERROR_MORE_DATA;
      if (bytes == 0) return ERROR_SUCCESS;
      result = WriteEntries(database, node, totals, values);
      if (result == ERROR_SUCCESS) *count = static_cast<DWORD>(totals.values);
      return result;
    });
  });
}

DWORD WINAPI GetPrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* value,
                               DWORD* type, BYTE* data, DWORD dataBytes, DWORD* needed) {
  return Call([&]() -> LSTATUS {
    if (needed == nullptr || (data == nullptr && dataBytes != 0)) return ERROR_INVALID_PARAMETER;
    *needed = 0;
    Target target;
    const LSTATUS code = FindTarget(printer, key, value, 0, &target);
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
  return Call([&]() -> LSTATUS {
    Target target;
    const Data written = {type, data, dataBytes};
    LSTATUS code = FindTarget(printer, key, value, PRINTER_ACCESS_ADMINISTER, &target);
    if (code == ERROR_SUCCESS) code = CheckValue(value, written);
    return code == ERROR_SUCCESS ? target.printer->SetValue(target.key, target.value, written)
                                 : code;
  });
}

DWORD WINAPI DeletePrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* value) {
  return Call([&]() -> LSTATUS {
    Target target;
    const LSTATUS code = FindTarget(printer, key, value, PRINTER_ACCESS_ADMINISTER, &target);
    if (code != ERROR_SUCCESS) return code;
    return target.printer->Way()->Write(Store::OpenMode::kExisting, [&](Database& database) {
      std::int64_t node = 0;
      const LSTATUS result = target.printer->Find(database, target.key, &node);
      return result == ERROR_SUCCESS ? Store::DeleteValue(database, node, target.value) : result;
    });
  });
}

}  // extern "C"
