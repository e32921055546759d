// UTF-8, as the tool reads and writes it, and wide text, as the library does.
#ifndef CORVANE_TOOLS_OUTPUT_UTF8_H_
#define CORVANE_TOOLS_OUTPUT_UTF8_H_

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace Corvane::Tool {

constexpr char32_t kReplacementCharacter = 0xFFFD;

constexpr bool IsSurrogate(char32_t codePoint) {
  return codePoint >= 0xD800 && codePoint <= 0xDFFF;
}

// The code point at `position`, which must be inside `text`, and steps behind it. A lone surrogate
// comes as itself, a value beyond U+10FFFF as U+FFFD.
char32_t NextCodePoint(std::wstring_view text, std::size_t& position);

// A surrogate is written as U+FFFD: the result is always valid.
void AppendUtf8(std::string& utf8, char32_t codePoint);

std::string Utf8FromWide(std::wstring_view wide);
// Every byte that belongs to no valid sequence (RFC 3629) becomes U+FFFD.
std::wstring WideFromUtf8(std::string_view utf8);

// `utf8` as given on the command line; where paths are bytes, they stay as they are.
std::filesystem::path PathFromUtf8(std::string_view utf8);
std::wstring WideFromPath(const std::filesystem::path& path);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_OUTPUT_UTF8_H_
