// Compiles XSL patterns.
#ifndef CORVANE_PLATFORM_LINUX_DOM_PATTERN_PATTERN_PARSER_H_
#define CORVANE_PLATFORM_LINUX_DOM_PATTERN_PATTERN_PARSER_H_

#include <memory>
#include <string_view>

#include "platform/linux/dom/pattern/pattern.h"
#include "platform/linux/dom/tree/name_table.h"

namespace Corvane::Dom {

// `pattern` is UTF-8. Null when it does not parse, uses what the language does not have (XPath's
// axes, functions and arithmetic), is nested deeper than kMaxPatternDepth, or is no set of nodes.
std::unique_ptr<Expression> CompilePattern(std::string_view pattern, const NameTable& names);

}  // namespace Corvane::Dom

#endif  // CORVANE_PLATFORM_LINUX_DOM_PATTERN_PATTERN_PARSER_H_
