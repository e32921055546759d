// What can be waited for: events and threads.
#ifndef CORVANE_PLATFORM_LINUX_THREADS_WAITABLE_H_
#define CORVANE_PLATFORM_LINUX_THREADS_WAITABLE_H_

#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/linux/misc/handle_table.h"

namespace Corvane {

struct Wait;

// One lock and one condition for all objects: a wait for several of them sees one moment, and there
// are only as many as print jobs.
struct WaitingRoom {
  std::mutex mutex;
  std::condition_variable changed;  // a wait has ended
  std::list<Wait*> waits;           // those that have not, the longest first

  static WaitingRoom& OfProcess();
  // Ends the waits that an object has ended which became signalled.
  void EndWaits();
};

class Waitable : public HandleObject {
 public:
  static constexpr HandleKind kKind = HandleKind::kWaitable;

  explicit Waitable(bool signalled) : HandleObject(kKind), m_signalled(signalled) {}

  // All with the room's mutex held.
  bool IsSignalled() const { return m_signalled; }
  void Signal() {
    m_signalled = true;
    WaitingRoom::OfProcess().EndWaits();
  }
  virtual void TakeSignal() {}  // a wait has ended because of it
  virtual void WaitedFor() {}   // the same, called by the thread that waited

 protected:
  bool m_signalled;  // guarded by the room's mutex, as all here
};

// What one thread waits for. Who signals an object ends the waits for it there and then: what
// becomes of the object before their threads wake, a reset or another wait, takes nothing back.
struct Wait {
  std::vector<std::shared_ptr<Waitable>> objects;
  bool all = false;
  std::optional<std::size_t> endedBy = {};  // an index; 0 for all

  // With the room's mutex held; takes the signals.
  bool TryEnd();
};

}  // namespace Corvane

#endif  // CORVANE_PLATFORM_LINUX_THREADS_WAITABLE_H_
