#include "tools/ipp/jobs.h"

#include <algorithm>
#include <string>
#include <vector>

#include "tools/ipp/printer_address.h"
#include "tools/ipp/printer_uri.h"
#include "tools/ipp/user_jobs.h"
#include "tools/options/device.h"
#include "tools/output/failure.h"
#include "tools/output/text.h"

namespace Corvane::Tool {

// By its id, and nothing else: by the time that it is asked for, the job may have ended, and
// another one be the user's first.
CommandResult CancelUserJob(const Options& options) {
  const PrinterUri uri = ParsePrinterUri(options.printerUri);
  const std::string user = RequestingUser(options.user);
  const RefPtr<Address> device = OpenDevice(ReachPrinter(options, uri));
  std::string problem;
  const auto answer = AskForJobs(*device.Get(), uri, user, false, &problem);
  if (!answer) throw Failure(kNoAnswer, "the printer tells no jobs: " + problem);
  const std::vector<IPPJob> jobs = JobsOf(*answer);
  const auto job = std::find_if(jobs.begin(), jobs.end(), [&](const IPPJob& each) {
    return each.id && (options.jobId ? *each.id == *options.jobId : !IsEnding(each));
  });
  if (job == jobs.end()) {
    throw Failure(kNoAnswer, "no job " +
                                 (options.jobId ? std::to_string(*options.jobId) + " " : "") +
                                 "of " + EscapeText(user) + " goes on");
  }
  const std::string number = "job " + std::to_string(*job->id);
  if (!CancelJobAt(*device.Get(), uri, user, *job->id, &problem)) {
    throw Failure(kNotPrinted, "the printer does not cancel " + number + ": " + problem);
  }
  CommandResult result;
  result.output = "cancelled " + number;
  if (!job->name.empty()) result.output += ": " + EscapeText(job->name);
  result.output += '\n';
  return result;
}

}  // namespace Corvane::Tool
