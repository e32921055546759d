// "corvane print".
#ifndef CORVANE_TOOLS_PRINT_PRINT_H_
#define CORVANE_TOOLS_PRINT_PRINT_H_

#include "tools/options/options.h"
#include "tools/output/failure.h"

namespace Corvane::Tool {

// Prints a document and tells its progress on the error stream. A file of up to 16 MB goes to the
// library in one piece, which is far below the two gigabytes that it takes; everything else in
// pieces of 256 KiB. The output is the job: id, state and URI. Throws Failure: kBadUsage, or
// kNotPrinted. Ctrl-C cancels the job at the printer; it may end the process with kCancelled or
// kPerhapsPrinted.
CommandResult PrintDocument(const Options& options);

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_PRINT_PRINT_H_
