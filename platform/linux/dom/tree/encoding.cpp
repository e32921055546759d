#include "platform/linux/dom/tree/encoding.h"

#include <new>

namespace Corvane::Dom {
namespace {

constexpr std::size_t kBlockChars =
    16;  // checked together for ASCII, which compilers turn into vector code

bool IsScalarValue(char32_t c) { return c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF); }

std::size_t AppendUtf8(char32_t c, char* out) {
  const auto tail = [](char32_t bits) { return static_cast<char>(0x80 | (bits & 0x3F)); };
  if (c < 0x80) {
    out[0] = static_cast<char>(c);
    return 1;
  }
  if (c < 0x800) {
    out[0] = static_cast<char>(0xC0 | c >> 6);
    out[1] = tail(c);
    return 2;
  }
  if (c < 0x10000) {
    out[0] = static_cast<char>(0xE0 | c >> 12);
    out[1] = tail(c >> 6);
    out[2] = tail(c);
    return 3;
  }
  out[0] = static_cast<char>(0xF0 | c >> 18);
  out[1] = tail(c >> 12);
  out[2] = tail(c >> 6);
  out[3] = tail(c);
  return 4;
}

// Copies the ASCII characters at the start of `text` and returns their number.
std::size_t CopyAscii(std::wstring_view text, char* out) {
  std::size_t done = 0;
  for (; done + kBlockChars <= text.size(); done += kBlockChars) {
    const wchar_t* block = text.data() + done;
    std::uint32_t seen = 0;
    for (std::size_t i = 0; i < kBlockChars; ++i) seen |= static_cast<std::uint32_t>(block[i]);
    if (seen >= 0x80) break;
    for (std::size_t i = 0; i < kBlockChars; ++i) out[done + i] = static_cast<char>(block[i]);
  }
  for (; done < text.size() && static_cast<std::uint32_t>(text[done]) < 0x80; ++done) {
    out[done] = static_cast<char>(text[done]);
  }
  return done;
}

std::size_t CopyAscii(std::string_view utf8, wchar_t* out) {
  std::size_t done = 0;
  for (; done + kBlockChars <= utf8.size(); done += kBlockChars) {
    const char* block = utf8.data() + done;
    unsigned seen = 0;
    for (std::size_t i = 0; i < kBlockChars; ++i) seen |= static_cast<unsigned char>(block[i]);
    if (seen >= 0x80) break;
    for (std::size_t i = 0; i < kBlockChars; ++i) out[done + i] = static_cast<wchar_t>(block[i]);
  }
  for (; done < utf8.size() && static_cast<unsigned char>(utf8[done]) < 0x80; ++done) {
    out[done] = static_cast<wchar_t>(utf8[done]);
  }
  return done;
}

char32_t ToLower(char32_t c) {
  if (c < 0x80) return c >= 'A' && c <= 'Z' ? c + 32 : c;
  if (c >= 0xC0 && c <= 0xDE) return c == 0xD7 ? c : c + 32;
  if (c == 0x178) return 0xFF;
  const bool evenUpper = (c >= 0x100 && c <= 0x137 && c != 0x130 && c != 0x131) ||
                         (c >= 0x14A && c <= 0x177) || (c >= 0x460 && c <= 0x481) ||
                         (c >= 0x48A && c <= 0x4BF) || (c >= 0x4D0 && c <= 0x52F) ||
                         (c >= 0x1E00 && c <= 0x1E95) || (c >= 0x1EA0 && c <= 0x1EFF);
  if (evenUpper) return c | 1;
  const bool oddUpper =
      (c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E) || (c >= 0x4C1 && c <= 0x4CE);
  if (oddUpper) return (c & 1) != 0 ? c + 1 : c;
  if (c >= 0x391 && c <= 0x3AB) return c == 0x3A2 ? c : c + 32;
  if (c == 0x386) return 0x3AC;
  if (c >= 0x388 && c <= 0x38A) return c + 37;
  if (c == 0x38C) return 0x3CC;
  if (c == 0x38E || c == 0x38F) return c + 63;
  if (c >= 0x400 && c <= 0x40F) return c + 80;
  if (c >= 0x410 && c <= 0x42F) return c + 32;
  if (c >= 0x531 && c <= 0x556) return c + 48;
  return c;
}

}  // namespace

bool WideToUtf8(std::wstring_view text, std::size_t maxBytes, std::string* utf8) {
  utf8->clear();
  if (text.size() > maxBytes) return false;
  utf8->resize(text.size());
  const std::size_t ascii = CopyAscii(text, utf8->data());
  if (ascii == text.size()) return true;

  std::size_t bytes = ascii;
  for (const wchar_t wide : text.substr(ascii)) {
    const auto c = static_cast<char32_t>(wide);
    if (!IsScalarValue(c)) return false;
    bytes += c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
  }
  if (bytes > maxBytes) return false;
  utf8->resize(bytes);
  char* out = utf8->data() + ascii;
  for (const wchar_t wide : text.substr(ascii)) out += AppendUtf8(static_cast<char32_t>(wide), out);
  return true;
}

char32_t DecodeUtf8(std::string_view utf8, std::size_t* length) {
  const auto lead = static_cast<unsigned char>(utf8[0]);
  if (lead < 0x80) {
    *length = 1;
    return lead;
  }
  *length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  char32_t c = lead & (0xFFu >> (*length + 1));
  for (std::size_t i = 1; i < *length; ++i)
    c = c << 6 | (static_cast<unsigned char>(utf8[i]) & 0x3F);
  return c;
}

BSTR Utf8ToBstr(std::string_view utf8) {
  std::size_t chars = 0;
  for (const char byte : utf8) chars += (byte & 0xC0) != 0x80 ? 1 : 0;
  BSTR text = SysAllocStringLen(nullptr, static_cast<UINT>(chars));
  if (text == nullptr) throw std::bad_alloc();
  const std::size_t ascii = CopyAscii(utf8, text);
  utf8.remove_prefix(ascii);
  for (wchar_t* out = text + ascii; !utf8.empty(); ++out) {
    std::size_t length;
    *out = static_cast<wchar_t>(DecodeUtf8(utf8, &length));
    utf8.remove_prefix(length);
  }
  return text;
}

void AppendLowerCase(std::string_view utf8, std::string* out) {
  while (!utf8.empty()) {
    std::size_t length;
    const char32_t lower = ToLower(DecodeUtf8(utf8, &length));
    utf8.remove_prefix(length);
    char bytes[4];
    out->append(bytes, AppendUtf8(lower, bytes));
  }
}

char32_t Windows1252(unsigned char byte) {
  static constexpr char16_t kC1[32] = {
      0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
      0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
      0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178,
  };
  return byte >= 0x80 && byte < 0xA0 ? kC1[byte - 0x80] : byte;
}

}  // namespace Corvane::Dom
