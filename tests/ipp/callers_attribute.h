// Attributes of a client's own.
#ifndef CORVANE_TESTS_IPP_CALLERS_ATTRIBUTE_H_
#define CORVANE_TESTS_IPP_CALLERS_ATTRIBUTE_H_

#include <algorithm>
#include <cstring>
#include <initializer_list>

#include "corvane/ipp_request.h"

namespace Corvane::Test {

inline IPPAttributeStruct CallersText(std::uint32_t group, int tag, const char* name,
                                      const char* text) {
  IPPAttributeStruct attribute{};
  attribute.group = group;
  attribute.valueTag = tag;
  std::strcpy(attribute.name, name);
  std::strcpy(attribute.value.text, text);
  return attribute;
}

inline IPPAttributeStruct CallersNumbers(std::uint32_t group, int tag, const char* name,
                                         std::initializer_list<std::int32_t> numbers) {
  IPPAttributeStruct attribute = CallersText(group, tag, name, "");
  std::copy(numbers.begin(), numbers.end(), attribute.value.numbers);
  return attribute;
}

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_IPP_CALLERS_ATTRIBUTE_H_
