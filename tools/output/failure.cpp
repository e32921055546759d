#include "tools/output/failure.h"

#include "corvane/platform.h"
#include "tools/output/text.h"

namespace Corvane::Tool {

void ThrowUsage(const std::string& text) {
  throw Failure(kBadUsage, EscapeText(text) + "\nRun \"corvane --help\" for help.");
}

std::string VersionText(const std::string& version) {
  return "the printer speaks IPP " + version +
         ", and 2.0 is needed: update its firmware, or use another of its protocols";
}

std::string SystemErrorText(unsigned long error) {
  const auto text = [error] {
    switch (error) {
      case ERROR_ACCESS_DENIED:
        return "no permission";
      case ERROR_FILE_NOT_FOUND:
        return "not found";
      case ERROR_BUSY:
        return "another process holds it";
      case ERROR_DISK_FULL:
        return "the disk is full";
      case ERROR_NOT_REGISTRY_FILE:
        return "its file is another program's, or of a newer version";
      case ERROR_REGISTRY_CORRUPT:
        return "its file is damaged";
      case ERROR_REGISTRY_IO_FAILED:
        return "its file cannot be read or written";
      case ERROR_INVALID_PRINTER_NAME:
        return "no printer has such a name";
      default:
        return "it failed";
    }
  };
  return std::string(text()) + " (error " + std::to_string(error) + ")";
}

}  // namespace Corvane::Tool
