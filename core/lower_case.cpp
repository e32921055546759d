#include "core/lower_case.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace Corvane {
namespace {

// Every `step`-th code point from `first` to `last` is an upper-case letter, its lower case `delta`
// further.
struct Run {
  std::uint32_t first;
  std::uint32_t last;
  std::uint32_t step;
  std::int32_t delta;
};

constexpr Run kRuns[] = {
#include "core/lowercase_table.inc"
};

std::uint32_t LowerCodePoint(std::uint32_t code) {
  const Run* const run = std::lower_bound(
      std::begin(kRuns), std::end(kRuns), code,
      [](const Run& candidate, std::uint32_t value) { return candidate.last < value; });
  if (run == std::end(kRuns) || code < run->first || (code - run->first) % run->step != 0) {
    return code;
  }
  return static_cast<std::uint32_t>(static_cast<std::int32_t>(code) + run->delta);
}

bool IsPair(std::wstring_view text, std::size_t i) {
  return i + 1 < text.size() && (text[i] & ~0x3FF) == 0xD800 && (text[i + 1] & ~0x3FF) == 0xDC00;
}

}  // namespace

std::wstring ToLower(std::wstring_view text) {
  std::wstring lower(text);
  for (std::size_t i = 0; i < lower.size(); ++i) {
    const auto code = static_cast<std::uint32_t>(lower[i]);
    if (sizeof(wchar_t) == 2 && IsPair(lower, i)) {
      const std::uint32_t low = static_cast<std::uint32_t>(lower[i + 1]) & 0x3FF;
      const std::uint32_t mapped = LowerCodePoint(0x10000 + ((code & 0x3FF) << 10) + low) - 0x10000;
      lower[i] = static_cast<wchar_t>(0xD800 | (mapped >> 10));
      lower[++i] = static_cast<wchar_t>(0xDC00 | (mapped & 0x3FF));
    } else {
      lower[i] = static_cast<wchar_t>(LowerCodePoint(code));
    }
  }
  return lower;
}

}  // namespace Corvane
