// Values of IPP attributes for people and for programs.
#ifndef CORVANE_TOOLS_IPP_IPP_VALUES_H_
#define CORVANE_TOOLS_IPP_IPP_VALUES_H_

#include <cstdint>
#include <optional>
#include <string>

#include "ipp/wire/message.h"

namespace Corvane::Tool {

// Of a text, name, keyword or URI: valid UTF-8, not escaped. Nothing for other types.
std::optional<std::string> TextOf(const IPPMessage& answer, const IPPValue& value);
// The same of the first value; nothing for no attribute, too.
std::optional<std::string> TextOf(const IPPMessage& answer, const IPPAttribute* attribute);

// "processing" for 5 (RFC 8011, 5.3.7), and "stopped" for 5 (5.4.11); null for a number that is no
// state.
const char* JobStateName(std::int32_t state);
const char* PrinterStateName(std::int32_t state);
// "server-error-busy" for 0x0507 (RFC 8011, appendix B); empty for a success, and unknown ones.
std::string ErrorStatusName(std::int32_t status);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_IPP_IPP_VALUES_H_
