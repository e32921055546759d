#include "host/snmp/oid_text.h"

#include <cstddef>
#include <cstdint>
#include <limits>

namespace Corvane::Host {
namespace {

constexpr std::size_t kMinArcs = 2;
constexpr std::size_t kMaxArcs = 128;
constexpr unsigned long kMaxArc = std::numeric_limits<std::uint32_t>::max();

// The first two arcs share one number on the wire, 40 times the first plus the second.
bool HasEncodableStart(const Oid& oid) {
  return oid[0] < 2 ? oid[1] < 40 : oid[0] == 2 && oid[1] <= kMaxArc - 80;
}

}  // namespace

std::optional<Oid> ParseOid(std::wstring_view text) {
  if (!text.empty() && text[0] == L'.') text.remove_prefix(1);
  Oid oid;
  bool inArc = false;
  for (const wchar_t c : text) {
    if (c == L'.' && inArc) {
      inArc = false;
      continue;
    }
    if (c < L'0' || c > L'9') return std::nullopt;
    if (!inArc) {
      if (oid.size() == kMaxArcs) return std::nullopt;
      oid.push_back(0);
      inArc = true;
    }
    oid.back() = oid.back() * 10 + static_cast<unsigned long>(c - L'0');
    if (oid.back() > kMaxArc) return std::nullopt;
  }
  if (!inArc || oid.size() < kMinArcs || !HasEncodableStart(oid)) return std::nullopt;
  return oid;
}

std::wstring FormatOid(std::span<const unsigned long> arcs) {
  std::wstring text;
  for (const unsigned long arc : arcs) {
    if (!text.empty()) text += L'.';
    text += std::to_wstring(arc);
  }
  return text;
}

}  // namespace Corvane::Host
