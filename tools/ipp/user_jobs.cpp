#include "tools/ipp/user_jobs.h"

#include <cstddef>
#include <utility>

#include "base/decimal.h"
#include "ipp/wire/writer.h"
#include "tools/ipp/ipp_exchange.h"
#include "tools/ipp/ipp_values.h"
#include "tools/output/console.h"
#include "tools/output/failure.h"

namespace Corvane::Tool {
namespace {

// Nothing with *problem for a refusal, too.
std::optional<IPPMessage> AskPrinter(Address& address, const PrinterUri& uri, std::string request,
                                     std::string* problem) {
  std::optional<IPPMessage> answer =
      ExchangeIPP(address, uri.servicePort, uri.path, std::move(request), problem);
  if (!answer || IsSuccessful(*answer)) return answer;
  *problem = StatusText(*answer);
  return std::nullopt;
}

}  // namespace

std::string RequestingUser(const std::string& user) {
  constexpr std::size_t kMaxUserBytes = 255;  // RFC 8011, 5.1.3
  std::string name = user.empty() ? LoginName() : user;
  if (name.empty()) ThrowUsage("the system knows no name of yours: say --user NAME");
  if (name.size() > kMaxUserBytes) ThrowUsage("--user has more than 255 bytes");
  return name;
}

std::optional<IPPMessage> AskForJobs(Address& address, const PrinterUri& uri,
                                     const std::string& user, bool completed,
                                     std::string* problem) {
  std::string request = BeginIPPRequest(IPPOperation::kGetJobs, uri.text);
  AppendIPPValue(&request, IPPTag::kName, "requesting-user-name", user);
  AppendIPPValues(&request, IPPTag::kKeyword, "requested-attributes", kJobAttributes);
  AppendIPPValue(&request, IPPTag::kKeyword, "which-jobs",
                 completed ? "completed" : "not-completed");
  AppendIPPValue(&request, IPPTag::kBoolean, "my-jobs", "\1");
  return AskPrinter(address, uri, std::move(request), problem);
}

bool IsEnding(const IPPJob& job) {
  constexpr int kCanceled = 7;  // and all above have ended (RFC 8011, 5.3.7)
  const std::string reasons = ',' + job.reasons + ',';
  return LeadingInt32(job.state) >= kCanceled ||
         reasons.find(",processing-to-stop-point,") != std::string::npos ||
         reasons.find(",job-canceled") != std::string::npos;
}

bool CancelJobAt(Address& address, const PrinterUri& uri, const std::string& user,
                 std::int32_t jobId, std::string* problem) {
  std::string request = BeginIPPRequest(IPPOperation::kCancelJob, uri.text);
  AppendIPPValue(&request, IPPTag::kInteger, "job-id", BigEndian({jobId}));
  AppendIPPValue(&request, IPPTag::kName, "requesting-user-name", user);
  return AskPrinter(address, uri, std::move(request), problem).has_value();
}

}  // namespace Corvane::Tool
