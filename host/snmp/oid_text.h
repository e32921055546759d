// Object identifiers as dotted decimal text.
#ifndef CORVANE_HOST_SNMP_OID_TEXT_H_
#define CORVANE_HOST_SNMP_OID_TEXT_H_

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Corvane::Host {

using Oid = std::vector<unsigned long>;  // net-snmp's arcs

// None for what no SNMP message can carry (RFC 2578, 3.5): fewer than 2 arcs or more than 128, an
// arc above 2^32 - 1, a first pair that X.690, 8.19 cannot encode; and for any other character than
// digits and single dots between them, but for one dot in front.
std::optional<Oid> ParseOid(std::wstring_view text);

// "1.3.6.1", without a dot in front.
std::wstring FormatOid(std::span<const unsigned long> arcs);

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_SNMP_OID_TEXT_H_
