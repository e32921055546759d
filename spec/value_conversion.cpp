// NexoDataItem::ConvertValue: raw device values into the client's words.
#include <cwchar>
#include <string>
#include <string_view>

#include "base/decimal.h"
#include "base/letter_case.h"
#include "corvane/handles.h"
#include "corvane/nexo_data_item.h"

namespace Corvane {
namespace {

std::wstring LoweredText(const VARIANT& value) {
  if (value.vt == VT_I4) return FormatDecimal(value.lVal);
  if (value.vt == VT_BSTR && value.bstrVal) {
    return ToLower({value.bstrVal, SysStringLen(value.bstrVal)});
  }
  return {};
}

// Whether `holds` is true of every word between the commas of `list`, or of any.
template <typename Predicate>
bool AnyConversionWord(std::wstring_view list, Predicate holds) {
  for (;;) {
    const std::size_t comma = list.find(L',');
    if (holds(list.substr(0, comma))) return true;
    if (comma == std::wstring_view::npos) return false;
    list.remove_prefix(comma + 1);
  }
}

bool HasEveryWordOf(std::wstring_view raw, std::wstring_view list) {
  return !AnyConversionWord(
      list, [raw](std::wstring_view word) { return raw.find(word) == std::wstring_view::npos; });
}

bool IsConversionWord(std::wstring_view word, std::wstring_view list) {
  return AnyConversionWord(list, [word](std::wstring_view candidate) { return candidate == word; });
}

bool IsList(std::wstring_view text) { return text.find(L',') != std::wstring_view::npos; }

_variant_t TextVariant(const std::wstring& text) {
  _variant_t result;
  result.bstrVal = text.empty() ? nullptr : UniqueBstr::Make(text.c_str()).Release();
  result.vt = VT_BSTR;
  return result;
}

}  // namespace

_variant_t NexoDataItem::ConvertValue(_variant_t value) const {
  if (m_conversions.empty()) return value;
  const std::wstring raw = LoweredText(value);
  const bool rawIsList = IsList(raw);
  const std::wstring* replacement = nullptr;
  for (const auto& [match, candidate] : m_conversions) {
    if (IsList(match)) {
      if (HasEveryWordOf(raw, match)) replacement = &candidate;
    } else if (raw == match || (rawIsList && IsConversionWord(match, raw))) {
      replacement = &candidate;
      break;
    }
  }
  if (!replacement) {
    const auto fallback = m_conversions.find(std::wstring_view(L"default"));
    if (fallback == m_conversions.end()) return value;
    replacement = &fallback->second;
  }
  return TextVariant(*replacement);
}

}  // namespace Corvane
