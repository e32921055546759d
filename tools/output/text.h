// Text as the tool writes it: safe for terminals and for line-oriented output, as JSON, and spans
// of time for people.
#ifndef CORVANE_TOOLS_OUTPUT_TEXT_H_
#define CORVANE_TOOLS_OUTPUT_TEXT_H_

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace Corvane::Tool {

// Characters that drive a terminal, reorder what it shows, or end a line: C0, DEL, C1, the
// directional controls of Unicode's bidirectional algorithm, and its line and paragraph separators.
bool IsControl(char32_t codePoint);

// UTF-8 in one line. Controls are written \t \n \r, \xNN below U+0080 and \u{NNNN} above; so are
// lone surrogates; a backslash is doubled. The original can be told from the result.
std::string EscapeText(std::wstring_view text);
std::string EscapeText(std::string_view utf8);

// RFC 8259, indented, with a line end; no control character stands in it unescaped. Strings must be
// UTF-8.
std::string JsonText(const nlohmann::ordered_json& json);

// Of ticks of 100 ns, cut to two units: "0.4 s", "20 s", "3 min 20 s", "2 h 5 min", "41 d 7 h".
std::string FormatDuration(std::uint64_t ticks);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_OUTPUT_TEXT_H_
