#include "base/letter_case.h"

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
#include "base/lowercase_table.inc"
};

template <typename Char>
std::basic_string<Char> LowerAsciiText(std::basic_string_view<Char> text) {
  std::basic_string<Char> lower(text);
  for (Char& c : lower) c = LowerAscii(c);
  return lower;
}

bool IsPair(std::wstring_view text, std::size_t i) {
  return i + 1 < text.size() && (text[i] & ~0x3FF) == 0xD800 && (text[i + 1] & ~0x3FF) == 0xDC00;
}

}  // namespace

std::string LowerAscii(std::string_view text) { return LowerAsciiText(text); }
std::wstring LowerAscii(std::wstring_view text) { return LowerAsciiText(text); }

char32_t ToLower(char32_t c) {
  if (c < 0x80) return LowerAscii(c);
  const Run* const run =
      std::lower_bound(std::begin(kRuns), std::end(kRuns), c,
                       [](const Run& candidate, char32_t value) { return candidate.last < value; });
  if (run == std::end(kRuns) || c < run->first || (c - run->first) % run->step != 0) return c;
  return static_cast<char32_t>(static_cast<std::int32_t>(c) + run->delta);
}

std::wstring ToLower(std::wstring_view text) {
  std::wstring lower(text);
  for (std::size_t i = 0; i < lower.size(); ++i) {
    const auto unit = static_cast<char32_t>(lower[i]);
    if (sizeof(wchar_t) == 2 && IsPair(lower, i)) {
      const char32_t low = static_cast<char32_t>(lower[i + 1]) & 0x3FF;
      const char32_t mapped = ToLower(0x10000 + ((unit & 0x3FF) << 10) + low) - 0x10000;
      lower[i] = static_cast<wchar_t>(0xD800 | (mapped >> 10));
      lower[++i] = static_cast<wchar_t>(0xDC00 | (mapped & 0x3FF));
    } else {
      lower[i] = static_cast<wchar_t>(ToLower(unit));
    }
  }
  return lower;
}

char32_t FoldCase(char32_t c) {
  // Dotted I, the title-case digraphs, the theta symbol, the capital sharp s, and the signs of Ohm,
  // Kelvin and Angstrom: the capital of their small letter, if it has one, is another.
  constexpr char32_t kShared[] = {0x130, 0x1C5,  0x1C8,  0x1CB,  0x1F2,
                                  0x3F4, 0x1E9E, 0x2126, 0x212A, 0x212B};
  if (c < 0x80) return LowerAscii(c);
  return std::binary_search(std::begin(kShared), std::end(kShared), c) ? c : ToLower(c);
}

}  // namespace Corvane
