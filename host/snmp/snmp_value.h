// Values of an SNMP message and of a VARIANT.
#ifndef CORVANE_HOST_SNMP_SNMP_VALUE_H_
#define CORVANE_HOST_SNMP_SNMP_VALUE_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "corvane/platform.h"

struct variable_list;

namespace Corvane::Host {

// What came for one OID: a number or a text, or why neither did.
struct SnmpDatum {
  HRESULT result = S_FALSE;  // S_FALSE: nothing came yet
  std::variant<std::int32_t, std::wstring> value;
};

// The value of a variable that an agent sent:
//   INTEGER, Counter32, Gauge32, TimeTicks, Counter64, other integers as Opaque
//                                        number; beyond 32 bits with sign, its decimal text
//   float, double (as Opaque)            the shortest text that reads back as the same number
//   IpAddress, OBJECT IDENTIFIER         "192.0.2.7", "1.3.6.1"
//   OCTET STRING, BIT STRING, Opaque     OctetsToText
// kSnmpNoSuchObject, kSnmpNoSuchInstance or kSnmpEndOfMibView for an exception (RFC 3416, 3); the
// failure of kErrorInvalidResponse for a type that has no value.
SnmpDatum DatumOf(const variable_list& variable);

// Text when the octets, but for NULs at their end, are UTF-8 without control characters other than
// tab, CR and LF; or Latin-1 of that kind with at least three ASCII characters in four and a letter
// among them. All other octets in pairs of hexadecimal digits, "00:1B:2C".
std::wstring OctetsToText(std::string_view octets);

// Puts it into the variant as VT_I4 or VT_BSTR, clearing what that held. E_OUTOFMEMORY leaves the
// variant as it was.
HRESULT StoreDatum(const SnmpDatum& datum, VARIANT* value);

// What a set sends.
struct SnmpSetting {
  unsigned char type = 0;  // ASN_INTEGER, ASN_UNSIGNED or ASN_OCTET_STR
  long number = 0;
  std::string octets;
};

// Integers of up to 32 bits become INTEGER, but VT_UI4 and VT_UINT Unsigned32; VT_BSTR the octets
// of its UTF-8, an array of VT_UI1 its own. DISP_E_TYPEMISMATCH for any other type.
HRESULT SettingFrom(const VARIANT& value, SnmpSetting* setting);

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_SNMP_SNMP_VALUE_H_
