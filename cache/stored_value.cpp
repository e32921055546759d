#include "cache/stored_value.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <iterator>

#include "base/decimal.h"
#include "core/com.h"
#include "corvane/handles.h"

namespace Corvane {
namespace {

constexpr std::wstring_view kCompanionEnding = L".Expires";

// Whole characters before the first NUL; the data need not be aligned.
UINT CharsOfText(const TypedData& data) {
  const DWORD limit = data.bytes / sizeof(wchar_t);
  for (DWORD chars = 0; chars < limit; ++chars) {
    wchar_t c = L'\0';
    std::memcpy(&c, data.data + chars * sizeof(wchar_t), sizeof(wchar_t));
    if (c == L'\0') return chars;
  }
  return limit;
}

bool IsText(const VARIANT& value) { return value.vt == VT_BSTR && value.bstrVal; }

}  // namespace

TypedData TextData(const std::wstring& text) {
  return {REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
          static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))};
}

std::wstring CompanionName(std::wstring_view key) {
  std::wstring name;
  name.reserve(key.size() + kCompanionEnding.size());
  return name.append(key).append(kCompanionEnding);
}

bool IsCompanionOf(std::wstring_view key, std::wstring_view name) {
  return name.size() == key.size() + kCompanionEnding.size() && name.starts_with(key) &&
         name.ends_with(kCompanionEnding);
}

std::optional<std::wstring> KeyOfCompanion(std::wstring_view name) {
  if (!name.ends_with(kCompanionEnding)) return std::nullopt;
  return std::wstring(name.substr(0, name.size() - kCompanionEnding.size()));
}

bool IsNeverStale(const VARIANT& companion) {
  return IsText(companion) && companion.bstrVal == std::wstring_view(L"0");
}

std::int64_t TimestampOf(const VARIANT& companion) {
  return IsText(companion) ? LeadingNumber(companion.bstrVal) : 0;
}

std::optional<std::uint64_t> FetchTimeOf(const VARIANT& companion) {
  const std::int64_t timestamp = TimestampOf(companion);
  if (timestamp < 0 || !IsText(companion) || FormatDecimal(timestamp) != companion.bstrVal) {
    return std::nullopt;
  }
  return static_cast<std::uint64_t>(timestamp);
}

void AddStoredValue(CachedValueMap* values, const wchar_t* name, const TypedData& data) {
  _variant_t value;
  if (data.type == REG_SZ) {
    UniqueBstr text = UniqueBstr::MakeLength(CharsOfText(data));
    if (data.bytes > 0) std::memcpy(text.Get(), data.data, text.View().size() * sizeof(wchar_t));
    value.vt = VT_BSTR;
    value.bstrVal = text.Release();
  } else if (data.type == REG_DWORD) {
    value.vt = VT_I4;
    value.lVal = 0;
    const std::size_t bytes = std::min<std::size_t>(data.bytes, sizeof(value.lVal));
    if (bytes > 0) std::memcpy(&value.lVal, data.data, bytes);
  } else {
    return;
  }
  // Stores list names in about this order.
  values->try_emplace(values->end(), name)->second.value.Attach(value);
}

std::uint32_t FindStoredValue(const CachedValueMap& values, const wchar_t* name, VARIANT* value) {
  if (!name || !value) return 1;
  const auto entry = values.find(std::wstring_view(name));
  if (entry == values.end()) return 1;
  MoveTo(_variant_t(entry->second.value), value);
  return 0;
}

std::uint32_t CommitWrites(WriteGroup* group, const TraceScope& trace, const wchar_t* message) {
  const LSTATUS error = group->Commit();
  if (error == ERROR_SUCCESS) return 0;
  trace.Message(kTraceInfo, message, static_cast<int>(error));
  return 1;
}

}  // namespace Corvane
