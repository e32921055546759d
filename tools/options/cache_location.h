// Where a cache lies: the argument of --cache.
#ifndef CORVANE_TOOLS_OPTIONS_CACHE_LOCATION_H_
#define CORVANE_TOOLS_OPTIONS_CACHE_LOCATION_H_

#include <string>
#include <string_view>

#include "corvane/handles.h"

namespace Corvane::Tool {

enum class CacheKind { kRegistry, kPrinter };

struct CacheLocation {
  CacheKind kind;
  std::wstring name;  // a key below HKEY_LOCAL_MACHINE, or a printer; never empty
};

// "registry:PATH", without the backslashes at PATH's end, or "printer:NAME", in UTF-8. Throws
// Failure with kBadUsage.
CacheLocation ParseCacheLocation(std::string_view text);

// As on the command line, in UTF-8, not escaped.
std::string TextOf(const CacheLocation& location);

// ERROR_SUCCESS or a system error code; `access` is PRINTER_ACCESS_...
DWORD OpenPrinterOf(const CacheLocation& location, ACCESS_MASK access, UniquePrinter* printer);

// Throws Failure with kBadUsage.
[[noreturn]] void RefusePrinter(const CacheLocation& location, DWORD error);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_OPTIONS_CACHE_LOCATION_H_
