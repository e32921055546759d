// Object identifiers as dotted decimal text, and their order.
#ifndef CORVANE_BASE_OID_H_
#define CORVANE_BASE_OID_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Corvane {

// Compared as numbers, arc by arc, the shorter one first: the order of a walk (RFC 3416, 4.2.2).
using Oid = std::vector<std::uint32_t>;

constexpr std::size_t kMaxOidArcs = 128;                      // RFC 2578, 3.5
constexpr std::size_t kMaxOidChars = kMaxOidArcs * (10 + 1);  // digits and dots, or a terminator

// One to kMaxOidArcs arcs of 0 to 2^32 - 1 between single dots; a dot may lead. None for any other
// text.
std::optional<Oid> ParseOid(std::wstring_view text);

// "1.3.6.1", without a dot in front.
std::wstring FormatOid(const Oid& oid);

// Whether a message can carry it: at least two arcs, the first two of which share one number, 40
// times the first plus the second (X.690, 8.19).
bool IsEncodable(const Oid& oid);

// `oid` is longer than `base` and begins with it.
bool IsBelow(const Oid& oid, const Oid& base);

}  // namespace Corvane

#endif  // CORVANE_BASE_OID_H_
