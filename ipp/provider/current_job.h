// Which of the jobs that a printer lists is the one being printed.
#ifndef CORVANE_IPP_PROVIDER_CURRENT_JOB_H_
#define CORVANE_IPP_PROVIDER_CURRENT_JOB_H_

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/system_handles.h"
#include "corvane/ipp_response.h"
#include "ipp/wire/job.h"

namespace Corvane {

// A printer tells a job's id when it has the whole document; while that is on its way, the job is
// one of those that the printer lists for the user, among them perhaps older ones and those of
// other programs. Any thread.
class CurrentJob {
 public:
  // A job begins now. `user` is who asks for it and `account` whose credentials go with it: the
  // printer may call the owner either. Null texts are none.
  void Begin(const char* user, const char* account, const char* name);
  // What the printer itself has called it.
  void Identify(std::int32_t id);

  // Before a job has begun, the first of the list. Then the one with the id, once that is known;
  // until then, of the owner's jobs that are no older than this one, the one of its name, the
  // latest of several. A job that goes on is known by its id from then on, one of another name
  // until one of its name is listed. `uri` goes before all that; it may be empty. Null when it is
  // not listed.
  const IPPJob* FindIn(const std::vector<IPPJob>& jobs, std::string_view uri);
  bool HasBegun() const;
  // Whether its id is known by the printer's word or by its name, not by its owner and age alone.
  bool IsCertain() const;
  std::string User() const;

 private:
  using Clock = std::chrono::steady_clock;

  bool CanBe(const IPPJob& job) const;

  mutable SystemLock m_lock;  // guards everything below
  std::optional<Clock::time_point> m_begin;
  std::string m_user;
  std::string m_account;
  std::string m_name;
  std::optional<std::int32_t> m_id;
  bool m_hasItsName = false;  // the job with the id, or no other; or the printer has told the id
};

// "7" canceled, "8" aborted, "9" completed (RFC 8011, 5.3.7).
template <typename Char>
bool HasEnded(const std::basic_string<Char>& jobState) {
  return jobState.size() == 1 && jobState[0] >= '7' && jobState[0] <= '9';
}

// Whether what was told of a job says that somebody has cancelled it, or is about to.
bool IsCancelled(IPPResponseBase* response);

// The URI, id, state and reasons of the job, where the set may have another's.
void FillFromJob(const IPPJob& job, IPPResponseBase* response);

}  // namespace Corvane

#endif  // CORVANE_IPP_PROVIDER_CURRENT_JOB_H_
