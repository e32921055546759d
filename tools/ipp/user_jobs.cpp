#include "tools/ipp/user_jobs.h"

#include <cstddef>
#include <iterator>

#include "tools/ipp/ipp_exchange.h"
#include "tools/ipp/ipp_values.h"
#include "tools/output/console.h"
#include "tools/output/failure.h"

namespace Corvane::Tool {
namespace {

// Nothing with *problem for a refusal, too.
std::optional<IPPAnswer> AskPrinter(Address& address, const PrinterUri& uri,
                                    const std::string& message, std::string* problem) {
  std::optional<IPPAnswer> answer =
      ExchangeIPP(address, uri.servicePort, uri.path, message, problem);
  if (!answer || answer->IsSuccessful()) return answer;
  *problem = StatusText(*answer);
  return std::nullopt;
}

IPPAttribute UserAttribute(const std::string& user) {
  return MakeAttribute("requesting-user-name", IPPTag::kName, {user});
}

std::string BigEndian(std::int32_t number) {
  const auto bits = static_cast<std::uint32_t>(number);
  std::string bytes;
  for (const int shift : {24, 16, 8, 0}) bytes += static_cast<char>(bits >> shift & 0xFF);
  return bytes;
}

bool IsEnding(const IPPGroup& job) {
  constexpr std::int32_t kCanceled = 7;  // and all above have ended (RFC 8011, 5.3.7)
  const auto state = NumberOf(job.Find("job-state"));
  if (state && *state >= kCanceled) return true;
  const IPPAttribute* const reasons = job.Find("job-state-reasons");
  if (!reasons) return false;
  for (const IPPValue& value : reasons->values) {
    const std::string reason = TextOf(value).value_or("");
    if (reason == "processing-to-stop-point" || reason.starts_with("job-canceled")) return true;
  }
  return false;
}

}  // namespace

std::string RequestingUser(const std::string& user) {
  constexpr std::size_t kMaxUserBytes = 255;  // RFC 8011, 5.1.3
  std::string name = user.empty() ? LoginName() : user;
  if (name.empty()) ThrowUsage("the system knows no name of yours: say --user NAME");
  if (name.size() > kMaxUserBytes) ThrowUsage("--user has more than 255 bytes");
  return name;
}

std::optional<IPPAnswer> AskForJobs(Address& address, const PrinterUri& uri,
                                    const std::string& user, bool completed, std::string* problem) {
  const std::string message = BuildIPPRequest(
      IPPOperation::kGetJobs, uri.text,
      {UserAttribute(user),
       MakeAttribute("requested-attributes", IPPTag::kKeyword,
                     {std::begin(kJobAttributes), std::end(kJobAttributes)}),
       MakeAttribute("which-jobs", IPPTag::kKeyword, {completed ? "completed" : "not-completed"}),
       MakeAttribute("my-jobs", IPPTag::kBoolean, {std::string(1, '\1')})});
  return AskPrinter(address, uri, message, problem);
}

std::vector<UserJob> JobsIn(const IPPAnswer& answer) {
  std::vector<UserJob> jobs;
  for (const IPPGroup& group : answer.groups) {
    const auto id = NumberOf(group.Find("job-id"));
    if (group.tag != IPPTag::kJobGroup || !id) continue;
    jobs.push_back({*id, TextOf(group.Find("job-name")).value_or(""), IsEnding(group)});
  }
  return jobs;
}

bool CancelJobAt(Address& address, const PrinterUri& uri, const std::string& user,
                 std::int32_t jobId, std::string* problem) {
  const std::string message = BuildIPPRequest(
      IPPOperation::kCancelJob, uri.text,
      {MakeAttribute("job-id", IPPTag::kInteger, {BigEndian(jobId)}), UserAttribute(user)});
  return AskPrinter(address, uri, message, problem).has_value();
}

}  // namespace Corvane::Tool
