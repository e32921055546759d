#include "tools/output/failure.h"

#include "tools/output/text_escape.h"

namespace Corvane::Tool {

void ThrowUsage(const std::string& text) {
  throw Failure(kBadUsage, EscapeText(text) + "\nRun \"corvane --help\" for help.");
}

}  // namespace Corvane::Tool
