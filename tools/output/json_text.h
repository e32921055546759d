// JSON (RFC 8259) as the tool writes it.
#ifndef CORVANE_TOOLS_OUTPUT_JSON_TEXT_H_
#define CORVANE_TOOLS_OUTPUT_JSON_TEXT_H_

#include <nlohmann/json.hpp>
#include <string>

namespace Corvane::Tool {

// Indented, with a line end; no control character stands in it unescaped. Strings must be UTF-8.
std::string JsonText(const nlohmann::ordered_json& json);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_OUTPUT_JSON_TEXT_H_
