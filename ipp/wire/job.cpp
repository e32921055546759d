#include "ipp/wire/job.h"

#include <charconv>
#include <string_view>

#include "ipp/wire/codes.h"
#include "ipp/wire/values.h"

namespace Corvane {
namespace {

std::optional<std::int32_t> NumberOf(const std::string& text) {
  std::int32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

IPPJob JobOf(const IPPMessage& answer, const IPPGroup& group) {
  const auto first = [&](std::string_view name) {
    return IPPTextOf(answer, answer.Find(group, name)).value_or("");
  };
  IPPJob job;
  job.uri = first("job-uri");
  job.name = first("job-name");
  job.user = first("job-originating-user-name");
  job.state = first("job-state");
  if (const IPPAttribute* const reasons = answer.Find(group, "job-state-reasons")) {
    for (const IPPValue& reason : answer.ValuesOf(*reasons)) {
      if (!job.reasons.empty()) job.reasons += ',';
      job.reasons += IPPTextOf(answer, reason);
    }
  }
  job.id = NumberOf(first("job-id"));
  job.createdAt = NumberOf(first("time-at-creation"));
  job.answeredAt = NumberOf(first("job-printer-up-time"));
  return job;
}

}  // namespace

std::vector<IPPJob> JobsOf(const IPPMessage& answer) {
  std::vector<IPPJob> jobs;
  for (const IPPGroup& group : answer.Groups()) {
    if (group.tag == IPPTag::kJobAttributes) jobs.push_back(JobOf(answer, group));
  }
  return jobs;
}

}  // namespace Corvane
