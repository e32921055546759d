// What a cache's store holds, as it lies there.
#ifndef CORVANE_TOOLS_CACHE_CACHE_READER_H_
#define CORVANE_TOOLS_CACHE_CACHE_READER_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "corvane/platform.h"
#include "tools/options/cache_location.h"

namespace Corvane::Tool {

// A named value of a registry type.
struct StoredValue {
  std::wstring name;
  DWORD type = REG_NONE;
  std::vector<BYTE> data;
};

// The values of one device and protocol: those of one key, or of a printer.
struct CacheSection {
  std::wstring path;      // the key, below HKEY_LOCAL_MACHINE; empty for a printer
  std::wstring device;    // as the key is named; empty for a device that tells no serial number
  std::wstring protocol;  // as the key is named; empty for the cache's own key and for a printer
  std::vector<StoredValue> values;  // sorted by name
};

struct CacheContents {
  // Sorted by device and protocol. In a registry: the keys PATH\DEVICE\PROTOCOL with a protocol of
  // the library's, and PATH itself when it has values.
  std::vector<CacheSection> sections;
  std::size_t otherKeys = 0;  // below PATH, without a protocol's name and without keys below
  std::vector<std::string> problems;  // what could not be read, escaped, a line each
};

// A cache that is not there is empty. Throws Failure: kCacheFailure when nothing can be read, or
// when there is more than any cache would hold; kBadUsage for a printer that cannot be opened.
CacheContents ReadCache(const CacheLocation& location);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_CACHE_CACHE_READER_H_
