#include "tools/print/own_job.h"

#include <utility>
#include <vector>

#include "tools/ipp/user_jobs.h"
#include "tools/options/device.h"

namespace Corvane::Tool {
namespace {

// Somebody waits for the end.
constexpr std::uint32_t kCancelTimeoutMs = 2'000;

}  // namespace

OwnJob::OwnJob(const Options& reached, PrinterUri uri, std::string user, std::string name)
    : m_uri(std::move(uri)),
      m_user(std::move(user)),
      m_name(std::move(name)),
      m_address(OpenDevice(reached)) {
  std::string problem;
  if (const auto answer = AskForJobs(*m_address.Get(), m_uri, m_user, false, &problem)) {
    m_before.emplace();
    for (const UserJob& job : JobsIn(*answer)) m_before->insert(job.id);
  }
  m_address->SetTimeouts(kCancelTimeoutMs, kCancelTimeoutMs);
}

CancelResult OwnJob::Cancel(std::string* text) {
  *text = "the printer did not list its jobs";
  if (!m_before) return CancelResult::kUnknown;
  std::string problem;
  const auto answer = AskForJobs(*m_address.Get(), m_uri, m_user, false, &problem);
  if (!answer) {
    *text = "the printer lists no jobs: " + problem;
    return CancelResult::kUnknown;
  }
  std::vector<std::int32_t> ids;
  bool wasEnding = false;
  for (const UserJob& job : JobsIn(*answer)) {
    if (m_before->contains(job.id) || (!job.name.empty() && job.name != m_name)) continue;
    if (job.isEnding) {
      wasEnding = true;
      continue;
    }
    ids.push_back(job.id);
  }
  if (ids.empty()) {
    *text = wasEnding ? "the printer ends the job by itself" : "the printer lists no job of it";
    return CancelResult::kNoJob;
  }
  if (ids.size() > 1) {
    *text = "which of these jobs it is cannot be told:";
    for (const std::int32_t id : ids) *text += ' ' + std::to_string(id);
    return CancelResult::kUnknown;
  }
  const std::string job = "job " + std::to_string(ids.front());
  if (!CancelJobAt(*m_address.Get(), m_uri, m_user, ids.front(), &problem)) {
    *text = "the printer does not cancel " + job + ": " + problem;
    return CancelResult::kUnknown;
  }
  *text = "the printer has cancelled " + job;
  return CancelResult::kCancelled;
}

}  // namespace Corvane::Tool
