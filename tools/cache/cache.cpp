#include "tools/cache/cache.h"

#include <new>

#include "tools/output/failure.h"
#include "tools/output/text.h"

namespace Corvane::Tool {
namespace {

constexpr char kCannotRead[] = "the cache cannot be read; values come from the device: ";
constexpr char kCannotWrite[] = "the cache cannot be written; what is read now is not kept: ";

}  // namespace

Cache::Cache(const CacheLocation& location) {
  if (location.kind == CacheKind::kRegistry) {
    UseRegistry(location);
  } else {
    UsePrinter(location);
  }
  if (!m_provider) throw std::bad_alloc();
  if (!m_problem.empty()) m_problem = EscapeText(TextOf(location)) + ": " + m_problem;
}

void Cache::UseRegistry(const CacheLocation& location) {
  UniqueHkey key;
  const LSTATUS readable =
      RegOpenKeyExW(HKEY_LOCAL_MACHINE, location.name.c_str(), 0, KEY_READ, key.Receive());
  if (readable != ERROR_SUCCESS && readable != ERROR_FILE_NOT_FOUND) {
    m_problem = kCannotRead + SystemErrorText(static_cast<unsigned long>(readable));
  } else {
    // The right that the library asks for when it writes.
    const LSTATUS writable = RegCreateKeyExW(HKEY_LOCAL_MACHINE, location.name.c_str(), 0, nullptr,
                                             0, KEY_ALL_ACCESS, nullptr, key.Receive(), nullptr);
    if (writable != ERROR_SUCCESS) {
      m_problem = kCannotWrite + SystemErrorText(static_cast<unsigned long>(writable));
    }
  }
  m_provider = RefPtr<ICacheProvider>(CreateRegCacheProvider(location.name.c_str()));
}

void Cache::UsePrinter(const CacheLocation& location) {
  DWORD error = OpenPrinterOf(location, PRINTER_ACCESS_ADMINISTER | PRINTER_ACCESS_USE, &m_printer);
  if (error == ERROR_ACCESS_DENIED) {
    m_problem = kCannotWrite + SystemErrorText(error);
    error = OpenPrinterOf(location, PRINTER_ACCESS_USE, &m_printer);
  }
  if (error != ERROR_SUCCESS) RefusePrinter(location, error);
  DWORD needed = 0;
  DWORD count = 0;
  const DWORD readable =
      EnumPrinterDataExW(m_printer.Get(), kPrintDataCacheKey, nullptr, 0, &needed, &count);
  if (readable != ERROR_SUCCESS && readable != ERROR_MORE_DATA &&
      readable != ERROR_FILE_NOT_FOUND) {
    m_problem = kCannotRead + SystemErrorText(readable);
  } else if (m_problem.empty()) {
    // Deletes nothing, but would be refused what writing is refused.
    const DWORD writable =
        DeletePrinterDataExW(m_printer.Get(), kPrintDataCacheKey, L"corvane: no such value");
    if (writable != ERROR_SUCCESS && writable != ERROR_FILE_NOT_FOUND) {
      m_problem = kCannotWrite + SystemErrorText(writable);
    }
  }
  m_provider = RefPtr<ICacheProvider>(CreatePrintDataCacheProvider(m_printer.Get()));
}

}  // namespace Corvane::Tool
