// Answers as text.
#ifndef CORVANE_TOOLS_MAP_OUTPUT_TEXT_H_
#define CORVANE_TOOLS_MAP_OUTPUT_TEXT_H_

#include <string>

#include "tools/map/session.h"

namespace Corvane::Tool {

// Text, and numbers in decimal; empty for what has no text form.
std::wstring TextOf(const VARIANT& value);

// "NAME<TAB>VALUE<LF>", both escaped; "" for a name without a value.
std::string FormatLine(const NamedValue& answer);

// "NAME: no value (0x80004005): why", for the error stream; no line end.
std::string FormatProblem(const NamedValue& answer);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_MAP_OUTPUT_TEXT_H_
