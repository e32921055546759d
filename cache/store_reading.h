// What lies in a cache's place, value by value.
#ifndef CORVANE_CACHE_STORE_READING_H_
#define CORVANE_CACHE_STORE_READING_H_

#include <functional>

#include "cache/stored_value.h"

namespace Corvane {

// Gets the values in the order in which the system lists them.
using ValueSink = std::function<void(const wchar_t* name, const TypedData& data)>;

// Both give ERROR_SUCCESS or the system's first error; ERROR_OUTOFMEMORY when there is no memory
// for the longest value.

// Values that cannot be read are passed over: one that grows meanwhile, by another process, is
// ERROR_MORE_DATA.
LSTATUS ReadKey(HKEY key, const ValueSink& sink);
// Of the printer data key kPrintDataCacheKey; ERROR_FILE_NOT_FOUND when there is none.
DWORD ReadPrinterData(HANDLE printer, const ValueSink& sink);

}  // namespace Corvane

#endif  // CORVANE_CACHE_STORE_READING_H_
