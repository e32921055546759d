// What can be waited for: events and threads.
#ifndef CORVANE_PLATFORM_LINUX_THREADS_WAITABLE_H_
#define CORVANE_PLATFORM_LINUX_THREADS_WAITABLE_H_

#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "platform/linux/misc/handle_table.h"

namespace Corvane {

// One lock and one condition for all objects: a wait for several of them sees one moment, and there
// are only as many as print jobs.
struct WaitingRoom {
  std::mutex mutex;
  std::condition_variable changed;  // something became signalled

  static WaitingRoom& OfProcess();
};

class Waitable : public HandleObject {
 public:
  static constexpr HandleKind kKind = HandleKind::kWaitable;

  explicit Waitable(bool signalled) : HandleObject(kKind), m_signalled(signalled) {}

  // All with the room's mutex held.
  bool IsSignalled() const { return m_signalled; }
  void Signal() {
    m_signalled = true;
    ++m_signals;
    WaitingRoom::OfProcess().changed.notify_all();
  }
  virtual void TakeSignal() {}  // a wait has ended because of it
  // Whether a signal releases every waiting thread, even when it is reset before they wake.
  virtual bool ReleasesAll() const { return true; }
  std::uint64_t Signals() const { return m_signals; }

 protected:
  bool m_signalled;  // guarded by the room's mutex, as all here

 private:
  std::uint64_t m_signals = 0;  // so far
};

}  // namespace Corvane

#endif  // CORVANE_PLATFORM_LINUX_THREADS_WAITABLE_H_
