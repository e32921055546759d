// VariantChangeType: between integers, reals, booleans and text.
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <string_view>

#include "platform/linux/automation/variant_types.h"

namespace {

// Holds every integer of 64 bits, signed or not, and every double.
using Number = long double;
static_assert(std::numeric_limits<Number>::digits >= 64);

constexpr std::size_t kMaxNumberChars = 1024;  // of text that is read as a number
constexpr int kExactDecimals = 40;             // enough to see whether a real is a half
constexpr std::string_view kBlanks = " \t\n\v\f\r";

bool IsInteger(VARTYPE type) {
  return type == VT_I2 || type == VT_I4 || (type >= VT_I1 && type <= VT_UINT);
}

// None when `source` is neither number nor boolean nor VT_EMPTY.
std::optional<Number> VariantNumberOf(const VARIANT& source) {
  switch (source.vt) {
    case VT_EMPTY:
      return 0;
    case VT_I1:
      return source.cVal;
    case VT_UI1:
      return source.bVal;
    case VT_I2:
    case VT_BOOL:
      return source.iVal;
    case VT_UI2:
      return source.uiVal;
    case VT_I4:
    case VT_INT:
      return source.lVal;
    case VT_UI4:
    case VT_UINT:
      return source.ulVal;
    case VT_I8:
      return source.llVal;
    case VT_UI8:
      return source.ullVal;
    case VT_R4:
      return static_cast<Number>(source.fltVal);
    case VT_R8:
      return source.dblVal;
    default:
      return std::nullopt;
  }
}

template <typename Integer>
HRESULT RoundToEven(Number number, Integer* result) {
  using Limits = std::numeric_limits<Integer>;
  const Number rounded = std::nearbyint(number);  // halves to even
  if (!(rounded >= Limits::min() && rounded <= Limits::max())) return DISP_E_OVERFLOW;
  *result = static_cast<Integer>(rounded);
  return S_OK;
}

HRESULT StoreNumber(Number number, VARTYPE type, VARIANT* result) {
  switch (type) {
    case VT_I1:
      return RoundToEven(number, &result->cVal);
    case VT_UI1:
      return RoundToEven(number, &result->bVal);
    case VT_I2:
      return RoundToEven(number, &result->iVal);
    case VT_UI2:
      return RoundToEven(number, &result->uiVal);
    case VT_I4:
    case VT_INT:
      return RoundToEven(number, &result->lVal);
    case VT_UI4:
    case VT_UINT:
      return RoundToEven(number, &result->ulVal);
    case VT_I8:
      return RoundToEven(number, &result->llVal);
    case VT_UI8:
      return RoundToEven(number, &result->ullVal);
    case VT_R4:
      if (std::fabs(number) > std::numeric_limits<float>::max()) return DISP_E_OVERFLOW;
      result->fltVal = static_cast<float>(number);
      return S_OK;
    case VT_R8:
      result->dblVal = static_cast<double>(number);
      return S_OK;
    case VT_BOOL:
      result->boolVal = number != 0 ? VARIANT_TRUE : VARIANT_FALSE;
      return S_OK;
    default:
      return DISP_E_TYPEMISMATCH;
  }
}

HRESULT ConvertNumber(const VARIANT& source, Number number, VARTYPE type, VARIANT* result) {
  // Integers of one width keep their bits, and a boolean is -1 in every width.
  if (IsInteger(type) && source.vt == VT_BOOL) {
    result->llVal = source.boolVal;
    return S_OK;
  }
  if (IsInteger(type) && IsInteger(source.vt) && ElementBytes(type) == ElementBytes(source.vt)) {
    result->llVal = source.llVal;
    return S_OK;
  }
  return StoreNumber(number, type, result);
}

// At most `digits` significant digits.
char* WriteReal(Number number, std::size_t digits, char* begin, char* end) {
  // Halves go away from zero, to_chars takes them to the even digit: a 5 behind the last digit that
  // is shown becomes a 6.
  std::array<char, 64> exact{};
  char* const exactEnd = std::to_chars(exact.begin(), exact.end(), number,
                                       std::chars_format::scientific, kExactDecimals)
                             .ptr;
  char& next = exact[(number < 0 ? 1 : 0) + 1 + digits];
  if (next == '5') next = '6';
  std::from_chars(exact.begin(), exactEnd, number);
  end = std::to_chars(begin, end, number, std::chars_format::general, static_cast<int>(digits)).ptr;
  std::replace(begin, end, 'e', 'E');
  return end;
}

HRESULT WriteNumber(const VARIANT& source, Number number, USHORT flags, BSTR* text) {
  std::array<char, 32> buffer;
  char* end = buffer.begin();
  if (source.vt == VT_BOOL && (flags & VARIANT_ALPHABOOL) != 0) {
    end = std::ranges::copy(std::string_view(number != 0 ? "True" : "False"), end).out;
  } else if (source.vt == VT_R4 || source.vt == VT_R8) {
    end = WriteReal(number == 0 ? 0 : number, source.vt == VT_R4 ? 7 : 15, end, buffer.end());
  } else if (source.vt != VT_EMPTY) {
    end = std::to_chars(end, buffer.end(), number, std::chars_format::fixed, 0).ptr;
  }
  *text = SysAllocStringLen(nullptr, static_cast<UINT>(end - buffer.begin()));
  if (*text == nullptr) return E_OUTOFMEMORY;
  std::copy(buffer.begin(), end, *text);
  return S_OK;
}

// A sign, digits with a point, an exponent; blanks around all of it.
template <typename Real>
HRESULT ParseNumber(std::string_view text, Number* number) {
  text = text.substr(0, text.find_last_not_of(kBlanks) + 1);
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  const bool plus = text.starts_with('+');
  const std::size_t digits = plus || text.starts_with('-');
  // Not "inf", nor a second sign.
  if (text.find_first_of("0123456789.", digits) != digits) return DISP_E_TYPEMISMATCH;
  Real value = 0;
  const std::from_chars_result parsed =
      std::from_chars(text.data() + plus, text.data() + text.size(), value);
  if (parsed.ptr != text.data() + text.size()) return DISP_E_TYPEMISMATCH;
  if (parsed.ec == std::errc::result_out_of_range) return DISP_E_OVERFLOW;
  if (parsed.ec != std::errc{}) return DISP_E_TYPEMISMATCH;
  *number = value;
  return S_OK;
}

bool IsWord(std::string_view text, std::string_view lowerCase) {
  return std::ranges::equal(text, lowerCase, {}, [](char c) { return c | 0x20; });
}

// Reads `text` up to its NUL. A mismatch: NULL, text that is too long, characters beyond ASCII.
HRESULT ConvertText(const wchar_t* text, VARTYPE type, VARIANT* result) {
  std::array<char, kMaxNumberChars> buffer;
  std::size_t chars = 0;
  for (; text != nullptr && text[chars] != L'\0'; ++chars) {
    if (chars == buffer.size() || text[chars] >= 0x80) return DISP_E_TYPEMISMATCH;
    buffer[chars] = static_cast<char>(text[chars]);
  }
  const std::string_view ascii(buffer.data(), chars);
  Number number = 0;
  if (type == VT_BOOL && IsWord(ascii, "true")) {
    number = 1;
  } else if (type != VT_BOOL || !IsWord(ascii, "false")) {
    // A real is rounded once, from its text; an integer may have more digits than a double.
    const HRESULT status =
        IsInteger(type) ? ParseNumber<Number>(ascii, &number) : ParseNumber<double>(ascii, &number);
    if (FAILED(status)) return status;
  }
  return StoreNumber(number, type, result);
}

HRESULT BytesToText(SAFEARRAY* array, BSTR* text) {
  if (array == nullptr) return E_INVALIDARG;
  *text =
      SysAllocStringByteLen(static_cast<const char*>(array->pvData), array->rgsabound[0].cElements);
  return *text == nullptr ? E_OUTOFMEMORY : S_OK;
}

// `source` is a view without VT_BYREF; result->vt is still to be set.
HRESULT ConvertVariant(const VARIANT& source, VARTYPE type, USHORT flags, VARIANT* result) {
  if (source.vt == type) return Duplicate(source, result);
  if (source.vt == (VT_ARRAY | VT_UI1) && type == VT_BSTR) {
    return BytesToText(source.parray, &result->bstrVal);
  }
  if (V_ISARRAY(&source) || source.vt == VT_NULL || source.vt == VT_ERROR) {
    return DISP_E_TYPEMISMATCH;
  }
  if (type == VT_EMPTY || type == VT_NULL) return S_OK;
  if (source.vt == VT_DISPATCH && source.pdispVal == nullptr) return DISP_E_BADVARTYPE;
  if (source.vt == VT_BSTR) return ConvertText(source.bstrVal, type, result);
  const std::optional<Number> number = VariantNumberOf(source);
  if (!number) return DISP_E_TYPEMISMATCH;
  return type == VT_BSTR ? WriteNumber(source, *number, flags, &result->bstrVal)
                         : ConvertNumber(source, *number, type, result);
}

}  // namespace

extern "C" {

HRESULT WINAPI VariantChangeType(VARIANTARG* destination, const VARIANTARG* source, USHORT flags,
                                 VARTYPE type) {
  if (!IsKnownType(source->vt) || !IsKnownType(type)) return DISP_E_BADVARTYPE;
  if (V_ISBYREF(source) && source->byref == nullptr) return DISP_E_TYPEMISMATCH;
  VARIANT view;
  HRESULT status = Dereference(*source, &view);
  if (FAILED(status)) return status;
  if (!IsKnownType(view.vt)) return DISP_E_BADVARTYPE;
  VARIANT result{};
  status = ConvertVariant(view, type, flags, &result);
  if (FAILED(status)) return status;
  result.vt = type;
  return Replace(destination, result);
}

}  // extern "C"
