// How a command ends: with a report, or early.
#ifndef CORVANE_TOOLS_OUTPUT_FAILURE_H_
#define CORVANE_TOOLS_OUTPUT_FAILURE_H_

#include <stdexcept>
#include <string>

namespace Corvane::Tool {

enum ExitStatus : int {
  kAllAnswered = 0,
  kSomeUnanswered = 1,
  kBadUsage = 2,       // the command line, or a file named there that cannot be read
  kNoAnswer = 3,       // no data map fits; of "jobs", "probe" and "cancel" no answer, or no job
  kSystemFailure = 4,  // no memory, or the output cannot be written
  kCacheFailure = 5,   // of "cache show" and "cache clear"
  // Of "print"; of "cancel" kNotPrinted is that the printer did not cancel.
  kCancelled = 6,       // here, or at the printer
  kNotPrinted = 7,      // nothing comes out, and printing it again is safe
  kPerhapsPrinted = 8,  // printing it again may print it twice
};

// What a command that prints a report in one piece gives back.
struct CommandResult {
  ExitStatus status = kAllAnswered;
  std::string output;
  std::string problems;  // escaped lines, for the error stream
};

// The text is UTF-8, one line or several, each printed after "corvane: "; all that came from a
// device or a file is escaped already.
class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus status, const std::string& text)
      : std::runtime_error(text), m_status(status) {}
  ExitStatus Status() const { return m_status; }

 private:
  ExitStatus m_status;
};

// Throws Failure with kBadUsage; `text` is escaped here.
[[noreturn]] void ThrowUsage(const std::string& text);

// Why a printer that answers in IPP "1.1", or "1.x", is refused.
std::string VersionText(const std::string& version);

// What a code of the registry or of the spooler says: "no permission (error 5)".
std::string SystemErrorText(unsigned long error);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_OUTPUT_FAILURE_H_
