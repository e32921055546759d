// VariantChangeType: every source becomes a Number or text first, every target is made from one.
#include <array>
#include <cmath>
#include <cwchar>
#include <limits>
#include <string_view>
#include <utility>

#include "corvane/linux/com.h"
#include "platform/linux/automation/date_text.h"
#include "platform/linux/automation/number_text.h"
#include "platform/linux/automation/variant_types.h"

namespace {

constexpr LONGLONG kCurrencyUnit = 10'000;

struct Number {
  enum class Kind { kSigned, kUnsigned, kBoolean, kReal, kCurrency };
  Kind kind;
  UINT bytes;  // of an integer; 0 when it came from text
  LONGLONG signedValue;
  ULONGLONG unsignedValue;
  double realValue;
};

Number SignedNumber(LONGLONG value, UINT bytes) {
  return {Number::Kind::kSigned, bytes, value, static_cast<ULONGLONG>(value),
          static_cast<double>(value)};
}

Number UnsignedNumber(ULONGLONG value, UINT bytes) {
  return {Number::Kind::kUnsigned, bytes, static_cast<LONGLONG>(value), value,
          static_cast<double>(value)};
}

Number RealNumber(double value) { return {Number::Kind::kReal, 0, 0, 0, value}; }

// False when `source` holds no number (text, pointers, VT_NULL, VT_ERROR).
bool ReadNumber(const VARIANT& source, Number* number) {
  switch (source.vt) {
    case VT_EMPTY:
      *number = SignedNumber(0, 0);
      return true;
    case VT_I1:
      *number = SignedNumber(static_cast<signed char>(source.cVal), 1);
      return true;
    case VT_I2:
      *number = SignedNumber(source.iVal, 2);
      return true;
    case VT_I4:
    case VT_INT:
      *number = SignedNumber(source.lVal, 4);
      return true;
    case VT_I8:
      *number = SignedNumber(source.llVal, 8);
      return true;
    case VT_UI1:
      *number = UnsignedNumber(source.bVal, 1);
      return true;
    case VT_UI2:
      *number = UnsignedNumber(source.uiVal, 2);
      return true;
    case VT_UI4:
    case VT_UINT:
      *number = UnsignedNumber(source.ulVal, 4);
      return true;
    case VT_UI8:
      *number = UnsignedNumber(source.ullVal, 8);
      return true;
    case VT_BOOL:
      *number = SignedNumber(source.boolVal, 2);
      number->kind = Number::Kind::kBoolean;
      return true;
    case VT_R4:
      *number = RealNumber(static_cast<double>(source.fltVal));
      return true;
    case VT_R8:
    case VT_DATE:
      *number = RealNumber(source.dblVal);
      return true;
    case VT_CY:
      *number = SignedNumber(source.cyVal.int64, 8);
      number->kind = Number::Kind::kCurrency;
      number->realValue = static_cast<double>(source.cyVal.int64) / kCurrencyUnit;
      return true;
    default:
      return false;
  }
}

double RoundHalfToEven(double value) {
  const double below = std::floor(value);
  const double rest = value - below;
  if (rest < 0.5) return below;
  if (rest > 0.5) return below + 1;
  return std::fmod(below, 2) == 0 ? below : below + 1;
}

LONGLONG RoundCurrency(LONGLONG value) {
  LONGLONG quotient = value / kCurrencyUnit;
  LONGLONG rest = value % kCurrencyUnit;
  if (rest < 0) {
    rest += kCurrencyUnit;
    --quotient;
  }
  constexpr LONGLONG kHalf = kCurrencyUnit / 2;
  return rest > kHalf || (rest == kHalf && quotient % 2 != 0) ? quotient + 1 : quotient;
}

template <typename T>
HRESULT RealToInteger(double value, T* result) {
  // 2^63 and 2^64 are doubles, the maxima below them are not. The division is an exact one.
  // NOLINTNEXTLINE(bugprone-integer-division)
  constexpr double kLimit = static_cast<double>(std::numeric_limits<T>::max() / 2 + 1) * 2;
  const double rounded = RoundHalfToEven(value);
  if (!(rounded >= static_cast<double>(std::numeric_limits<T>::min()) && rounded < kLimit)) {
    return DISP_E_OVERFLOW;
  }
  *result = static_cast<T>(rounded);
  return S_OK;
}

template <typename T, typename S>
HRESULT NarrowInteger(S value, T* result) {
  if (!std::in_range<T>(value)) return DISP_E_OVERFLOW;
  *result = static_cast<T>(value);
  return S_OK;
}

template <typename T>
HRESULT NumberToInteger(const Number& number, T* result) {
  switch (number.kind) {
    case Number::Kind::kSigned:
      if (number.bytes == sizeof(T)) break;
      return NarrowInteger(number.signedValue, result);
    case Number::Kind::kUnsigned:
      if (number.bytes == sizeof(T)) break;
      return NarrowInteger(number.unsignedValue, result);
    case Number::Kind::kReal:
      return RealToInteger(number.realValue, result);
    case Number::Kind::kCurrency:
      return NarrowInteger(RoundCurrency(number.signedValue), result);
    case Number::Kind::kBoolean:
      break;
  }
  *result = static_cast<T>(number.signedValue);  // bits kept
  return S_OK;
}

template <typename T>
HRESULT TextToInteger(const wchar_t* text, T* result) {
  NumberText number;
  HRESULT status = ParseNumber(text, &number);
  ULONGLONG magnitude = 0;
  if (SUCCEEDED(status)) status = RoundMagnitude(number, 0, &magnitude);
  if (FAILED(status)) return status;
  if (number.isBits && !number.negative) {
    // "&HFFFF" is -1 for 16 bits and 65535 for more.
    if (!std::in_range<std::make_unsigned_t<T>>(magnitude)) return DISP_E_OVERFLOW;
    *result = static_cast<T>(magnitude);
    return S_OK;
  }
  if (!number.negative) return NarrowInteger(magnitude, result);
  constexpr ULONGLONG kMinMagnitude = 1ULL << 63;
  if (magnitude > kMinMagnitude) return DISP_E_OVERFLOW;
  return NarrowInteger(static_cast<LONGLONG>(0 - magnitude), result);
}

HRESULT NumberToReal(const Number& number, double* result) {
  *result = number.realValue;
  return S_OK;
}

HRESULT TextToReal(const wchar_t* text, double* result) {
  NumberText number;
  const HRESULT status = ParseNumber(text, &number);
  return FAILED(status) ? status : ToDouble(number, result);
}

HRESULT NumberToCurrency(const Number& number, LONGLONG* result) {
  switch (number.kind) {
    case Number::Kind::kReal:
      return RealToInteger(number.realValue * kCurrencyUnit, result);
    case Number::Kind::kUnsigned:
      if (!std::in_range<LONGLONG>(number.unsignedValue)) return DISP_E_OVERFLOW;
      [[fallthrough]];
    case Number::Kind::kSigned:
    case Number::Kind::kBoolean:
      return __builtin_mul_overflow(number.signedValue, kCurrencyUnit, result) ? DISP_E_OVERFLOW
                                                                               : S_OK;
    case Number::Kind::kCurrency:
      break;
  }
  *result = number.signedValue;
  return S_OK;
}

HRESULT TextToCurrency(const wchar_t* text, LONGLONG* result) {
  constexpr int kDecimals = 4;
  NumberText number;
  HRESULT status = ParseNumber(text, &number);
  ULONGLONG magnitude = 0;
  if (SUCCEEDED(status)) status = RoundMagnitude(number, kDecimals, &magnitude);
  if (FAILED(status)) return status;
  constexpr ULONGLONG kMinMagnitude = 1ULL << 63;
  if (magnitude > (number.negative ? kMinMagnitude : kMinMagnitude - 1)) return DISP_E_OVERFLOW;
  *result = static_cast<LONGLONG>(number.negative ? 0 - magnitude : magnitude);
  return S_OK;
}

bool EqualsIgnoringAsciiCase(std::wstring_view text, std::wstring_view lower) {
  if (text.size() != lower.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const wchar_t c = text[i] >= L'A' && text[i] <= L'Z' ? text[i] + 32 : text[i];
    if (c != lower[i]) return false;
  }
  return true;
}

HRESULT TextToBool(const wchar_t* text, VARIANT_BOOL* result) {
  if (text == nullptr) return DISP_E_TYPEMISMATCH;
  const std::wstring_view word = text;
  if (EqualsIgnoringAsciiCase(word, L"true") || word == L"#TRUE#") {
    *result = VARIANT_TRUE;
    return S_OK;
  }
  if (EqualsIgnoringAsciiCase(word, L"false") || word == L"#FALSE#") {
    *result = VARIANT_FALSE;
    return S_OK;
  }
  double value = 0;
  const HRESULT status = TextToReal(text, &value);
  if (SUCCEEDED(status)) *result = value != 0 ? VARIANT_TRUE : VARIANT_FALSE;
  return status;
}

VARIANT_BOOL NumberToBool(const Number& number) {
  const bool isSet =
      number.kind == Number::Kind::kReal ? number.realValue != 0 : number.unsignedValue != 0;
  return isSet ? VARIANT_TRUE : VARIANT_FALSE;
}

HRESULT AllocateText(std::string_view ascii, BSTR* text) {
  BSTR result = SysAllocStringLen(nullptr, static_cast<UINT>(ascii.size()));
  if (result == nullptr) return E_OUTOFMEMORY;
  for (std::size_t i = 0; i < ascii.size(); ++i) result[i] = static_cast<wchar_t>(ascii[i]);
  *text = result;
  return S_OK;
}

HRESULT NumberToText(const VARIANT& source, const Number& number, USHORT flags, BSTR* text) {
  constexpr int kFloatDigits = 7;
  constexpr int kDoubleDigits = 15;
  NumberFormatter formatter;
  switch (source.vt) {
    case VT_EMPTY:
      return AllocateText({}, text);
    case VT_DATE: {
      DateFormatter dateFormatter;
      std::string_view date;
      const HRESULT status = dateFormatter.Format(source.date, &date);
      return FAILED(status) ? status : AllocateText(date, text);
    }
    case VT_R4:
      return AllocateText(formatter.Real(number.realValue, kFloatDigits), text);
    case VT_R8:
      return AllocateText(formatter.Real(number.realValue, kDoubleDigits), text);
    case VT_CY:
      return AllocateText(formatter.Currency(source.cyVal), text);
    case VT_BOOL:
      if ((flags & VARIANT_ALPHABOOL) != 0) {
        return AllocateText(source.boolVal != 0 ? "True" : "False", text);
      }
      return AllocateText(formatter.Signed(number.signedValue), text);
    default:
      return AllocateText(number.kind == Number::Kind::kUnsigned
                              ? formatter.Unsigned(number.unsignedValue)
                              : formatter.Signed(number.signedValue),
                          text);
  }
}

// The real numbers' targets: VT_R8, VT_R4 and VT_DATE, which has a calendar's range.
HRESULT StoreReal(double value, VARTYPE type, VARIANT* result) {
  if (type == VT_R4) {
    if (std::fabs(value) > static_cast<double>(std::numeric_limits<float>::max())) {
      return DISP_E_OVERFLOW;
    }
    result->fltVal = static_cast<float>(value);
    return S_OK;
  }
  if (type == VT_DATE && !(value > kFirstDate - 1 && value < kLastDate + 1)) {
    return DISP_E_OVERFLOW;
  }
  result->dblVal = value;
  return S_OK;
}

// From a number when there is one, else from text.
struct Source {
  const VARIANT& variant;
  const Number* number;

  template <typename T>
  HRESULT ToInteger(T* result) const {
    return number != nullptr ? NumberToInteger(*number, result)
                             : TextToInteger(variant.bstrVal, result);
  }

  HRESULT ToReal(VARTYPE type, VARIANT* result) const {
    double value = 0;
    HRESULT status = S_OK;
    if (number != nullptr) {
      status = NumberToReal(*number, &value);
    } else {
      status = type == VT_DATE ? ParseDate(variant.bstrVal, &value)
                               : TextToReal(variant.bstrVal, &value);
    }
    return FAILED(status) ? status : StoreReal(value, type, result);
  }
};

HRESULT ConvertScalar(const Source& source, VARTYPE type, USHORT flags, VARIANT* result) {
  switch (type) {
    case VT_I1: {
      signed char value = 0;
      const HRESULT status = source.ToInteger(&value);
      result->cVal = static_cast<CHAR>(value);
      return status;
    }
    case VT_UI1:
      return source.ToInteger(&result->bVal);
    case VT_I2:
      return source.ToInteger(&result->iVal);
    case VT_UI2:
      return source.ToInteger(&result->uiVal);
    case VT_I4:
    case VT_INT:
      return source.ToInteger(&result->lVal);
    case VT_UI4:
    case VT_UINT:
      return source.ToInteger(&result->ulVal);
    case VT_I8:
      return source.ToInteger(&result->llVal);
    case VT_UI8:
      return source.ToInteger(&result->ullVal);
    case VT_R4:
    case VT_R8:
    case VT_DATE:
      return source.ToReal(type, result);
    case VT_CY:
      return source.number != nullptr
                 ? NumberToCurrency(*source.number, &result->cyVal.int64)
                 : TextToCurrency(source.variant.bstrVal, &result->cyVal.int64);
    case VT_BOOL:
      if (source.number == nullptr) return TextToBool(source.variant.bstrVal, &result->boolVal);
      result->boolVal = NumberToBool(*source.number);
      return S_OK;
    case VT_BSTR:
      return NumberToText(source.variant, *source.number, flags, &result->bstrVal);
    case VT_NULL:
      return S_OK;
    default:
      return DISP_E_TYPEMISMATCH;
  }
}

HRESULT BytesToText(SAFEARRAY* array, BSTR* text) {
  VARTYPE type = VT_EMPTY;
  const HRESULT status = SafeArrayGetVartype(array, &type);
  if (FAILED(status)) return status;
  if (type != VT_UI1) return E_INVALIDARG;
  *text =
      SysAllocStringByteLen(static_cast<const char*>(array->pvData), array->rgsabound[0].cElements);
  return *text == nullptr ? E_OUTOFMEMORY : S_OK;
}

HRESULT TextToBytes(BSTR text, SAFEARRAY** array) {
  const UINT bytes = SysStringByteLen(text);
  SAFEARRAY* result = SafeArrayCreateVector(VT_UI1, 0, bytes);
  if (result == nullptr) return E_OUTOFMEMORY;
  if (bytes != 0) std::memcpy(result->pvData, text, bytes);
  *array = result;
  return S_OK;
}

HRESULT ConvertArray(const VARIANT& source, VARTYPE type, VARIANT* result) {
  constexpr VARTYPE kByteArray = VT_ARRAY | VT_UI1;
  if (source.vt == kByteArray && type == VT_BSTR) {
    return BytesToText(source.parray, &result->bstrVal);
  }
  if (source.vt == VT_BSTR && type == kByteArray) {
    return TextToBytes(source.bstrVal, &result->parray);
  }
  return DISP_E_TYPEMISMATCH;
}

HRESULT ConvertObject(const VARIANT& source, VARTYPE type, VARIANT* result) {
  if (type == VT_NULL || type == VT_EMPTY) return S_OK;
  if (type == VT_UNKNOWN || type == VT_DISPATCH) {
    result->punkVal = nullptr;
    if (source.punkVal == nullptr) return S_OK;
    void* object = nullptr;
    const HRESULT status =
        source.punkVal->QueryInterface(type == VT_UNKNOWN ? IID_IUnknown : IID_IDispatch, &object);
    if (FAILED(status)) return status;
    result->punkVal = static_cast<IUnknown*>(object);
    return S_OK;
  }
  // A VT_DISPATCH would give its default property: no object of this layer has one.
  const bool isPlain = type != VT_ERROR && type != VT_VARIANT;
  return source.vt == VT_DISPATCH && source.pdispVal == nullptr && isPlain ? DISP_E_BADVARTYPE
                                                                           : DISP_E_TYPEMISMATCH;
}

// `source` is a view without VT_BYREF; result->vt is still to be set.
HRESULT Convert(const VARIANT& source, VARTYPE type, USHORT flags, VARIANT* result) {
  if (source.vt == type) return Duplicate(source, result);
  if ((type & VT_BYREF) != 0) return DISP_E_TYPEMISMATCH;
  if (V_ISARRAY(&source) || (type & VT_ARRAY) != 0) return ConvertArray(source, type, result);
  if (source.vt == VT_UNKNOWN || source.vt == VT_DISPATCH) {
    return ConvertObject(source, type, result);
  }
  if (source.vt == VT_NULL || source.vt == VT_ERROR) return DISP_E_TYPEMISMATCH;
  if (type == VT_EMPTY || type == VT_NULL) return S_OK;
  Number number;
  if (ReadNumber(source, &number)) return ConvertScalar({source, &number}, type, flags, result);
  if (source.vt == VT_BSTR) return ConvertScalar({source, nullptr}, type, flags, result);
  return DISP_E_TYPEMISMATCH;
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
  status = Convert(view, type, flags, &result);
  if (FAILED(status)) return status;
  result.vt = type;
  status = VariantClear(destination);
  if (FAILED(status)) {
    VariantClear(&result);
    return status;
  }
  *destination = result;
  return S_OK;
}

}  // extern "C"
