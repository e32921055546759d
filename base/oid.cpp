#include "base/oid.h"

#include <algorithm>
#include <limits>

#include "base/decimal.h"

namespace Corvane {
namespace {

constexpr std::uint32_t kMaxArc = std::numeric_limits<std::uint32_t>::max();

}  // namespace

std::optional<Oid> ParseOid(std::wstring_view text) {
  if (text.starts_with(L'.')) text.remove_prefix(1);
  Oid oid;
  for (;;) {
    const std::size_t dot = text.find(L'.');
    const std::optional<std::uint64_t> arc = ParseDigits(text.substr(0, dot), kMaxArc);
    if (!arc || oid.size() == kMaxOidArcs) return std::nullopt;
    oid.push_back(static_cast<std::uint32_t>(*arc));
    if (dot == std::wstring_view::npos) return oid;
    text.remove_prefix(dot + 1);
  }
}

std::wstring FormatOid(const Oid& oid) {
  std::wstring text;
  for (const std::uint32_t arc : oid) {
    if (!text.empty()) text += L'.';
    text += FormatDecimal(arc);
  }
  return text;
}

bool IsEncodable(const Oid& oid) {
  if (oid.size() < 2) return false;
  return oid[0] < 2 ? oid[1] < 40 : oid[0] == 2 && oid[1] <= kMaxArc - 80;
}

bool IsBelow(const Oid& oid, const Oid& base) {
  return oid.size() > base.size() && std::equal(base.begin(), base.end(), oid.begin());
}

}  // namespace Corvane
