#include "tools/output/failure.h"

#include "tools/output/text_escape.h"

namespace Corvane::Tool {

void ThrowUsage(const std::string& text) {
  throw Failure(kBadUsage, EscapeText(text) + "\nRun \"corvane --help\" for help.");
}

std::string VersionText(const std::string& version) {
  return "the printer speaks IPP " + version +
         ", and 2.0 is needed: update its firmware, or use another of its protocols";
}

}  // namespace Corvane::Tool
