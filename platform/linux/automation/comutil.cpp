#include "corvane/linux/comutil.h"

#include <algorithm>
#include <cwchar>
#include <limits>
#include <new>
#include <string_view>

#include "platform/linux/automation/variant_types.h"
#include "platform/linux/misc/text.h"

namespace {

BSTR CopyBstr(BSTR text) {
  if (text == nullptr) return nullptr;
  BSTR copy = SysAllocStringByteLen(reinterpret_cast<const char*>(text), SysStringByteLen(text));
  if (copy == nullptr) _com_issue_error(E_OUTOFMEMORY);
  return copy;
}

BSTR AllocateUpToNul(const wchar_t* text) {
  BSTR copy = SysAllocString(text);
  if (copy == nullptr && text != nullptr) _com_issue_error(E_OUTOFMEMORY);
  return copy;
}

template <typename Narrow, typename Wide>
Narrow Saturate(Wide value) noexcept {
  using Limits = std::numeric_limits<Narrow>;
  return static_cast<Narrow>(std::clamp<Wide>(value, Limits::min(), Limits::max()));
}

[[noreturn]] void IssueLastError() {
  const DWORD code = GetLastError();
  _com_issue_error(static_cast<HRESULT>(0x80070000u | (code & 0xFFFF)));
}

}  // namespace

_com_error::~_com_error() = default;

void WINAPI _com_issue_error(HRESULT result) { throw _com_error(result); }

namespace _com_util {

BSTR WINAPI ConvertStringToBSTR(const char* text) {
  if (text == nullptr) return nullptr;
  const int chars = MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
  if (chars == 0) IssueLastError();
  BSTR result = SysAllocStringLen(nullptr, static_cast<UINT>(chars) - 1);
  if (result == nullptr) _com_issue_error(E_OUTOFMEMORY);
  MultiByteToWideChar(CP_ACP, 0, text, -1, result, chars);
  return result;
}

char* WINAPI ConvertBSTRToString(BSTR text) {
  if (text == nullptr) return nullptr;
  const int chars = static_cast<int>(SysStringLen(text)) + 1;
  const int bytes = WideCharToMultiByte(CP_ACP, 0, text, chars, nullptr, 0, nullptr, nullptr);
  if (bytes == 0) IssueLastError();
  const std::size_t size = static_cast<std::size_t>(bytes);
  char* result = new (std::nothrow) char[size];
  if (result == nullptr) _com_issue_error(E_OUTOFMEMORY);
  WideCharToMultiByte(CP_ACP, 0, text, chars, result, bytes, nullptr, nullptr);
  return result;
}

}  // namespace _com_util

// Owns `text`, also when making the object fails.
struct _bstr_t::Data {
  explicit Data(BSTR owned) noexcept : text(owned) {}
  Data(const Data&) = delete;
  Data& operator=(const Data&) = delete;
  ~Data() { SysFreeString(text); }

  static std::shared_ptr<Data> Own(BSTR text) {
    try {
      return std::make_shared<Data>(text);
    } catch (const std::bad_alloc&) {
      SysFreeString(text);
      _com_issue_error(E_OUTOFMEMORY);
    }
  }

  BSTR text;
  std::unique_ptr<char[]> narrow;  // made when first asked for
};

_bstr_t::_bstr_t(const char* text) : m_data(Data::Own(_com_util::ConvertStringToBSTR(text))) {}

_bstr_t::_bstr_t(const wchar_t* text) : m_data(Data::Own(AllocateUpToNul(text))) {}

_bstr_t::_bstr_t(BSTR text, bool copy) : m_data(Data::Own(copy ? CopyBstr(text) : text)) {}

_bstr_t::_bstr_t(const _variant_t& value) {
  if (value.vt == VT_BSTR) {
    *this = static_cast<const wchar_t*>(value.bstrVal);
    return;
  }
  _variant_t converted;
  converted.ChangeType(VT_BSTR, &value);
  *this = static_cast<const wchar_t*>(converted.bstrVal);
}

_bstr_t _bstr_t::operator+(const _bstr_t& other) const {
  const std::size_t leftChars = length();
  const std::size_t rightChars = other.length();
  const std::size_t chars = leftChars + rightChars;
  BSTR joined = chars > UINT32_MAX ? nullptr : SysAllocStringLen(nullptr, static_cast<UINT>(chars));
  if (joined == nullptr) _com_issue_error(E_OUTOFMEMORY);
  if (leftChars != 0) std::wmemcpy(joined, Text(), leftChars);
  if (rightChars != 0) std::wmemcpy(joined + leftChars, other.Text(), rightChars);
  return _bstr_t(joined, false);
}

BSTR _bstr_t::copy(bool copy) const { return copy ? CopyBstr(Text()) : Text(); }

void _bstr_t::Assign(BSTR text) {
  if (text == nullptr || text != Text()) m_data = Data::Own(CopyBstr(text));
}

BSTR& _bstr_t::GetBSTR() {
  if (m_data == nullptr) m_data = Data::Own(nullptr);
  return m_data->text;
}

BSTR* _bstr_t::GetAddress() {
  Attach(nullptr);
  return &m_data->text;
}

void _bstr_t::Attach(BSTR text) { m_data = Data::Own(text); }

BSTR _bstr_t::Detach() {
  if (m_data == nullptr || m_data.use_count() != 1) _com_issue_error(E_POINTER);
  BSTR text = m_data->text;
  m_data->text = nullptr;
  m_data.reset();
  return text;
}

BSTR _bstr_t::Text() const noexcept { return m_data == nullptr ? nullptr : m_data->text; }

char* _bstr_t::Narrow() const {
  if (m_data == nullptr) return nullptr;
  if (m_data->narrow == nullptr) {
    m_data->narrow.reset(_com_util::ConvertBSTRToString(m_data->text));
  }
  return m_data->narrow.get();
}

int _bstr_t::Compare(const _bstr_t& other) const noexcept {
  if (m_data == other.m_data) return 0;
  if (m_data == nullptr || other.m_data == nullptr) return m_data == nullptr ? -1 : 1;
  const BSTR left = Text();
  const BSTR right = other.Text();
  if (left == nullptr || right == nullptr) return (left != nullptr) - (right != nullptr);
  return std::wstring_view(left, length()).compare(std::wstring_view(right, other.length()));
}

_variant_t::_variant_t(const VARIANT& source) : VARIANT{} {
  _com_util::CheckError(VariantCopy(this, &source));
}

_variant_t::_variant_t(const VARIANT* source) : VARIANT{} {
  _com_util::CheckError(source == nullptr ? E_POINTER : VariantCopy(this, source));
}

_variant_t::_variant_t(VARIANT& source, bool copy) : VARIANT{} {
  if (copy) {
    _com_util::CheckError(VariantCopy(this, &source));
  } else {
    Attach(source);
  }
}

_variant_t::_variant_t(short value, VARTYPE type) : VARIANT{} {
  if (type == VT_BOOL) {
    Set(VT_BOOL, &VARIANT::boolVal, FromBool(value != 0));
  } else if (type == VT_I2) {
    Set(VT_I2, &VARIANT::iVal, value);
  } else {
    _com_issue_error(E_INVALIDARG);
  }
}

_variant_t::_variant_t(long value, VARTYPE type) : VARIANT{} {
  if (type == VT_BOOL) {
    Set(VT_BOOL, &VARIANT::boolVal, FromBool(value != 0));
  } else if (type == VT_I4 || type == VT_ERROR) {
    Set(type, &VARIANT::lVal, Saturate<LONG>(value));
  } else {
    _com_issue_error(E_INVALIDARG);
  }
}

_variant_t::_variant_t(double value, VARTYPE type) : VARIANT{} {
  if (type != VT_R8 && type != VT_DATE) _com_issue_error(E_INVALIDARG);
  Set(type, &VARIANT::dblVal, value);
}

_variant_t::_variant_t(unsigned long value) noexcept : VARIANT{} {
  Set(VT_UI4, &VARIANT::ulVal, Saturate<ULONG>(value));
}

_variant_t::_variant_t(const wchar_t* text) : VARIANT{} {
  Set(VT_BSTR, &VARIANT::bstrVal, AllocateUpToNul(text));
}

_variant_t::_variant_t(const char* text) : VARIANT{} {
  Set(VT_BSTR, &VARIANT::bstrVal, _com_util::ConvertStringToBSTR(text));
}

_variant_t::_variant_t(const _bstr_t& text) : VARIANT{} {
  Set(VT_BSTR, &VARIANT::bstrVal, text.copy());
}

_variant_t::_variant_t(IUnknown* object, bool addReference) noexcept : VARIANT{} {
  Set(VT_UNKNOWN, &VARIANT::punkVal, object);
  if (addReference && object != nullptr) object->AddRef();
}

_variant_t::_variant_t(IDispatch* object, bool addReference) noexcept : VARIANT{} {
  Set(VT_DISPATCH, &VARIANT::pdispVal, object);
  if (addReference && object != nullptr) object->AddRef();
}

_variant_t& _variant_t::operator=(const VARIANT& source) {
  _com_util::CheckError(VariantCopy(this, &source));
  return *this;
}

_variant_t& _variant_t::operator=(const VARIANT* source) {
  _com_util::CheckError(source == nullptr ? E_POINTER : VariantCopy(this, source));
  return *this;
}

_variant_t& _variant_t::operator=(_variant_t&& source) noexcept {
  if (this != &source) {
    // The old value goes with `source`: clearing it can fail, a move must not.
    std::swap(static_cast<VARIANT&>(*this), static_cast<VARIANT&>(source));
    VariantClear(&source);
  }
  return *this;
}

_variant_t& _variant_t::operator=(short value) {
  return *this = _variant_t(value, vt == VT_BOOL ? vt : VARTYPE{VT_I2});
}

_variant_t& _variant_t::operator=(long value) {
  return *this = _variant_t(value, vt == VT_BOOL || vt == VT_ERROR ? vt : VARTYPE{VT_I4});
}

_variant_t& _variant_t::operator=(double value) {
  return *this = _variant_t(value, vt == VT_DATE ? vt : VARTYPE{VT_R8});
}

_variant_t::operator IUnknown*() const {
  _variant_t converted;
  converted.ChangeType(VT_UNKNOWN, this);
  return converted.Detach().punkVal;
}

bool _variant_t::operator==(const VARIANT* other) const {
  if (other == nullptr) return false;
  if (this == other) return true;
  if (vt != other->vt) return false;
  if (V_ISARRAY(this) || V_ISBYREF(this) || vt == VT_VARIANT) _com_issue_error(E_INVALIDARG);
  if (vt == VT_R4) return fltVal == other->fltVal;
  if (vt == VT_R8 || vt == VT_DATE) return dblVal == other->dblVal;
  if (vt == VT_BSTR) {
    const UINT bytes = SysStringByteLen(bstrVal);
    return bytes == SysStringByteLen(other->bstrVal) &&
           (bytes == 0 || std::memcmp(bstrVal, other->bstrVal, bytes) == 0);
  }
  return std::memcmp(&llVal, &other->llVal, ElementBytes(vt)) == 0;
}

void _variant_t::Attach(VARIANT& source) {
  Clear();
  static_cast<VARIANT&>(*this) = source;
  source.vt = VT_EMPTY;
}

VARIANT _variant_t::Detach() {
  const VARIANT result = *this;
  vt = VT_EMPTY;
  return result;
}

VARIANT* _variant_t::GetAddress() {
  Clear();
  return this;
}

void _variant_t::ChangeType(VARTYPE type, const _variant_t* source) {
  if (source == nullptr) source = this;
  if (source == this && type == vt) return;
  _com_util::CheckError(VariantChangeType(this, source, 0, type));
}
