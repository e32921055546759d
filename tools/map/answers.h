// Answers as text for people, and as JSON (RFC 8259) for programs.
#ifndef CORVANE_TOOLS_MAP_ANSWERS_H_
#define CORVANE_TOOLS_MAP_ANSWERS_H_

#include <string>
#include <vector>

#include "tools/map/session.h"

namespace Corvane::Tool {

// Text, and numbers in decimal; empty for what has no text form.
std::wstring TextOf(const VARIANT& value);

// "NAME<TAB>VALUE<LF>", both escaped; "" for a name without a value.
std::string FormatLine(const NamedValue& answer);

// "NAME: no value (0x80004005): why", for the error stream; no line end.
std::string FormatProblem(const NamedValue& answer);

// One object with the names as members in their order, a name given twice once; null without a
// value. Integers are numbers, all else is text. Valid UTF-8 whatever the device sent, indented,
// with a line end; no control character stands in it unescaped.
std::string FormatJson(const std::vector<NamedValue>& answers);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_MAP_ANSWERS_H_
