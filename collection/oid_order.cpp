#include "collection/oid_order.h"

#include <algorithm>
#include <limits>

namespace Corvane {

std::optional<Oid> ParseOid(std::wstring_view text) {
  if (!text.empty() && text.front() == L'.') text.remove_prefix(1);
  Oid oid;
  bool atArc = true;
  for (const wchar_t c : text) {
    if (c == L'.' && !atArc) {
      atArc = true;
      continue;
    }
    if (c < L'0' || c > L'9') return std::nullopt;
    if (atArc) {
      if (oid.size() == kMaxOidArcs) return std::nullopt;
      oid.push_back(0);
      atArc = false;
    }
    const std::uint64_t arc = std::uint64_t{oid.back()} * 10 + static_cast<unsigned>(c - L'0');
    if (arc > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
    oid.back() = static_cast<std::uint32_t>(arc);
  }
  if (atArc) return std::nullopt;
  return oid;
}

bool IsBelow(const Oid& oid, const Oid& base) {
  return oid.size() > base.size() && std::equal(base.begin(), base.end(), oid.begin());
}

}  // namespace Corvane
