#include "base/utf8.h"

#include <cstdint>
#include <cstring>
#include <type_traits>

namespace Corvane {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kLastCodePoint = 0x10FFFF;
constexpr char32_t kIllFormed = 0xFFFFFFFF;
constexpr bool kIsUtf16 = sizeof(wchar_t) == 2;

// ASCII runs are checked and copied a block at a time, in loops that the compiler vectorises.
constexpr std::ptrdiff_t kBlock = 16;

bool IsAsciiBlock(const char* text) {
  std::uint64_t words[kBlock / sizeof(std::uint64_t)];
  std::memcpy(words, text, sizeof(words));
  return ((words[0] | words[1]) & 0x8080808080808080u) == 0;
}

bool IsAsciiBlock(const wchar_t* text) {
  std::uint32_t all = 0;
  for (std::ptrdiff_t i = 0; i < kBlock; ++i) all |= static_cast<std::uint32_t>(text[i]);
  return all < 0x80;
}

// The character of a lead byte and what follows it, kIllFormed for what is none. *next is behind
// the lead byte, and steps behind what belongs to it.
char32_t TakeMultiByte(unsigned lead, const char** next, const char* end, bool keepSurrogates) {
  const auto takeMore = [&](char32_t* value) {
    if (*next == end || (**next & 0xC0) != 0x80) return false;
    *value = *value << 6 | (*(*next)++ & 0x3F);
    return true;
  };
  char32_t value = lead;
  if (lead < 0xC2 || lead > 0xF4 || !takeMore(&value)) return kIllFormed;
  if (lead < 0xE0) return value & 0x7FF;
  // RFC 3629, section 4: no overlong forms, no surrogates, nothing above U+10FFFF.
  if (lead < 0xF0) {
    value &= 0x3FF;
    if (value < 0x20 || (value >= 0x360 && value <= 0x37F && !keepSurrogates)) return kIllFormed;
    return takeMore(&value) ? value : kIllFormed;
  }
  value &= 0x1FF;
  if (value < 0x10 || value > 0x10F) return kIllFormed;
  return takeMore(&value) && takeMore(&value) ? value : kIllFormed;
}

// The character at `*next`, behind which it steps; kIllFormed for what is none.
char32_t TakeCharacter(const char** next, const char* end, bool keepSurrogates) {
  const auto byte = static_cast<unsigned char>(*(*next)++);
  return byte < 0x80 ? byte : TakeMultiByte(byte, next, end, keepSurrogates);
}

char32_t TakeCharacter(const wchar_t** next, const wchar_t* end, bool keepSurrogates) {
  const auto unit = static_cast<std::make_unsigned_t<wchar_t>>(*(*next)++);
  if (!IsSurrogate(unit)) return unit <= kLastCodePoint ? unit : kIllFormed;
  if (kIsUtf16 && unit < 0xDC00 && *next != end && (**next & 0xFC00) == 0xDC00) {
    const auto low = static_cast<char32_t>(*(*next)++ & 0x3FF);
    return 0x10000 + ((unit & 0x3FFu) << 10) + low;
  }
  return keepSurrogates ? unit : kIllFormed;
}

// False without room, and then nothing is written.
bool PutCharacter(char32_t c, wchar_t** next, const wchar_t* end) {
  const bool isPair = kIsUtf16 && c > 0xFFFF;
  if (end - *next < (isPair ? 2 : 1)) return false;
  if (isPair) {
    *(*next)++ = static_cast<wchar_t>(0xD7C0 + (c >> 10));
    c = 0xDC00 | (c & 0x3FF);
  }
  *(*next)++ = static_cast<wchar_t>(c);
  return true;
}

bool PutCharacter(char32_t c, char** next, const char* end) {
  const std::ptrdiff_t bytes = c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
  if (end - *next < bytes) return false;
  constexpr unsigned kLead[] = {0, 0, 0xC0, 0xE0, 0xF0};
  for (std::ptrdiff_t i = bytes - 1; i > 0; --i, c >>= 6) {
    (*next)[i] = static_cast<char>(0x80 | (c & 0x3F));
  }
  **next = static_cast<char>(kLead[bytes] | c);
  *next += bytes;
  return true;
}

template <typename From, typename To>
Conversion ConvertText(std::basic_string_view<From> text, Malformed policy, std::span<To> out) {
  const From* next = text.data();
  const From* const end = next + text.size();
  To* to = out.data();
  const To* const toEnd = to + out.size();
  const auto done = [&](bool malformed) {
    return Conversion{static_cast<std::size_t>(next - text.data()),
                      static_cast<std::size_t>(to - out.data()), malformed};
  };
  while (next != end) {
    if (end - next >= kBlock && toEnd - to >= kBlock && IsAsciiBlock(next)) {
      for (std::ptrdiff_t i = 0; i < kBlock; ++i) to[i] = static_cast<To>(next[i]);
      next += kBlock;
      to += kBlock;
      continue;
    }
    // One by one up to the next block, so that text of other scripts is not tested for ASCII at
    // every character.
    const From* const stop = end - next < kBlock ? end : next + kBlock;
    while (next < stop) {
      const auto unit = static_cast<std::make_unsigned_t<From>>(*next);
      if (unit < 0x80 && to != toEnd) {
        *to++ = static_cast<To>(unit);
        ++next;
        continue;
      }
      const From* behind = next;
      char32_t c = TakeCharacter(&behind, end, policy == Malformed::kKeep);
      if (c == kIllFormed) {
        if (policy == Malformed::kRefuse) return done(true);
        c = kReplacement;
      }
      if (!PutCharacter(c, &to, toEnd)) return done(false);
      next = behind;
    }
  }
  return done(false);
}

template <typename To, typename From>
Conversion MeasureText(std::basic_string_view<From> text, Malformed policy) {
  To piece[256];
  Conversion total{0, 0, false};
  while (total.read < text.size() && !total.malformed) {
    const Conversion done = ConvertText(text.substr(total.read), policy, std::span<To>(piece));
    total = {total.read + done.read, total.written + done.written, done.malformed};
  }
  return total;
}

template <typename To, typename From>
std::optional<std::basic_string<To>> ConvertWhole(std::basic_string_view<From> text,
                                                  Malformed policy) {
  std::optional<std::basic_string<To>> out(std::in_place, text.size(), To());
  Conversion done = ConvertText(text, policy, std::span(*out));
  if (done.read < text.size() && !done.malformed) {
    const std::basic_string_view<From> rest = text.substr(done.read);
    out->resize(done.written + MeasureText<To>(rest, policy).written);
    const Conversion more = ConvertText(rest, policy, std::span(*out).subspan(done.written));
    done = {text.size(), done.written + more.written, more.malformed};
  }
  out->resize(done.written);
  if (done.malformed) out.reset();
  return out;
}

}  // namespace

Conversion Convert(std::string_view utf8, Malformed policy, std::span<wchar_t> out) {
  return ConvertText(utf8, policy, out);
}

Conversion Convert(std::wstring_view wide, Malformed policy, std::span<char> out) {
  return ConvertText(wide, policy, out);
}

Conversion Measure(std::string_view utf8, Malformed policy) {
  return MeasureText<wchar_t>(utf8, policy);
}

Conversion Measure(std::wstring_view wide, Malformed policy) {
  return MeasureText<char>(wide, policy);
}

std::wstring ToWide(std::string_view utf8) {
  return *ConvertWhole<wchar_t>(utf8, Malformed::kReplace);
}

std::string ToUtf8(std::wstring_view wide) {
  return *ConvertWhole<char>(wide, Malformed::kReplace);
}

std::optional<std::wstring> ToWideStrictly(std::string_view utf8) {
  return ConvertWhole<wchar_t>(utf8, Malformed::kRefuse);
}

std::optional<std::string> ToUtf8Strictly(std::wstring_view wide) {
  return ConvertWhole<char>(wide, Malformed::kRefuse);
}

char32_t NextCodePoint(std::string_view utf8, std::size_t* position) {
  const char* next = utf8.data() + *position;
  const char32_t c = TakeCharacter(&next, utf8.data() + utf8.size(), false);
  *position = static_cast<std::size_t>(next - utf8.data());
  return c == kIllFormed ? kReplacement : c;
}

char32_t NextCodePoint(std::wstring_view wide, std::size_t* position) {
  const wchar_t* next = wide.data() + *position;
  const char32_t c = TakeCharacter(&next, wide.data() + wide.size(), true);
  *position = static_cast<std::size_t>(next - wide.data());
  return c == kIllFormed ? kReplacement : c;
}

void AppendUtf8(char32_t c, std::string* utf8) {
  char bytes[4];
  char* end = bytes;
  PutCharacter(c, &end, bytes + sizeof(bytes));
  utf8->append(bytes, end);
}

std::wstring WideFromLatin1(std::string_view bytes) {
  std::wstring wide;
  wide.reserve(bytes.size());
  for (const char c : bytes) wide.push_back(static_cast<unsigned char>(c));
  return wide;
}

}  // namespace Corvane
