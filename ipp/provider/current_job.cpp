#include "ipp/provider/current_job.h"

#include <algorithm>
#include <mutex>

#include "base/decimal.h"
#include "ipp/ipp_operations.h"

namespace Corvane {
namespace {

// Both clocks count whole seconds, and the printer's job may begin before ours does.
constexpr std::chrono::seconds kClockSlack{2};

std::string OrEmpty(const char* text) { return text ? text : ""; }

}  // namespace

void CurrentJob::Begin(const char* user, const char* account, const char* name) {
  const std::lock_guard lock(m_lock);
  m_begin = Clock::now();
  m_user = OrEmpty(user);
  m_account = OrEmpty(account);
  m_name = OrEmpty(name);
  m_id.reset();
  m_hasItsName = false;
}

void CurrentJob::Identify(std::int32_t id) {
  const std::lock_guard lock(m_lock);
  m_id = id;
  m_hasItsName = true;
}

bool CurrentJob::HasBegun() const {
  const std::lock_guard lock(m_lock);
  return m_begin.has_value();
}

bool CurrentJob::IsCertain() const {
  const std::lock_guard lock(m_lock);
  return m_hasItsName;
}

std::string CurrentJob::User() const {
  const std::lock_guard lock(m_lock);
  return m_user;
}

const IPPJob* CurrentJob::FindIn(const std::vector<IPPJob>& jobs, std::string_view uri) {
  if (!uri.empty()) {
    const auto named =
        std::find_if(jobs.begin(), jobs.end(), [uri](const IPPJob& job) { return job.uri == uri; });
    if (named != jobs.end()) return &*named;
  }
  const std::lock_guard lock(m_lock);
  if (!m_begin) return jobs.empty() ? nullptr : &jobs.front();
  const IPPJob* best = nullptr;
  const auto rank = [this](const IPPJob& job) {
    return std::pair(job.name == m_name, job.id.value_or(0));
  };
  for (const IPPJob& job : jobs) {
    if (CanBe(job) && (!best || rank(job) > rank(*best))) best = &job;
  }
  if (best && best->id && !HasEnded(best->state) && !(m_id && best->name != m_name)) {
    m_id = best->id;
    m_hasItsName = best->name == m_name || best->name.empty();
  }
  return best;
}

bool CurrentJob::CanBe(const IPPJob& job) const {
  if (m_id && job.id) {
    if (*m_id == *job.id) return true;
    // A job of another name that was seen first may be another program's.
    if (m_hasItsName || job.name != m_name) return false;
  }
  if (!job.user.empty() && job.user != m_user && job.user != m_account) return false;
  if (!job.createdAt || !job.answeredAt) return true;
  const std::chrono::seconds age(std::int64_t{*job.answeredAt} - *job.createdAt);
  return age <= Clock::now() - *m_begin + kClockSlack;
}

bool IsCancelled(IPPResponseBase* response) {
  const char* const state = response->GetJobState();
  const char* const reasons = response->GetJobStateReasons();
  return (state && std::string_view(state) == "Canceled") ||
         (reasons && std::string_view(reasons).find("canceled") != std::string_view::npos);
}

void FillFromJob(const IPPJob& job, IPPResponseBase* response) {
  const char* state = nullptr;
  IPPOperations::GetJobState(LeadingInt32(job.state), &state);
  response->SetJobURI(job.uri.empty() ? nullptr : job.uri.c_str());
  response->SetJobID(job.id.value_or(0));
  response->SetJobState(state);
  response->SetJobStateReasons(job.reasons.empty() ? nullptr : job.reasons.c_str());
}

}  // namespace Corvane
