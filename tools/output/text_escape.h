// Text of devices and specifications made safe for a terminal and for line-oriented output.
#ifndef CORVANE_TOOLS_OUTPUT_TEXT_ESCAPE_H_
#define CORVANE_TOOLS_OUTPUT_TEXT_ESCAPE_H_

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

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_OUTPUT_TEXT_ESCAPE_H_
