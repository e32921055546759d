// Attributes of a client's own.
#ifndef CORVANE_TESTS_IPP_CALLERS_ATTRIBUTE_H_
#define CORVANE_TESTS_IPP_CALLERS_ATTRIBUTE_H_

#include <string_view>

#include "corvane/ipp_request.h"

namespace Corvane::Test {

inline IPPAttributeStruct CallersText(std::uint32_t group, int tag, std::string_view name,
                                      std::string_view text) {
  IPPAttributeStruct attribute{};
  attribute.group = group;
  attribute.valueTag = tag;
  name.copy(attribute.name, sizeof(attribute.name));
  text.copy(attribute.value.text, sizeof(attribute.value.text));
  return attribute;
}

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_IPP_CALLERS_ATTRIBUTE_H_
