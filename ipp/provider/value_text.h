// Values of an answer as one text.
#ifndef CORVANE_IPP_PROVIDER_VALUE_TEXT_H_
#define CORVANE_IPP_PROVIDER_VALUE_TEXT_H_

#include <string>
#include <string_view>

#include "ipp/ipp_operations.h"

namespace Corvane {

// All values of the attribute with "," between them; empty when the printer did not tell it.
std::wstring JoinedValue(const IPPOperations& answer, std::string_view name);

}  // namespace Corvane

#endif  // CORVANE_IPP_PROVIDER_VALUE_TEXT_H_
