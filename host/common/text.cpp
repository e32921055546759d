#include "host/common/text.h"

#include <cstddef>
#include <cstdint>

namespace Corvane::Host {
namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(std::uint32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLowSurrogate(std::uint32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

std::uint32_t UnitAt(std::wstring_view text, std::size_t index) {
  const auto unit = static_cast<std::uint32_t>(text[index]);
  return sizeof(wchar_t) == 2 ? unit & 0xFFFF : unit;
}

void AppendUtf8(std::uint32_t code, std::string* out) {
  const auto append = [out](std::uint32_t byte) { out->push_back(static_cast<char>(byte)); };
  if (code < 0x80) {
    append(code);
    return;
  }
  if (code < 0x800) {
    append(0xC0 | (code >> 6));
  } else {
    if (code < 0x10000) {
      append(0xE0 | (code >> 12));
    } else {
      append(0xF0 | (code >> 18));
      append(0x80 | ((code >> 12) & 0x3F));
    }
    append(0x80 | ((code >> 6) & 0x3F));
  }
  append(0x80 | (code & 0x3F));
}

template <typename Char>
std::basic_string<Char> Lower(std::basic_string_view<Char> text) {
  std::basic_string<Char> lower(text);
  for (Char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<Char>(c - 'A' + 'a');
  }
  return lower;
}

}  // namespace

std::string ToUtf8(std::wstring_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::uint32_t code = UnitAt(text, i);
    if (sizeof(wchar_t) == 2 && IsHighSurrogate(code) && i + 1 < text.size() &&
        IsLowSurrogate(UnitAt(text, i + 1))) {
      code = 0x10000 + ((code - 0xD800) << 10) + (UnitAt(text, ++i) - 0xDC00);
    } else if (code > 0x10FFFF || IsHighSurrogate(code) || IsLowSurrogate(code)) {
      code = kReplacement;
    }
    AppendUtf8(code, &out);
  }
  return out;
}

std::optional<std::wstring> FromUtf8(std::string_view bytes) {
  std::wstring out;
  out.reserve(bytes.size());
  for (std::size_t i = 0; i < bytes.size();) {
    const auto lead = static_cast<unsigned char>(bytes[i++]);
    // A lead byte says how many follow, and the least code that needs as many.
    const bool known = lead < 0x80 || (lead >= 0xC2 && lead < 0xF5);
    if (!known) return std::nullopt;
    const std::size_t more = lead < 0x80 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    constexpr std::uint32_t kLeast[] = {0, 0x80, 0x800, 0x10000};
    if (bytes.size() - i < more) return std::nullopt;
    std::uint32_t code = more == 0 ? lead : lead & (0x3FU >> more);
    for (const std::size_t end = i + more; i < end; ++i) {
      const auto byte = static_cast<unsigned char>(bytes[i]);
      if ((byte & 0xC0) != 0x80) return std::nullopt;
      code = (code << 6) | (byte & 0x3FU);
    }
    if (code < kLeast[more] || code > 0x10FFFF || IsHighSurrogate(code) || IsLowSurrogate(code)) {
      return std::nullopt;
    }
    if (sizeof(wchar_t) == 2 && code >= 0x10000) {
      out.push_back(static_cast<wchar_t>(0xD800 + ((code - 0x10000) >> 10)));
      code = 0xDC00 + (code & 0x3FF);
    }
    out.push_back(static_cast<wchar_t>(code));
  }
  return out;
}

std::wstring Widen(std::string_view bytes) {
  std::wstring wide;
  wide.reserve(bytes.size());
  for (const char c : bytes) wide.push_back(static_cast<unsigned char>(c));
  return wide;
}

std::wstring_view OrEmpty(const wchar_t* text) { return text ? text : std::wstring_view(); }

std::wstring LowerAscii(std::wstring_view text) { return Lower(text); }
std::string LowerAscii(std::string_view text) { return Lower(text); }

bool EqualsIgnoreCase(std::wstring_view a, std::wstring_view b) {
  return LowerAscii(a) == LowerAscii(b);
}

}  // namespace Corvane::Host
