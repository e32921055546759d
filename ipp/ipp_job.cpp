#include "ipp/ipp_job.h"

#include <array>
#include <charconv>
#include <string_view>

namespace Corvane {
namespace {

enum : std::size_t { kUri, kName, kUser, kState, kReasons, kId, kCreatedAt, kAnsweredAt };
constexpr std::array<std::string_view, 8> kNames = {
    "job-uri",           "job-name", "job-originating-user-name", "job-state",
    "job-state-reasons", "job-id",   "time-at-creation",          "job-printer-up-time"};

std::optional<std::int32_t> NumberOf(const std::string& text) {
  std::int32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

void Take(std::size_t name, const std::vector<std::string>& texts, IPPJob* job) {
  if (texts.empty()) return;
  const std::string& first = texts.front();
  switch (name) {
    case kUri:
      job->uri = first;
      break;
    case kName:
      job->name = first;
      break;
    case kUser:
      job->user = first;
      break;
    case kState:
      job->state = first;
      break;
    case kReasons:
      for (const std::string& reason : texts) {
        job->reasons += job->reasons.empty() ? reason : ',' + reason;
      }
      break;
    case kId:
      job->id = NumberOf(first);
      break;
    case kCreatedAt:
      job->createdAt = NumberOf(first);
      break;
    case kAnsweredAt:
      job->answeredAt = NumberOf(first);
      break;
    default:
      break;
  }
}

}  // namespace

std::vector<IPPJob> JobsOf(const AttributeMap& answer) {
  std::vector<IPPJob> jobs(answer.JobCount());
  for (const auto& [job, name, texts] : answer.JobAttributes(kNames)) {
    Take(name, texts, &jobs[job - 1]);
  }
  return jobs;
}

}  // namespace Corvane
