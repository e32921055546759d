#include "ipp/provider/value_text.h"

#include "core/text.h"

namespace Corvane {

std::wstring JoinedValue(const IPPOperations& answer, std::string_view name) {
  std::string joined;
  for (const std::string& value : answer.ValuesOf(name)) {
    joined += joined.empty() ? value : ',' + value;
  }
  return BstrFromUtf8(joined).Get();
}

}  // namespace Corvane
