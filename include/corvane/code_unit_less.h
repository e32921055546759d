// The order of all name-keyed tables: by UTF-16 code unit, case-sensitive, on both targets.
#ifndef CORVANE_CODE_UNIT_LESS_H_
#define CORVANE_CODE_UNIT_LESS_H_

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace Corvane {

// Where wchar_t holds whole code points, those beyond U+FFFF (written with surrogates in UTF-16)
// sort before U+E000..U+FFFF. Transparent: a look-up by text makes no string.
struct CodeUnitLess {
  using is_transparent = void;

  bool operator()(std::wstring_view a, std::wstring_view b) const noexcept {
    const std::size_t common = std::min(a.size(), b.size());
    std::size_t i = 0;
    // Names of one map often begin alike: whole blocks are skipped with two machine words.
    while (common - i >= kBlock && std::memcmp(&a[i], &b[i], kBlock * sizeof(wchar_t)) == 0) {
      i += kBlock;
    }
    while (i < common && a[i] == b[i]) ++i;
    return i < common ? Rank(a[i]) < Rank(b[i]) : a.size() < b.size();
  }

 private:
  static constexpr std::size_t kBlock = 16 / sizeof(wchar_t);

  static constexpr unsigned long Rank(wchar_t c) noexcept {
    const auto value = static_cast<unsigned long>(c);
    if constexpr (sizeof(wchar_t) == 2) return value;
    return value >= 0xE000 && value <= 0xFFFF ? value + 0x110000 : value;
  }
};

}  // namespace Corvane

#endif  // CORVANE_CODE_UNIT_LESS_H_
