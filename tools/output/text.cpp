#include "tools/output/text.h"

#include <cstddef>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "base/utf8.h"

namespace Corvane::Tool {
namespace {

void AppendHex(std::string& out, const char* format, char32_t codePoint) {
  char escape[16];
  std::snprintf(escape, sizeof escape, format, static_cast<unsigned>(codePoint));
  out += escape;
}

void AppendEscaped(std::string& out, char32_t codePoint) {
  switch (codePoint) {
    case U'\\':
      out += "\\\\";
      return;
    case U'\t':
      out += "\\t";
      return;
    case U'\n':
      out += "\\n";
      return;
    case U'\r':
      out += "\\r";
      return;
    default:
      break;
  }
  if (!IsControl(codePoint) && !IsSurrogate(codePoint)) {
    AppendUtf8(codePoint, &out);
  } else if (codePoint < 0x80) {
    AppendHex(out, "\\x%02X", codePoint);
  } else {
    AppendHex(out, "\\u{%04X}", codePoint);
  }
}

template <typename Text>
std::string Escaped(Text text) {
  std::string out;
  for (std::size_t i = 0; i < text.size();) AppendEscaped(out, NextCodePoint(text, &i));
  return out;
}

constexpr std::uint64_t kTicksPerTenth = 1'000'000;

std::string DurationInTwoUnits(std::uint64_t larger, const char* largerUnit, std::uint64_t smaller,
                               const char* smallerUnit) {
  std::string text = std::to_string(larger) + largerUnit;
  if (smaller > 0) text += ' ' + std::to_string(smaller) + smallerUnit;
  return text;
}

}  // namespace

bool IsControl(char32_t codePoint) {
  return codePoint < 0x20 || (codePoint >= 0x7F && codePoint <= 0x9F) || codePoint == 0x061C ||
         codePoint == 0x200E || codePoint == 0x200F ||
         (codePoint >= 0x2028 && codePoint <= 0x202E) ||
         (codePoint >= 0x2066 && codePoint <= 0x2069);
}

std::string EscapeText(std::wstring_view text) { return Escaped(text); }

std::string EscapeText(std::string_view utf8) { return Escaped(utf8); }

// The library leaves DEL, C1 and directional controls as they are. They stand within strings only,
// where an escape means the same.
std::string JsonText(const nlohmann::ordered_json& json) {
  const std::string text = json.dump(2);
  std::string out;
  for (std::size_t position = 0; position < text.size();) {
    const char32_t codePoint = NextCodePoint(text, &position);
    if (codePoint >= 0x20 && IsControl(codePoint)) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(codePoint) & 0xFFFF);
      out += escape;
    } else {
      AppendUtf8(codePoint, &out);
    }
  }
  return out + '\n';
}

std::string FormatDuration(std::uint64_t ticks) {
  const std::uint64_t tenths = ticks / kTicksPerTenth;
  if (tenths < 10) return "0." + std::to_string(tenths) + " s";
  const std::uint64_t seconds = tenths / 10;
  const std::uint64_t minutes = seconds / 60;
  const std::uint64_t hours = minutes / 60;
  if (minutes == 0) return std::to_string(seconds) + " s";
  if (hours == 0) return DurationInTwoUnits(minutes, " min", seconds % 60, " s");
  if (hours < 24) return DurationInTwoUnits(hours, " h", minutes % 60, " min");
  return DurationInTwoUnits(hours / 24, " d", hours % 24, " h");
}

}  // namespace Corvane::Tool
