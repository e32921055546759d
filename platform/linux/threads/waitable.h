// What can be waited for: events and threads.
#ifndef CORVANE_PLATFORM_LINUX_THREADS_WAITABLE_H_
#define CORVANE_PLATFORM_LINUX_THREADS_WAITABLE_H_

#include <condition_variable>
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

  // With the room's mutex held.
  bool IsSignalled() const { return m_signalled; }
  void Signal() {
    m_signalled = true;
    WaitingRoom::OfProcess().changed.notify_all();
  }
  virtual void TakeSignal() {}  // a wait has ended because of it

 protected:
  bool m_signalled;  // guarded by the room's mutex
};

}  // namespace Corvane

#endif  // CORVANE_PLATFORM_LINUX_THREADS_WAITABLE_H_
