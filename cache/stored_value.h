// One value as a cache keeps it: typed data under the item key K, and a companion K.Expires that
// holds the time of its fetch.
#ifndef CORVANE_CACHE_STORED_VALUE_H_
#define CORVANE_CACHE_STORED_VALUE_H_

#include <optional>
#include <string>
#include <string_view>

#include "base/decimal.h"
#include "core/file_time.h"
#include "core/trace.h"
#include "corvane/cache_provider.h"
#include "platform/write_group.h"

namespace Corvane {

// Data of a registry type, as the system's calls take it.
struct TypedData {
  DWORD type;
  const BYTE* data;
  DWORD bytes;
};

// With its terminator, in `text` itself.
TypedData TextData(const std::wstring& text);

std::wstring CompanionName(std::wstring_view key);
bool IsCompanionOf(std::wstring_view key, std::wstring_view name);
// Of a companion's name; none of any other.
std::optional<std::wstring> KeyOfCompanion(std::wstring_view name);
// A companion holds its value's fetch time as a decimal number, "0" for one that never goes stale.
// As it is loaded: whether its value never goes stale, and otherwise its number up to
// the first character that is not a digit; 0 without one.
bool IsNeverStale(const VARIANT& companion);
std::int64_t TimestampOf(const VARIANT& companion);
// A fetch time exactly as it is written; none for all else.
std::optional<std::uint64_t> FetchTimeOf(const VARIANT& companion);

// Adds what a store holds under `name`: REG_SZ as VT_BSTR, up to its first NUL or its end, and
// REG_DWORD as VT_I4, of which missing bytes are 0. Other types are left out.
void AddStoredValue(CachedValueMap* values, const wchar_t* name, const TypedData& data);

// ICacheProvider::GetDataValue over what was read: 0 and a copy, or 1.
std::uint32_t FindStoredValue(const CachedValueMap& values, const wchar_t* name, VARIANT* value);

// Ends the group: 0; or 1 with a failure, which `trace` tells by `message` with the error code.
std::uint32_t CommitWrites(WriteGroup* group, const TraceScope& trace, const wchar_t* message);

// Calls `write(key, value, timestamp)` for every entry that is still fresh.
template <typename Write>
void WriteFresh(const CachedValueMap& values, Write write) {
  for (const auto& [name, cached] : values) {
    if (IsExpired(cached.timestamp, cached.lifespan)) continue;
    write(name, cached.value, static_cast<std::int64_t>(cached.timestamp));
  }
}

// Writes a value, if it is VT_BSTR (up to its first NUL) or VT_I4, and its companion: 0; or 1 at
// the first failure, which `trace` tells by `message` with the error code. Nothing is written under
// an empty name. `write` takes a name and TypedData, and gives a system error code.
template <typename Write>
std::uint32_t WriteWithCompanion(const std::wstring& name, const VARIANT& value,
                                 std::int64_t timestamp, Write write, const TraceScope& trace,
                                 const wchar_t* message) {
  if (name.empty()) return 1;
  const auto succeeds = [&](const std::wstring& under, const TypedData& data) {
    const auto error = write(under, data);
    if (error != ERROR_SUCCESS) trace.Message(kTraceInfo, message, static_cast<int>(error));
    return error == ERROR_SUCCESS;
  };
  if (value.vt == VT_BSTR) {
    // A null BSTR is an empty text.
    if (!succeeds(name, TextData(value.bstrVal ? value.bstrVal : L""))) return 1;
  } else if (value.vt == VT_I4) {
    const auto* const number = reinterpret_cast<const BYTE*>(&value.lVal);
    if (!succeeds(name, {REG_DWORD, number, sizeof(value.lVal)})) return 1;
  }
  return succeeds(CompanionName(name), TextData(FormatDecimal(timestamp))) ? 0 : 1;
}

}  // namespace Corvane

#endif  // CORVANE_CACHE_STORED_VALUE_H_
