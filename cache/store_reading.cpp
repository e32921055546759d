#include "cache/store_reading.h"

#include <memory>
#include <new>

namespace Corvane {
namespace {

constexpr DWORD kUnknownCount = 0xFFFFFFFF;

}  // namespace

LSTATUS ReadKey(HKEY key, const ValueSink& sink) {
  DWORD count = 0;
  DWORD longestName = 0;  // characters, without a terminator
  DWORD longestData = 0;  // bytes
  LSTATUS result = RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                    &count, &longestName, &longestData, nullptr, nullptr);
  const std::unique_ptr<wchar_t[]> name(new (std::nothrow) wchar_t[std::size_t{longestName} + 1]);
  const std::unique_ptr<wchar_t[]> data(new (std::nothrow) wchar_t[std::size_t{longestData} + 1]);
  if (!name || !data) return ERROR_OUTOFMEMORY;
  if (result != ERROR_SUCCESS || count == kUnknownCount) return result;
  auto* const bytes = reinterpret_cast<BYTE*>(data.get());
  for (DWORD index = 0; index < count; ++index) {
    DWORD nameChars = longestName + 1;
    DWORD type = 0;
    DWORD size = longestData + 1;
    const LSTATUS error =
        RegEnumValueW(key, index, name.get(), &nameChars, nullptr, &type, bytes, &size);
    if (error == ERROR_SUCCESS) {
      sink(name.get(), {type, bytes, size});
    } else if (error != ERROR_NO_MORE_ITEMS && result == ERROR_SUCCESS) {
      result = error;
    }
  }
  return result;
}

DWORD ReadPrinterData(HANDLE printer, const ValueSink& sink) {
  DWORD needed = 0;
  DWORD count = 0;
  DWORD error = EnumPrinterDataExW(printer, kPrintDataCacheKey, nullptr, 0, &needed, &count);
  if (error != ERROR_MORE_DATA) return error;
  const std::unique_ptr<BYTE[]> buffer(new (std::nothrow) BYTE[needed]);
  if (!buffer) return ERROR_OUTOFMEMORY;
  error = EnumPrinterDataExW(printer, kPrintDataCacheKey, buffer.get(), needed, &needed, &count);
  if (error != ERROR_SUCCESS) return error;
  const auto* const entries = reinterpret_cast<const PRINTER_ENUM_VALUESW*>(buffer.get());
  for (DWORD i = 0; i < count; ++i) {
    if (!entries[i].pValueName) continue;
    sink(entries[i].pValueName, {entries[i].dwType, entries[i].pData, entries[i].cbData});
  }
  return ERROR_SUCCESS;
}

}  // namespace Corvane
