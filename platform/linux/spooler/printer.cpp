#include "platform/linux/spooler/printer.h"

#include <cwchar>

#include "platform/linux/misc/exception_wall.h"
#include "platform/linux/store/nodes.h"
#include "platform/linux/store/schema.h"

namespace Corvane {
namespace {

constexpr std::size_t kMaxPrinterNameChars = 220;  // Windows' own limit

LSTATUS OpenPrinterHandle(const wchar_t* name, const PRINTER_DEFAULTSW* defaults, HANDLE* printer) {
  if (printer == nullptr) return ERROR_INVALID_PARAMETER;
  *printer = nullptr;
  if (name == nullptr) return ERROR_NOT_SUPPORTED;
  const std::wstring_view text(name, wcsnlen(name, kMaxPrinterNameChars + 1));
  const bool wellFormed = !text.empty() && text.size() <= kMaxPrinterNameChars &&
                          text.find_first_of(L"\\,!") == std::wstring_view::npos;
  Store::Name made;
  if (!wellFormed || !Store::MakeName(text, &made)) return ERROR_INVALID_PRINTER_NAME;
  // Windows would allow use alone; here the queue's data is nobody else's.
  const ACCESS_MASK access = defaults != nullptr ? defaults->DesiredAccess : PRINTER_ALL_ACCESS;
  *printer = HandleTable::OfProcess().Add(std::make_shared<Printer>(std::move(made), access));
  return ERROR_SUCCESS;
}

BOOL ReportPrinterError(LSTATUS result) {
  if (result == ERROR_SUCCESS) return TRUE;
  SetLastError(static_cast<DWORD>(result));
  return FALSE;
}

}  // namespace

std::vector<Store::Name> Printer::PathOf(const std::vector<Store::Name>& key) const {
  std::vector<Store::Name> path = {m_name};
  path.insert(path.end(), key.begin(), key.end());
  return path;
}

LSTATUS Printer::Find(Store::Database& database, const std::vector<Store::Name>& key,
                      std::int64_t* node) const {
  return FindNode(database, Store::kPrinterRoot, PathOf(key), node);
}

LSTATUS Printer::FindOrMakeLocked(Store::Database& database, const std::vector<Store::Name>& key,
                                  std::int64_t* node) {
  const std::uint64_t transaction = m_connection->TransactionLocked();
  if (m_keyIn == transaction && m_key == key) {
    *node = m_keyNode;
    return ERROR_SUCCESS;
  }
  bool made = false;
  LSTATUS result = MakeNode(database, Store::kPrinterRoot, PathOf(key), node, &made);
  if (result == ERROR_SUCCESS) result = TouchNode(database, *node);
  if (result != ERROR_SUCCESS) return result;
  m_key = key;
  m_keyNode = *node;
  m_keyIn = transaction;
  return ERROR_SUCCESS;
}

LSTATUS Printer::SetValue(const std::vector<Store::Name>& key, const Store::Name& value,
                          const Store::Data& data) {
  return m_connection->Write(Store::OpenMode::kCreate, [&](Store::Database& database) {
    std::int64_t node = 0;
    const LSTATUS result = FindOrMakeLocked(database, key, &node);
    return result == ERROR_SUCCESS ? Store::SetValue(database, node, value, data) : result;
  });
}

}  // namespace Corvane

extern "C" {

BOOL WINAPI OpenPrinterW(wchar_t* name, HANDLE* printer, PRINTER_DEFAULTSW* defaults) {
  using namespace Corvane;
  return ReportPrinterError(BehindWall([&] { return OpenPrinterHandle(name, defaults, printer); }));
}

BOOL WINAPI ClosePrinter(HANDLE printer) {
  using namespace Corvane;
  return ReportPrinterError(BehindWall([&]() -> LSTATUS {
    const bool closed = HandleTable::OfProcess().Remove<Printer>(printer) != nullptr;
    return closed ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
  }));
}

}  // extern "C"
