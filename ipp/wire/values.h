// What the values of an IPP message say.
#ifndef CORVANE_IPP_WIRE_VALUES_H_
#define CORVANE_IPP_WIRE_VALUES_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ipp/wire/message.h"

namespace Corvane {

// What begins and ends a collection, and an octet string, among an attribute's values.
inline constexpr char kIPPSetStart[] = "IPP_Set_Start";
inline constexpr char kIPPSetEnd[] = "IPP_Set_End";

// A value of any type as text: numbers in decimal, booleans "0" and "1", a resolution "600,600,3",
// a range "1,99", a time ISO 8601, octets with "," for each "=" and ";". Texts are without their
// language, and by the message's charset become UTF-8; bytes that are not valid in it stay.
std::string IPPTextOf(const IPPMessage& message, const IPPValue& value);

// A text, name, keyword, URI and the like: a value that is text on the wire.
bool IsIPPText(const IPPValue& value);

// Of an integer or enum.
std::optional<std::int32_t> IPPNumberOf(const IPPMessage& message, const IPPValue& value);

// Of the first value; nothing for null and for an attribute without values.
std::optional<std::string> IPPTextOf(const IPPMessage& message, const IPPAttribute* attribute);
std::optional<std::int32_t> IPPNumberOf(const IPPMessage& message, const IPPAttribute* attribute);

// The values at a path, whatever their groups: "a", or "a.b" for member b of collection a, or of
// the "b=...;" of an octet string a, at any depth. A whole collection or octet string is one text
// between its markers, joined by ",".
std::vector<std::string> IPPValuesAt(const IPPMessage& message, std::string_view path);

}  // namespace Corvane

#endif  // CORVANE_IPP_WIRE_VALUES_H_
