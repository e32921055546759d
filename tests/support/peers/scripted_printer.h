// An IPP printer in the process, behind the transport interfaces: it takes documents, keeps jobs
// and does what a test tells it, at a moment that the test chooses.
#ifndef CORVANE_TESTS_SUPPORT_PEERS_SCRIPTED_PRINTER_H_
#define CORVANE_TESTS_SUPPORT_PEERS_SCRIPTED_PRINTER_H_

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "corvane/error_codes.h"
#include "corvane/transport.h"
#include "tests/support/counted.h"

namespace Corvane::Test {

// Any number of threads. Its host text is a USB port name, so that nobody probes it.
class ScriptedPrinter final : public Counted<Address> {
 public:
  static constexpr std::size_t kNever = ~std::size_t{0};
  // Last errors of its requests.
  static constexpr std::uint32_t kTimeout = kErrorTimeout;
  static constexpr std::uint32_t kUnreachable = kErrorCannotConnect;
  static constexpr std::uint32_t kDropped = kErrorConnection;
  static constexpr std::uint32_t kNoAnswer = kErrorInvalidResponse;
  static constexpr int kRefusal = 0x0500;  // server-error-internal-error
  // Job states (RFC 8011, 5.3.7).
  static constexpr int kProcessing = 5;
  static constexpr int kCancelled = 7;
  static constexpr int kAborted = 8;
  static constexpr int kCompleted = 9;

  struct Job {
    std::string user;
    std::string name;
    int state = kProcessing;
    int createdAt = 0;  // of the printer's clock, which begins at kUpTime
    bool listed = true;
    std::string document = {};
  };
  static constexpr int kUpTime = 100000;

  struct Asked {
    int operation;
    std::uint32_t port;
    bool authorized;  // with a header "Authorization"
    std::map<std::string, std::string> attributes;
  };

  struct State {
    // Its states and reasons, one for each question; the last one stays.
    std::deque<std::pair<int, std::string>> printer = {{3, "none"}};
    bool tellsState = true;
    bool listsJobs = true;    // else such a request fails
    bool holdsLists = false;  // they wait until this ends
    bool showsNewJobs = true;
    bool cancels = true;  // else Cancel-Job is refused
    // Of the answers to operations with jobs, but lists.
    int busy = 0;  // so many documents are refused first
    int status = 0;
    std::uint32_t http = 200;
    bool losesAnswers = false;
    int whenWhole = kCompleted;  // what becomes of a job whose document is whole
    // How many bytes of a document there are when something happens to it.
    std::size_t dropAt = kNever;
    std::size_t silentAt = kNever;
    std::chrono::milliseconds silence{300};
    std::size_t endAt = kNever;  // the panel's doing
    int endState = kCancelled;
    std::size_t earlyAt = kNever;  // `http` and `status` come before the rest is sent

    // What has happened.
    std::map<int, Job> jobs;  // by id
    std::vector<Asked> asked;
    int openRequests = 0;
    std::string faults;  // of framing and requests: there should be none

    int Count(int operation) const;
    // The job that came last.
    Job& Latest() { return jobs.rbegin()->second; }
  };

  // Runs with the printer's lock held; what it changes is seen at once.
  template <typename Change>
  auto Locked(Change&& change) {
    const std::lock_guard lock(m_mutex);
    m_changed.notify_all();
    return change(m_state);
  }
  // Waits until `condition` holds of the state; false when it does not within `limit`.
  template <typename Condition>
  bool Await(Condition&& condition, std::chrono::milliseconds limit = std::chrono::seconds(20)) {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, limit, [&] { return condition(m_state); });
  }

  const wchar_t* GetDisplayName() override { return L"scripted"; }
  const wchar_t* GetAddress() override { return L"USB001"; }
  std::uint32_t GetMappedPort(std::uint32_t port) override { return port; }
  const wchar_t* GetLastFailure() override { return L""; }
  HRESULT CreateHTTPRequest(HTTPRequest**, std::uint32_t) override { return E_FAIL; }
  HRESULT CreateIPPHTTPRequest(HTTPRequest** request, std::uint32_t port) override;
  HRESULT GetMIBConnection(MIBConnection**) override { return E_FAIL; }
  void SetUserName(const wchar_t*) override {}
  void SetPassword(const wchar_t*) override {}
  HRESULT SetTimeouts(std::uint32_t, std::uint32_t) override { return S_OK; }

 private:
  friend class ScriptedRequest;

  int UpTime() const;

  const std::chrono::steady_clock::time_point m_switchedOn = std::chrono::steady_clock::now();
  std::mutex m_mutex;  // guards everything below
  std::condition_variable m_changed;
  State m_state;
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_PEERS_SCRIPTED_PRINTER_H_
