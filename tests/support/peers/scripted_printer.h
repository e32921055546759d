// An IPP printer in the process: it takes documents, keeps jobs and does what a test tells it, at a
// moment that the test chooses. It has two doors: it is the Address of a library's client, and a
// script for the connections of a LoopbackServer (Linux).
#ifndef CORVANE_TESTS_SUPPORT_PEERS_SCRIPTED_PRINTER_H_
#define CORVANE_TESTS_SUPPORT_PEERS_SCRIPTED_PRINTER_H_

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "tests/support/fake_device.h"

namespace Corvane::Test {

// Any number of threads. Its host text is a USB port name, so that nobody probes it.
class ScriptedPrinter final : public FakeDevice {
 public:
  // Job states (RFC 8011, 5.3.7).
  static constexpr int kProcessing = 5;
  static constexpr int kCancelled = 7;
  static constexpr int kAborted = 8;
  static constexpr int kCompleted = 9;

  struct Job {
    std::string user;
    std::string name;
    int state = kProcessing;
    int createdAt = kUpTime;
    bool listed = true;
    std::string document = {};
  };
  static constexpr int kUpTime = 100000;  // of the printer's clock, which begins with it

  struct Asked {
    int operation;
    Head head;
    std::map<std::string, std::string> attributes;
  };

  // What a test may tell it in numbers, by the names of data files; kSettings has them.
  using Settings = std::map<std::string, int>;
  static const Settings kSettings;
  struct State {
    Settings settings = kSettings;
    // "5 media-empty,spool-area-full;3 none": its states and reasons, one for each question; the
    // last one stays. Empty: it does not tell.
    std::string states = "3 none";
    // What has happened.
    std::map<int, Job> jobs;  // by id
    std::vector<Asked> asked;
    int openRequests = 0;
    bool isOver = false;  // nobody waits any longer

    // "status=1 busy=2".
    void Set(const std::string& numbers);
    int Count(int operation) const;
    // The job that came last.
    Job& Latest() { return jobs.rbegin()->second; }
  };

  ScriptedPrinter() { host = L"USB001"; }

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
  // The other door: serves one connection. The printer must be over before its server goes.
  std::function<void(class LoopbackConnection&)> OnSocket();

 private:
  class Exchange;

  std::unique_ptr<FakeDevice::Exchange> Begin() override;
  int UpTime() const;

  const std::chrono::steady_clock::time_point m_switchedOn = std::chrono::steady_clock::now();
  std::mutex m_mutex;  // guards everything below
  std::condition_variable m_changed;
  State m_state;
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_PEERS_SCRIPTED_PRINTER_H_
