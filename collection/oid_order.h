// Object identifiers in dotted decimal, and their order.
#ifndef CORVANE_COLLECTION_OID_ORDER_H_
#define CORVANE_COLLECTION_OID_ORDER_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace Corvane {

// Compared as numbers, arc by arc, the shorter one first: the order of a walk (RFC 3416, 4.2.2).
using Oid = std::vector<std::uint32_t>;

constexpr std::size_t kMaxOidArcs = 128;                      // RFC 2578, 3.5
constexpr std::size_t kMaxOidChars = kMaxOidArcs * (10 + 1);  // digits and dots, or a terminator

// Arcs of 0 to 2^32-1 between single dots; a dot may lead. Nothing for any other text.
std::optional<Oid> ParseOid(std::wstring_view text);

// `oid` is longer than `base` and begins with it.
bool IsBelow(const Oid& oid, const Oid& base);

}  // namespace Corvane

#endif  // CORVANE_COLLECTION_OID_ORDER_H_
