// The job that a run of the tool prints, as the printer lists it.
#ifndef CORVANE_TOOLS_PRINT_OWN_JOB_H_
#define CORVANE_TOOLS_PRINT_OWN_JOB_H_

#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "corvane/address.h"
#include "corvane/handles.h"
#include "tools/ipp/printer_uri.h"
#include "tools/options/options.h"

namespace Corvane::Tool {

enum class CancelResult {
  kCancelled,  // the printer says so
  kNoJob,      // it lists none of this run
  kUnknown,    // it does not answer, refuses, or lists several that may be it
};

// A printer tells the id of a job only when it has the whole document. Until then it is the one of
// the user and the name that was not there before: an older job, or one of another name, is never
// cancelled. One thread at a time.
class OwnJob {
 public:
  // `reached` is what ReachPrinter gives. Asks for the jobs that there are.
  OwnJob(const Options& reached, PrinterUri uri, std::string user, std::string name);

  // Some four seconds at the longest. What happened, as text.
  CancelResult Cancel(std::string* text);

 private:
  const PrinterUri m_uri;
  const std::string m_user;
  const std::string m_name;
  RefPtr<Address> m_address;
  std::optional<std::set<std::int32_t>> m_before;  // ids; none when the printer did not tell
};

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_PRINT_OWN_JOB_H_
