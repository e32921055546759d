// _com_error, _bstr_t and _variant_t: the C++ holders of an HRESULT, a BSTR and a VARIANT.
// A failure throws _com_error; out of memory is E_OUTOFMEMORY. Narrow text is UTF-8. One object,
// one thread at a time; copies of a _bstr_t that share their text may live on several threads.
#ifndef CORVANE_LINUX_COMUTIL_H_
#define CORVANE_LINUX_COMUTIL_H_

#include <memory>
#include <type_traits>
#include <utility>

#include "corvane/linux/automation.h"
#include "corvane/linux/com.h"

class CORVANE_API _com_error {
 public:
  explicit _com_error(HRESULT result) noexcept : m_result(result) {}
  _com_error(const _com_error&) noexcept = default;
  _com_error& operator=(const _com_error&) noexcept = default;
  virtual ~_com_error();

  HRESULT Error() const noexcept { return m_result; }

 private:
  HRESULT m_result;
};

[[noreturn]] CORVANE_API void WINAPI _com_issue_error(HRESULT result);

namespace _com_util {

inline void CheckError(HRESULT result) {
  if (FAILED(result)) _com_issue_error(result);
}

// NULL gives NULL. The caller frees with SysFreeString and delete[].
CORVANE_API BSTR WINAPI ConvertStringToBSTR(const char* text);
CORVANE_API char* WINAPI ConvertBSTRToString(BSTR text);

}  // namespace _com_util

class _variant_t;

// Copies share one text until one of them is assigned; GetBSTR reaches the text of all of them.
class CORVANE_API _bstr_t {
 public:
  _bstr_t() noexcept = default;
  _bstr_t(const char* text);         // NOLINT: implicit, as on Windows, here and below
  _bstr_t(const wchar_t* text);      // up to the NUL
  _bstr_t(const _variant_t& value);  // converted to VT_BSTR; up to the NUL
  _bstr_t(BSTR text, bool copy);     // without `copy` the object owns `text`

  _bstr_t& operator=(const char* text) { return *this = _bstr_t(text); }
  _bstr_t& operator=(const wchar_t* text) { return *this = _bstr_t(text); }
  _bstr_t& operator=(const _variant_t& value) { return *this = _bstr_t(value); }

  _bstr_t& operator+=(const _bstr_t& other) { return *this = *this + other; }
  _bstr_t operator+(const _bstr_t& other) const;
  friend _bstr_t operator+(const char* left, const _bstr_t& right) { return _bstr_t(left) + right; }
  friend _bstr_t operator+(const wchar_t* left, const _bstr_t& right) {
    return _bstr_t(left) + right;
  }

  // NULL when there is no text. Valid until the object changes.
  operator const wchar_t*() const noexcept { return Text(); }
  operator wchar_t*() const noexcept { return Text(); }
  operator const char*() const { return Narrow(); }
  operator char*() const { return Narrow(); }
  bool operator!() const noexcept { return Text() == nullptr; }
  unsigned int length() const noexcept { return SysStringLen(Text()); }  // in characters

  // By character code; an absent text comes before an empty one.
  bool operator==(const _bstr_t& other) const noexcept { return Compare(other) == 0; }
  bool operator!=(const _bstr_t& other) const noexcept { return Compare(other) != 0; }
  bool operator<(const _bstr_t& other) const noexcept { return Compare(other) < 0; }
  bool operator>(const _bstr_t& other) const noexcept { return Compare(other) > 0; }
  bool operator<=(const _bstr_t& other) const noexcept { return Compare(other) <= 0; }
  bool operator>=(const _bstr_t& other) const noexcept { return Compare(other) >= 0; }

  BSTR copy(bool copy = true) const;  // the caller frees a copy; otherwise it is the object's own
  void Assign(BSTR text);             // a copy of `text`
  BSTR& GetBSTR();
  BSTR* GetAddress();      // drops the text: for output parameters
  void Attach(BSTR text);  // the object owns `text`
  BSTR Detach();           // the caller owns the result; E_POINTER when absent or shared

 private:
  struct Data;

  BSTR Text() const noexcept;
  char* Narrow() const;
  int Compare(const _bstr_t& other) const noexcept;

  std::shared_ptr<Data> m_data;
};

// `long` is VT_I4 as on Windows although it has 64 bits here: a value that does not fit becomes the
// nearest that does, as `unsigned long` does for VT_UI4. LONG is `int` here, thus VT_INT.
class CORVANE_API _variant_t : public VARIANT {
 public:
  _variant_t() noexcept : VARIANT{} {}
  _variant_t(const VARIANT& source);
  _variant_t(const VARIANT* source);  // NULL: E_POINTER
  _variant_t(const _variant_t& source) : _variant_t(static_cast<const VARIANT&>(source)) {}
  _variant_t(_variant_t&& source) noexcept : VARIANT(source) { source.vt = VT_EMPTY; }
  _variant_t(VARIANT& source,
             bool copy);  // without `copy` the value moves and `source` is VT_EMPTY
  _variant_t(short value, VARTYPE type = VT_I2);   // or VT_BOOL
  _variant_t(long value, VARTYPE type = VT_I4);    // or VT_ERROR, VT_BOOL
  _variant_t(double value, VARTYPE type = VT_R8);  // or VT_DATE; others in all three: E_INVALIDARG
  _variant_t(int value) noexcept : VARIANT{} { Set(VT_INT, &VARIANT::intVal, value); }
  _variant_t(unsigned int value) noexcept : VARIANT{} { Set(VT_UINT, &VARIANT::uintVal, value); }
  _variant_t(unsigned long value) noexcept;
  _variant_t(long long value) noexcept : VARIANT{} { Set(VT_I8, &VARIANT::llVal, value); }
  _variant_t(unsigned long long value) noexcept : VARIANT{} {
    Set(VT_UI8, &VARIANT::ullVal, value);
  }
  _variant_t(float value) noexcept : VARIANT{} { Set(VT_R4, &VARIANT::fltVal, value); }
  _variant_t(bool value) noexcept : VARIANT{} { Set(VT_BOOL, &VARIANT::boolVal, FromBool(value)); }
  _variant_t(BYTE value) noexcept : VARIANT{} { Set(VT_UI1, &VARIANT::bVal, value); }
  _variant_t(char value) noexcept : VARIANT{} { Set(VT_I1, &VARIANT::cVal, value); }
  _variant_t(unsigned short value) noexcept : VARIANT{} { Set(VT_UI2, &VARIANT::uiVal, value); }
  _variant_t(const CY& value) noexcept : VARIANT{} { Set(VT_CY, &VARIANT::cyVal, value); }
  _variant_t(const wchar_t* text);  // up to the NUL; NULL stays NULL
  _variant_t(const char* text);
  _variant_t(const _bstr_t& text);
  _variant_t(IUnknown* object, bool addReference = true) noexcept;
  _variant_t(IDispatch* object, bool addReference = true) noexcept;
  ~_variant_t() { VariantClear(this); }

  _variant_t& operator=(const VARIANT& source);
  _variant_t& operator=(const VARIANT* source);  // NULL: E_POINTER
  _variant_t& operator=(const _variant_t& source) {
    return *this = static_cast<const VARIANT&>(source);
  }
  _variant_t& operator=(_variant_t&& source) noexcept;
  // A short or a long keeps the type of a VT_BOOL (a long also VT_ERROR, a double VT_DATE).
  _variant_t& operator=(short value);
  _variant_t& operator=(long value);
  _variant_t& operator=(double value);
  // All others take the type that a new _variant_t of them has.
  template <typename Value>
  requires(!std::is_base_of_v<VARIANT, std::remove_cvref_t<Value>>) _variant_t& operator=(
      Value&& value) {
    return *this = _variant_t(std::forward<Value>(value));
  }

  // The value converted by VariantChangeType, whose failure is thrown.
  operator short() const { return As(VT_I2, &VARIANT::iVal); }
  operator long() const { return As(VT_I4, &VARIANT::lVal); }
  operator int() const { return As(VT_INT, &VARIANT::intVal); }
  operator unsigned int() const { return As(VT_UINT, &VARIANT::uintVal); }
  operator unsigned long() const { return As(VT_UI4, &VARIANT::ulVal); }
  operator long long() const { return As(VT_I8, &VARIANT::llVal); }
  operator unsigned long long() const { return As(VT_UI8, &VARIANT::ullVal); }
  operator float() const { return As(VT_R4, &VARIANT::fltVal); }
  operator double() const { return As(VT_R8, &VARIANT::dblVal); }
  operator bool() const { return As(VT_BOOL, &VARIANT::boolVal) != VARIANT_FALSE; }
  operator BYTE() const { return As(VT_UI1, &VARIANT::bVal); }
  operator char() const { return As(VT_I1, &VARIANT::cVal); }
  operator unsigned short() const { return As(VT_UI2, &VARIANT::uiVal); }
  operator _bstr_t() const { return _bstr_t(*this); }  // up to the NUL
  operator IUnknown*() const;                          // the caller owns one reference

  // Same type and same value, without conversion; arrays and references: E_INVALIDARG.
  bool operator==(const VARIANT& other) const { return *this == &other; }
  bool operator==(const VARIANT* other) const;  // NULL: false
  bool operator!=(const VARIANT& other) const { return !(*this == &other); }
  bool operator!=(const VARIANT* other) const { return !(*this == other); }

  void Clear() { _com_util::CheckError(VariantClear(this)); }
  void Attach(VARIANT& source);  // takes the value; `source` is VT_EMPTY
  VARIANT Detach();              // the caller clears the result
  VARIANT& GetVARIANT() noexcept { return *this; }
  VARIANT* GetAddress();  // clears first: for output parameters
  // Converts `source`, or this value; the value is as it was when that throws.
  void ChangeType(VARTYPE type, const _variant_t* source = nullptr);
  void SetString(const char* text) { *this = text; }

 private:
  static VARIANT_BOOL FromBool(bool value) noexcept { return value ? VARIANT_TRUE : VARIANT_FALSE; }

  template <typename T>
  void Set(VARTYPE type, T VARIANT::*member, T value) noexcept {
    vt = type;
    this->*member = value;
  }

  template <typename T>
  T As(VARTYPE type, T VARIANT::*member) const {
    if (vt == type) return this->*member;
    _variant_t converted;
    converted.ChangeType(type, this);
    return converted.*member;
  }
};

static_assert(sizeof(_variant_t) == sizeof(VARIANT), "arrays of one are arrays of the other");

#endif  // CORVANE_LINUX_COMUTIL_H_
