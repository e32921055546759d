#include "tools/output/json_text.h"

#include <cstddef>
#include <cstdio>

#include "base/utf8.h"
#include "tools/output/text_escape.h"

namespace Corvane::Tool {

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

}  // namespace Corvane::Tool
