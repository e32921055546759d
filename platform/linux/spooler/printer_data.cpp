// The data of printers.
#include <cstring>
#include <string>

#include "platform/linux/misc/exception_wall.h"
#include "platform/linux/spooler/printer.h"
#include "platform/linux/store/nodes.h"

namespace {

using Corvane::BehindWall;
using Corvane::Printer;
using Corvane::Store::Data;
using Corvane::Store::Database;
using Corvane::Store::Name;
using Corvane::Store::Query;
using Corvane::Store::ValueTotals;

// What an operation is about: an open printer, a key of it, a value of that.
struct Target {
  std::shared_ptr<Printer> printer;
  std::vector<Name> key;
  Name value;
};

LSTATUS FindTarget(HANDLE printer, const wchar_t* key, const wchar_t* value, Target* target) {
  target->printer = Printer::Of(printer);
  if (target->printer == nullptr) return ERROR_INVALID_HANDLE;
  if (key == nullptr || value == nullptr) return ERROR_INVALID_PARAMETER;
  const bool wellFormed = SplitPath(key, &target->key) == ERROR_SUCCESS && !target->key.empty() &&
                          Corvane::Store::MakeName(value, &target->value);
  return wellFormed ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
}

// The caller's buffer: the structures, the data of all of them, their names.
class EntryWriter {
 public:
  EntryWriter(const ValueTotals& totals, BYTE* buffer)
      : m_entry(buffer),
        m_data(buffer + static_cast<std::size_t>(totals.values) * sizeof(PRINTER_ENUM_VALUESW)),
        m_name(m_data + totals.dataBytes),
        m_entriesEnd(m_data),
        m_dataEnd(m_name),
        m_namesEnd(buffer + BytesFor(totals)) {}

  static std::uint64_t BytesFor(const ValueTotals& totals) {
    return static_cast<std::uint64_t>(totals.values) *
               (sizeof(PRINTER_ENUM_VALUESW) + sizeof(wchar_t)) +
           static_cast<std::uint64_t>(totals.dataBytes) +
           static_cast<std::uint64_t>(totals.nameChars) * sizeof(wchar_t);
  }

  // False when it has no place: the file counts other lengths than it holds.
  bool Write(const std::wstring& name, DWORD type, std::string_view data) {
    const std::size_t nameBytes = (name.size() + 1) * sizeof(wchar_t);
    const std::size_t dataRoom = (data.size() + 7) & ~std::size_t{7};  // as the store counts it
    if (m_entry == m_entriesEnd || dataRoom > static_cast<std::size_t>(m_dataEnd - m_data) ||
        nameBytes > static_cast<std::size_t>(m_namesEnd - m_name)) {
      return false;
    }
    const PRINTER_ENUM_VALUESW entry = {
        reinterpret_cast<wchar_t*>(m_name), static_cast<DWORD>(nameBytes), type,
        data.empty() ? nullptr : m_data, static_cast<DWORD>(data.size())};
    std::memcpy(m_entry, &entry, sizeof entry);
    std::memcpy(m_name, name.c_str(), nameBytes);
    if (!data.empty()) std::memcpy(m_data, data.data(), data.size());
    m_entry += sizeof entry;
    m_name += nameBytes;
    m_data += dataRoom;
    return true;
  }

  bool IsFull() const { return m_entry == m_entriesEnd; }

 private:
  BYTE* m_entry;
  BYTE* m_data;
  BYTE* m_name;
  BYTE* m_entriesEnd;
  BYTE* m_dataEnd;
  BYTE* m_namesEnd;
};

LSTATUS WriteEntries(Database& database, std::int64_t node, const ValueTotals& totals,
                     BYTE* buffer) {
  EntryWriter writer(totals, buffer);
  Query query(database, Corvane::Store::kListValues);
  query.Bind(node).Bind(std::string_view(""));
  std::wstring name;
  LSTATUS result = query.Step();
  for (; result == ERROR_SUCCESS; result = query.Step()) {
    name.clear();
    Corvane::Store::AppendWide(query.Bytes(1), &name);
    if (!writer.Write(name, static_cast<DWORD>(query.Integer(2)), query.Bytes(3))) {
      return ERROR_REGISTRY_CORRUPT;
    }
  }
  if (result != ERROR_NO_MORE_ITEMS) return result;
  return writer.IsFull() ? ERROR_SUCCESS : ERROR_REGISTRY_CORRUPT;
}

}  // namespace

extern "C" {

DWORD WINAPI EnumPrinterDataExW(HANDLE printer, const wchar_t* key, BYTE* values, DWORD valuesBytes,
                                DWORD* needed, DWORD* count) {
  return static_cast<DWORD>(BehindWall([&]() -> LSTATUS {
    if (needed == nullptr || count == nullptr || (values == nullptr && valuesBytes != 0)) {
      return ERROR_INVALID_PARAMETER;
    }
    *needed = 0;
    *count = 0;
    Target target;
    const LSTATUS code = FindTarget(printer, key, L"", &target);
    if (code != ERROR_SUCCESS) return code;
    return target.printer->Way()->Read([&](Database& database) -> LSTATUS {
      std::int64_t node = 0;
      ValueTotals totals;
      LSTATUS result = target.printer->Find(database, target.key, &node);
      if (result == ERROR_SUCCESS) result = target.printer->MeasureLocked(database, node, &totals);
      if (result != ERROR_SUCCESS) return result;
      const std::uint64_t bytes = EntryWriter::BytesFor(totals);
      if (bytes > UINT32_MAX) return ERROR_OUTOFMEMORY;
      *needed = static_cast<DWORD>(bytes);
      if (bytes > valuesBytes) return ERROR_MORE_DATA;
      if (bytes == 0) return ERROR_SUCCESS;
      result = WriteEntries(database, node, totals, values);
      if (result == ERROR_SUCCESS) *count = static_cast<DWORD>(totals.values);
      return result;
    });
  }));
}

DWORD WINAPI GetPrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* value,
                               DWORD* type, BYTE* data, DWORD dataBytes, DWORD* needed) {
  return static_cast<DWORD>(BehindWall([&]() -> LSTATUS {
    if (needed == nullptr || (data == nullptr && dataBytes != 0)) return ERROR_INVALID_PARAMETER;
    *needed = 0;
    Target target;
    const LSTATUS code = FindTarget(printer, key, value, &target);
    if (code != ERROR_SUCCESS) return code;
    DWORD foundType = 0;
    DWORD size = dataBytes;
    const LSTATUS read = target.printer->Way()->Read([&](Database& database) {
      std::int64_t node = 0;
      const LSTATUS result = target.printer->Find(database, target.key, &node);
      if (result != ERROR_SUCCESS) return result;
      return GetValue(database, node, target.value, {&foundType, data, &size});
    });
    if (read != ERROR_SUCCESS && read != ERROR_MORE_DATA) return read;
    *needed = size;
    if (type != nullptr) *type = foundType;
    return size > dataBytes ? LSTATUS{ERROR_MORE_DATA} : read;
  }));
}

DWORD WINAPI SetPrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* value, DWORD type,
                               BYTE* data, DWORD dataBytes) {
  return static_cast<DWORD>(BehindWall([&]() -> LSTATUS {
    Target target;
    const Data written = {type, data, dataBytes};
    LSTATUS code = FindTarget(printer, key, value, &target);
    if (code == ERROR_SUCCESS) code = target.printer->Require(PRINTER_ACCESS_ADMINISTER);
    if (code == ERROR_SUCCESS) code = CheckValue(value, written);
    return code == ERROR_SUCCESS ? target.printer->SetValue(target.key, target.value, written)
                                 : code;
  }));
}

DWORD WINAPI DeletePrinterDataExW(HANDLE printer, const wchar_t* key, const wchar_t* value) {
  return static_cast<DWORD>(BehindWall([&]() -> LSTATUS {
    Target target;
    LSTATUS code = FindTarget(printer, key, value, &target);
    if (code == ERROR_SUCCESS) code = target.printer->Require(PRINTER_ACCESS_ADMINISTER);
    if (code != ERROR_SUCCESS) return code;
    using Corvane::Store::OpenMode;
    return target.printer->Way()->Write(OpenMode::kExisting, [&](Database& database) {
      std::int64_t node = 0;
      const LSTATUS result = target.printer->Find(database, target.key, &node);
      return result == ERROR_SUCCESS ? DeleteValue(database, node, target.value) : result;
    });
  }));
}

}  // extern "C"
