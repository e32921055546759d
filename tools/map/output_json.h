// Answers as JSON (RFC 8259).
#ifndef CORVANE_TOOLS_MAP_OUTPUT_JSON_H_
#define CORVANE_TOOLS_MAP_OUTPUT_JSON_H_

#include <string>
#include <vector>

#include "tools/map/session.h"

namespace Corvane::Tool {

// One object with the names as members in their order, a name given twice once; null without a
// value. Integers are numbers, all else is text. Valid UTF-8 whatever the device sent, indented,
// with a line end; no control character stands in it unescaped.
std::string FormatJson(const std::vector<NamedValue>& answers);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_MAP_OUTPUT_JSON_H_
