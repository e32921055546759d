#include "host/snmp/snmp_value.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <optional>
#include <span>
#include <utility>

#include "base/oid.h"
#include "base/utf8.h"
#include "corvane/error_codes.h"
#include "host/snmp/netsnmp.h"

namespace Corvane::Host {
namespace {

constexpr std::size_t kAddressOctets = 4;

bool IsControl(wchar_t c) {
  if (c == L'\t' || c == L'\r' || c == L'\n') return false;
  return c < 0x20 || (c >= 0x7F && c < 0xA0);
}

bool IsReadableOctets(std::wstring_view text) {
  return std::none_of(text.begin(), text.end(), IsControl);
}

bool LooksLikeLatin1(std::string_view octets) {
  const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
  const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
  const auto ascii = static_cast<std::size_t>(std::count_if(octets.begin(), octets.end(), isAscii));
  return ascii >= octets.size() - octets.size() / 4 &&
         std::any_of(octets.begin(), octets.end(), isLetter) &&
         IsReadableOctets(WideFromLatin1(octets));
}

std::wstring Hexadecimal(std::string_view octets) {
  constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
  std::wstring text;
  for (const char c : octets) {
    const auto octet = static_cast<unsigned char>(c);
    if (!text.empty()) text += L':';
    text += {kDigits[octet >> 4], kDigits[octet & 0xF]};
  }
  return text;
}

std::wstring IpAddressText(std::string_view octets) {
  if (octets.size() != kAddressOctets) return Hexadecimal(octets);
  std::wstring text;
  for (const char c : octets) {
    if (!text.empty()) text += L'.';
    text += std::to_wstring(static_cast<unsigned char>(c));
  }
  return text;
}

template <typename Real>
std::wstring RealText(Real number) {
  char text[64];
  const std::to_chars_result end = std::to_chars(text, text + sizeof(text), number);
  return WideFromLatin1({text, static_cast<std::size_t>(end.ptr - text)});
}

template <typename Integer>
SnmpDatum NumberOrText(Integer number) {
  if (!std::in_range<std::int32_t>(number)) return {S_OK, std::to_wstring(number)};
  return {S_OK, static_cast<std::int32_t>(number)};
}

std::uint64_t JoinedSubidentifiers(const counter64& halves) {
  return (std::uint64_t{halves.high} << 32) | (halves.low & 0xFFFFFFFFU);
}

}  // namespace

std::wstring OctetsToText(std::string_view octets) {
  const std::string_view text = octets.substr(0, octets.find_last_not_of('\0') + 1);
  const std::optional<std::wstring> wide = ToWideStrictly(text);
  if (wide && IsReadableOctets(*wide)) return *wide;
  return !wide && LooksLikeLatin1(text) ? WideFromLatin1(text) : Hexadecimal(octets);
}

SnmpDatum DatumOf(const variable_list& variable) {
  const std::string_view octets(reinterpret_cast<const char*>(variable.val.string),
                                variable.val.string ? variable.val_len : 0);
  switch (variable.type) {
    case SNMP_NOSUCHOBJECT:
      return {kSnmpNoSuchObject, {}};
    case SNMP_NOSUCHINSTANCE:
      return {kSnmpNoSuchInstance, {}};
    case SNMP_ENDOFMIBVIEW:
      return {kSnmpEndOfMibView, {}};
    case ASN_OCTET_STR:
    case ASN_BIT_STR:
    case ASN_OPAQUE:
      return {S_OK, OctetsToText(octets)};
    case ASN_IPADDRESS:
      return {S_OK, IpAddressText(octets)};
    default:
      break;
  }
  // The other types are arrays or single values of a fixed size.
  if (octets.empty()) return {ResultFromError(kErrorInvalidResponse), {}};
  switch (variable.type) {
    case ASN_INTEGER:
      return NumberOrText(*variable.val.integer);
    case ASN_COUNTER:
    case ASN_GAUGE:
    case ASN_TIMETICKS:
    case ASN_UINTEGER:
      return NumberOrText(*variable.val.integer & 0xFFFFFFFFL);
    case ASN_COUNTER64:
    case ASN_OPAQUE_COUNTER64:
    case ASN_OPAQUE_U64:
      return NumberOrText(JoinedSubidentifiers(*variable.val.counter64));
    case ASN_OPAQUE_I64:
      return NumberOrText(static_cast<std::int64_t>(JoinedSubidentifiers(*variable.val.counter64)));
    case ASN_OBJECT_ID:
      return {S_OK,
              FormatOid({variable.val.objid, variable.val.objid + variable.val_len / sizeof(oid)})};
    case ASN_OPAQUE_FLOAT:
      return {S_OK, RealText(*variable.val.floatVal)};
    case ASN_OPAQUE_DOUBLE:
      return {S_OK, RealText(*variable.val.doubleVal)};
    default:
      return {ResultFromError(kErrorInvalidResponse), {}};
  }
}

HRESULT StoreDatum(const SnmpDatum& datum, VARIANT* value) {
  VARIANT stored;
  VariantInit(&stored);
  if (const auto* const number = std::get_if<std::int32_t>(&datum.value)) {
    stored.vt = VT_I4;
    stored.lVal = *number;
  } else {
    const std::wstring& text = std::get<std::wstring>(datum.value);
    stored.bstrVal = SysAllocStringLen(text.c_str(), static_cast<UINT>(text.size()));
    if (!stored.bstrVal) return E_OUTOFMEMORY;
    stored.vt = VT_BSTR;
  }
  VariantClear(value);
  *value = stored;
  return S_OK;
}

HRESULT SettingFrom(const VARIANT& value, SnmpSetting* setting) {
  const auto number = [setting](unsigned char type, long content) {
    setting->type = type;
    setting->number = content;
    return S_OK;
  };
  switch (value.vt) {
    case VT_I1:
      return number(ASN_INTEGER, value.cVal);
    case VT_UI1:
      return number(ASN_INTEGER, value.bVal);
    case VT_I2:
      return number(ASN_INTEGER, value.iVal);
    case VT_UI2:
      return number(ASN_INTEGER, value.uiVal);
    case VT_I4:
      return number(ASN_INTEGER, value.lVal);
    case VT_INT:
      return number(ASN_INTEGER, value.intVal);
    case VT_UI4:
      return number(ASN_UNSIGNED, value.ulVal);
    case VT_UINT:
      return number(ASN_UNSIGNED, value.uintVal);
    case VT_BSTR:
      setting->type = ASN_OCTET_STR;
      setting->octets = ToUtf8({value.bstrVal ? value.bstrVal : L"", SysStringLen(value.bstrVal)});
      return S_OK;
    case VT_ARRAY | VT_UI1: {
      void* octets = nullptr;
      if (!value.parray || FAILED(SafeArrayAccessData(value.parray, &octets))) return E_INVALIDARG;
      setting->type = ASN_OCTET_STR;
      setting->octets.assign(static_cast<const char*>(octets),
                             value.parray->rgsabound[0].cElements);
      return SafeArrayUnaccessData(value.parray);
    }
    default:
      return DISP_E_TYPEMISMATCH;
  }
}

}  // namespace Corvane::Host
